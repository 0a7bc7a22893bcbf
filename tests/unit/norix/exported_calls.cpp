// SPDX-License-Identifier: Apache-2.0
#include "exported_calls.h"

#include <norix.h>

#include <cstdlib>
#include <ostream>

namespace {

void onState(void * /*handle*/, void * /*data*/) {}
void onAction(void * /*handle*/, bundle * /*params*/, void * /*data*/) {}

} // namespace

void PrintTo(const ExportedCall &exported, std::ostream *out) {
  *out << exported.function;
}

int getActionName(void *handle, std::string *name) {
  char *copy = nullptr;
  const int result = norix_get_action_name(handle, &copy);
  if (name != nullptr) {
    *name = copy == nullptr ? "" : copy;
  }
  std::free(copy);
  return result;
}

const std::vector<ExportedCall> &exportedCalls() {
  static const std::vector<ExportedCall> calls = {
      {"norix_initialize", [](void *) { return norix_initialize(); }},
      {"norix_deinitialize", [](void *) { return norix_deinitialize(); }},
      {"norix_set_app_state_request_cb",
       [](void *) { return norix_set_app_state_request_cb(onState, nullptr); }},
      {"norix_unset_app_state_request_cb",
       [](void *) { return norix_unset_app_state_request_cb(); }},
      {"norix_complete_app_state_request",
       [](void *handle) { return norix_complete_app_state_request(handle, "state"); }},
      {"norix_set_action_execution_cb",
       [](void *) { return norix_set_action_execution_cb("other", onAction, nullptr); }},
      {"norix_unset_action_execution_cb",
       [](void *) { return norix_unset_action_execution_cb("play"); }},
      {"norix_complete_action_execution",
       [](void *handle) { return norix_complete_action_execution(handle, "result"); }},
      {"norix_get_action_name", [](void *handle) { return getActionName(handle); }},
  };
  return calls;
}
