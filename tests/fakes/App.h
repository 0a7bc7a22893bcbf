// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_APP_H
#define NORIX_FAKES_APP_H

#include "fakes/Values.h"

#include <functional>
#include <string>
#include <vector>

namespace fake {

/// The application: calls the library as any application does, and keeps what its callbacks got.
class App {
public:
  struct Request {
    void *handle;
    /// The handler number behind the handle.
    int number;
    /// Empty for an app state request.
    Contents params;
  };

  int initialises();
  int deinitialises();
  int registersForState();
  int registersFor(const std::string &actionId);
  int answersState(const char *appContext);
  int answersAction(const char *result);

  /// Initialised, with nothing recorded so far.
  void isReady();

  /// What it does inside its callbacks, after having kept the request.
  std::function<void(const Request &)> onState;
  std::function<void(const Request &)> onAction;

  std::vector<Request> stateRequests;
  std::vector<Request> actionRequests;

private:
  static void stateCallback(void *handle, void *self);
  static void actionCallback(void *handle, bundle *params, void *self);
};

/// The int that a request handle points at.
int numberBehind(const void *handle);

} // namespace fake

#endif
