// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"

#include <Ecore.h>

#include <stdexcept>

namespace {

using fake::library;
using fake::platform;
using fake::TextsAre;
using testing::IsEmpty;

// What fired, in order; a test's timers write their names into it.
std::vector<std::string> fired;
Ecore_Timer *itself = nullptr;

void note(void *name) {
  const fake::OutsideLibrary outside;
  fired.emplace_back(static_cast<const char *>(name));
}

Eina_Bool once(void *name) {
  note(name);
  return ECORE_CALLBACK_CANCEL;
}

Eina_Bool again(void *name) {
  note(name);
  return ECORE_CALLBACK_RENEW;
}

Eina_Bool deletingItself(void *name) {
  note(name);
  ecore_timer_del(itself);
  return ECORE_CALLBACK_RENEW;
}

Eina_Bool throwing(void * /*name*/) {
  throw std::runtime_error("from a timer");
}

class TheFakeClock : public fake::NothingLeft {
protected:
  TheFakeClock() { fired.clear(); }
};

TEST_F(TheFakeClock, FiresATimerWhenItsTimeHasPassed) {
  ecore_timer_add(0.02, once, "timer");

  platform().clock.advance(0.019);
  EXPECT_THAT(fired, IsEmpty());

  platform().clock.advance(0.001);
  EXPECT_THAT(fired, TextsAre({"timer"}));
}

TEST_F(TheFakeClock, FiresInTheOrderInWhichTimersComeDue) {
  ecore_timer_add(0.3, once, "last");
  ecore_timer_add(0.1, once, "first");
  ecore_timer_add(0.1, once, "second");

  platform().clock.advance(1);

  EXPECT_THAT(fired, TextsAre({"first", "second", "last"}));
}

TEST_F(TheFakeClock, RepeatsATimerWhileItsCallbackSaysSo) {
  Ecore_Timer *timer = ecore_timer_add(0.02, again, "tick");

  platform().clock.advance(0.1);
  ecore_timer_del(timer);
  platform().clock.advance(0.1);

  EXPECT_EQ(fired.size(), 5U);
}

TEST_F(TheFakeClock, LetsATimerDeleteItself) {
  itself = ecore_timer_add(0.02, deletingItself, "tick");

  platform().clock.advance(1);

  EXPECT_THAT(fired, TextsAre({"tick"}));
}

TEST_F(TheFakeClock, KnowsTheTimersThatAreAlive) {
  Ecore_Timer *timer = ecore_timer_add(30.0, once, "timer");

  const std::vector<fake::FakeTimer> alive = platform().clock.alive();

  ASSERT_EQ(alive.size(), 1U);
  EXPECT_EQ(alive[0].interval, 30.0);
  EXPECT_EQ(alive[0].callback, once);
  EXPECT_STREQ(static_cast<const char *>(alive[0].data), "timer");
  EXPECT_STREQ(static_cast<const char *>(ecore_timer_del(timer)), "timer");
}

TEST_F(TheFakeClock, TakesTheDeletionOfNoTimerAndOfAnEndedOne) {
  Ecore_Timer *ended = ecore_timer_add(0.1, once, "timer");
  platform().clock.advance(1);

  EXPECT_EQ(library([] { return ecore_timer_del(nullptr); }), nullptr);
  EXPECT_EQ(library([ended] { return ecore_timer_del(ended); }), nullptr);

  EXPECT_THAT(platform().journal.of({"ecore_timer_del"}),
              TextsAre({"ecore_timer_del(null)", "ecore_timer_del(stale timer)"}));
}

TEST_F(TheFakeClock, LetsAnExceptionThrough) {
  Ecore_Timer *timer = ecore_timer_add(0.1, throwing, nullptr);

  EXPECT_THROW(platform().clock.advance(1), std::runtime_error);

  ecore_timer_del(timer);
}

TEST_F(TheFakeClock, GivesNoTimerWhenTheCallIsToFail) {
  platform().faults.fail("ecore_timer_add");

  EXPECT_EQ(library([] { return ecore_timer_add(0.1, once, nullptr); }), nullptr);
}

} // namespace
