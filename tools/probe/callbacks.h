// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_CALLBACKS_H
#define NORIX_PROBE_CALLBACKS_H

#include <norix.h>

#include <cstdint>

namespace norix::probe {

/// The application's callbacks, with the probe in between: the library is given a function of the
/// probe's, which reports the call and makes it.

/// One callback as the application registered it. Never freed: the library may hold it for as long
/// as it likes. One object per different registration.
struct Registration;

Registration *remember(const char *actionId, norix_action_execution_cb callback, void *userData);
Registration *remember(norix_app_state_request_cb callback, void *userData);

/// What the library calls; the user data is the Registration.
void callAction(void *handle, bundle *params, void *registration);
void callState(void *handle, void *registration);

/// The callback that runs now, if any. Readable from every thread and in a signal handler.
struct RunningCallback {
  /// Null when no callback runs.
  const char *action;
  std::uint64_t request;
  std::uint64_t since;
  int thread;
};
RunningCallback runningCallback();

/// Counts the requests that arrived: the number of this one.
std::uint64_t countRequest();
/// The number of the latest request.
std::uint64_t latestRequest();

} // namespace norix::probe

#endif
