// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_ACTION_REQUEST_IMPL_ACCESS_H
#define NORIX_TESTS_ACTION_REQUEST_IMPL_ACCESS_H

#include "ActionRequestImpl/ActionRequestImpl.h"

namespace norix {

// The states that no call of the library leads to.
struct ActionRequestImplAccess {
  // A record that is null under its action id.
  static void addNullRecord(const std::string &actionId) {
    ActionRequestImpl::_instance->_actionExecutionInfoMap[actionId] = nullptr;
  }

  static const void *record(const std::string &actionId) {
    return ActionRequestImpl::_instance->_actionExecutionInfoMap.at(actionId).get();
  }
  static void setPendingBundle(bundle *pending) {
    ActionRequestImpl::_instance->_pendingBundle = pending;
  }

  static bundle *pendingBundle() { return ActionRequestImpl::_instance->_pendingBundle; }

  static int retryCount() { return ActionRequestImpl::_instance->_retryCount; }
  static Ecore_Timer *completeCheckTimer() {
    return ActionRequestImpl::_instance->_completeCheckTimer;
  }
  static Ecore_Timer *actionExecutionFireTimer() {
    return ActionRequestImpl::_instance->_actionExecutionFireTimer;
  }
  static size_t registered() {
    return ActionRequestImpl::_instance->_actionExecutionInfoMap.size();
  }

  static constexpr auto kBundleDataCb = &ActionRequestImpl::_bundleDataCb;
};

} // namespace norix

#endif
