// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_DELIBERATE_LEAKS_H
#define NORIX_FAKES_DELIBERATE_LEAKS_H

#include <cstddef>

namespace fake {

/// What the library leaves behind on purpose. This is the whole list: a test that meets one of them
/// declares it with Leaks::expectLeft, and whatever else is left fails the test.
enum class DeliberateLeak {
  /// The copy of a request that waited for its callback. It was handed to the application, was
  /// given
  /// up, or was waiting when the library was deinitialised: the application may still be reading
  /// it.
  ParkedBundle,
  /// A response that met no core object or no client, and the response to an app state request
  /// whose
  /// client has no delegate.
  UndeliveredResponse,
  /// The timer of an app state request without an answer: deinitialisation does not delete it, and
  /// it fires in its time.
  StateTimer,
  /// The application's id, as the platform handed it out, when an action response could not be
  /// delivered because the delegate threw.
  AppIdOfFailedDelivery,
  /// What an initialisation that failed after the stub was made leaves: the stub, which proxies may
  /// be connected to, and the object around it with its factory.
  StubOfFailedInitialise,
  /// The same when the factory could not be made.
  StubWithoutFactory,
  /// The value of an SDK-version entry that a later entry with the same key replaced.
  ReplacedSdkVersion,
};

/// What one such leak consists of.
struct Left {
  std::size_t bundles;
  std::size_t stubs;
  std::size_t timers;
  std::size_t platformTexts;
  std::size_t libraryBlocks;
};

constexpr Left leftBy(DeliberateLeak leak) {
  switch (leak) {
  case DeliberateLeak::ParkedBundle:
  case DeliberateLeak::UndeliveredResponse:
    return {1, 0, 0, 0, 0};
  case DeliberateLeak::StateTimer:
    return {0, 0, 1, 0, 0};
  case DeliberateLeak::AppIdOfFailedDelivery:
    return {0, 0, 0, 1, 0};
  case DeliberateLeak::StubOfFailedInitialise:
    return {0, 1, 0, 0, 2};
  case DeliberateLeak::StubWithoutFactory:
    return {0, 1, 0, 0, 1};
  case DeliberateLeak::ReplacedSdkVersion:
    return {0, 0, 0, 0, 1};
  }
  return {0, 0, 0, 0, 0};
}

} // namespace fake

#endif
