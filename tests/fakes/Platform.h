// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_PLATFORM_H
#define NORIX_FAKES_PLATFORM_H

#include "fakes/Application.h"
#include "fakes/Bundles.h"
#include "fakes/Clock.h"
#include "fakes/Describe.h"
#include "fakes/Faults.h"
#include "fakes/Journal.h"
#include "fakes/Leaks.h"
#include "fakes/LibraryScope.h"
#include "fakes/Log.h"
#include "fakes/Once.h"
#include "fakes/Ports.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fake {

/// The platform as the library sees it through the C functions of this folder, and as a test
/// scripts and inspects it.
struct Platform {
  Journal journal;
  Faults faults;
  Log log;
  Bundles bundles;
  Ports ports;
  Application application;
  Clock clock;
  Once once;
  Leaks leaks;

  /// Runs inside the next call of a function, before the call does anything.
  std::map<std::string, std::function<void()>> during;

  /// Incorrect calls, such as one with a handle that is not alive. Each fails the test.
  std::vector<std::string> misuses;
};

/// The platform that the C functions use.
Platform &platform();

/// Replaces it by a new one, with nothing recorded, scripted or alive.
void resetPlatform();

/// One call of the platform by the library: leaves the library's scope for the time of the call,
/// writes it into the journal and asks whether it is to fail.
class PlatformCall {
public:
  template <typename... Arguments>
  explicit PlatformCall(const char *function, const Arguments &...arguments) {
    // Only the library's calls count: a test may use the platform itself to prepare something.
    if (_outside.leftLibrary()) {
      record(function, {describe(arguments)...});
    }
  }

  /// The result with which this call has to fail.
  std::optional<int> failure() const { return _failure; }

private:
  void record(const char *function, const std::vector<std::string> &arguments);

  OutsideLibrary _outside;
  std::optional<int> _failure;
};

} // namespace fake

#endif
