// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_EARLY_REQUEST_H
#define NORIX_TESTS_EARLY_REQUEST_H

#include "ActionRequestImpl/ActionRequestImpl.h"

#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

inline constexpr const char *kTickFunction = "_actionExecutionFireCb";
inline constexpr const char *kTick = "_actionExecutionFireCb called";

inline auto isTickLine(const char *text) {
  return fake::IsLine("ActionRequestImpl.cpp", kTickFunction, text);
}

/// A request that arrived before its callback was registered, and waits for it.
class AnEarlyRequest : public fake::ReadyLibraryTest {
protected:
  static constexpr double kInterval = 0.02;

  void SetUp() override {
    ReadyLibraryTest::SetUp();
    assistant.asksForAction("play", 42); // timer 1
    const std::vector<fake::FakeTimer> timers = fake::platform().clock.alive();
    ASSERT_EQ(timers.size(), 1U);
    tick = timers[0].callback;
  }

  static void ticks(int times) { fake::platform().clock.advance(kInterval * times); }
  /// Calls the timer's callback out of turn.
  Eina_Bool fires(void *data) const {
    return fake::library([this, data] { return tick(data); });
  }
  static norix::ActionRequestImpl *object() { return norix::ActionRequestImpl::_instance; }

  Ecore_Task_Cb tick = nullptr;
};

#endif
