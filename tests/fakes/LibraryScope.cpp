// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryScope.h"

#include <norix.h>

namespace fake {

namespace {
bool insideLibrary = false;
} // namespace

bool runningLibrary() {
  return insideLibrary;
}

LibraryScope::LibraryScope(bool inside) : _before(insideLibrary) {
  insideLibrary = inside;
}

LibraryScope::~LibraryScope() {
  insideLibrary = _before;
}

} // namespace fake

// The linker sends the tests' calls of the exported functions here (--wrap), so that a test calls
// them as an application does and the scope is right all the same.
#define ENTER_LIBRARY(function, parameters, arguments)                                             \
  int __real_##function parameters;                                                                \
  int __wrap_##function parameters {                                                               \
    const fake::InsideLibrary inside;                                                              \
    return __real_##function arguments;                                                            \
  }

extern "C" {
ENTER_LIBRARY(norix_initialize, (), ())
ENTER_LIBRARY(norix_deinitialize, (), ())
ENTER_LIBRARY(norix_set_app_state_request_cb, (norix_app_state_request_cb callback, void *data),
              (callback, data))
ENTER_LIBRARY(norix_unset_app_state_request_cb, (), ())
ENTER_LIBRARY(norix_complete_app_state_request, (void *handle, const char *text), (handle, text))
ENTER_LIBRARY(norix_set_action_execution_cb,
              (const char *actionId, norix_action_execution_cb callback, void *data),
              (actionId, callback, data))
ENTER_LIBRARY(norix_unset_action_execution_cb, (const char *actionId), (actionId))
ENTER_LIBRARY(norix_complete_action_execution, (void *handle, const char *text), (handle, text))
ENTER_LIBRARY(norix_get_action_name, (void *handle, char **actionId), (handle, actionId))
}
