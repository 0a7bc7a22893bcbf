// SPDX-License-Identifier: Apache-2.0
#include "NorixImpl/NorixCommonData.h"

#include "common/singleton.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace norix {

namespace {

constexpr unsigned long long kNoRequest = ~0ULL;

} // namespace

NorixCommonData *NorixCommonData::_instance = nullptr;

NorixCommonData *NorixCommonData::getInstance() {
  return instanceOf<NorixCommonData>();
}

void NorixCommonData::_initInstance() {
  createInstance<NorixCommonData>();
}

int NorixCommonData::initialize() {
  _requestId = kNoRequest;
  _actionHandlerIndex = 1;
  std::iota(_actionHandlers.begin(), _actionHandlers.end(), 0);
  return 0;
}

int NorixCommonData::deinitialize() {
  _requestId = kNoRequest;
  _actionHandlerIndex = 0;
  return 0;
}

bool NorixCommonData::hasClient() const {
  return _norixClientAppId.data() != nullptr;
}

void *NorixCommonData::assignHandle(const std::string &actionId) {
  const int handlerCount = static_cast<int>(_actionHandlers.size());
  _actionHandlerIndex = (_actionHandlerIndex + 1) % handlerCount;
  _actionHandlerMap.erase(_actionHandlerIndex);
  _actionHandlerMap.try_emplace(_actionHandlerIndex, actionId, _requestId);
  return &_actionHandlers[static_cast<std::size_t>(_actionHandlerIndex)];
}

void NorixCommonData::noteTextHandle(const char *actionId) {
  if (std::strlen(actionId) + 1 < sizeof(int)) {
    _shortTextHandles.push_front(actionId);
  }
}

int NorixCommonData::handlerNumber(const void *requestHandle) const {
  int number = 0;
  std::size_t size = sizeof number;
  if (std::find(_shortTextHandles.begin(), _shortTextHandles.end(), requestHandle)
      != _shortTextHandles.end()) {
    size = std::strlen(static_cast<const char *>(requestHandle)) + 1;
  }
  std::memcpy(&number, requestHandle, size);
  return number;
}

} // namespace norix
