// SPDX-License-Identifier: Apache-2.0
//
// The leak check has to fail where something is left: one case per kind of thing.
#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"
#include "fakes/Singletons.h"

#include <Ecore.h>
#include <app_common.h>
#include <app_manager.h>
#include <bundle.h>
#include <gtest/gtest-spi.h>
#include <norix.h>
#include <rpc-port-parcel.h>
#include <rpc-port.h>

#include <cstdlib>

namespace {

using fake::DeliberateLeak;
using fake::library;
using fake::platform;
using fake::TextsAre;
using testing::IsEmpty;

class TheLeakCheck : public fake::LibraryTest {
protected:
  static std::vector<std::string> complaints() {
    fake::destroySingletons();
    return platform().leaks.complaints();
  }
};

TEST_F(TheLeakCheck, FailsTheTestThatLeavesSomething) {
  bundle *left = bundle_create();

  EXPECT_NONFATAL_FAILURE(fake::reportWhatIsLeft(), "1 bundles left, expected 0");

  bundle_free(left);
}

TEST_F(TheLeakCheck, FailsTheTestThatMisusesThePlatform) {
  bundle *freed = bundle_create();
  bundle_free(freed);
  bundle_free(freed);

  EXPECT_NONFATAL_FAILURE(fake::reportWhatIsLeft(), "bundle_free with a bundle that is not alive");

  platform().misuses.clear();
}

TEST_F(TheLeakCheck, IsContentWithALibraryThatWasUsedAndDeinitialised) {
  app.initialises();
  app.registersForState();
  app.registersFor("play");
  assistant.isReady();
  assistant.asksForAction("play", 42);
  app.answersAction("playing");

  app.deinitialises();

  EXPECT_THAT(complaints(), IsEmpty());
}

TEST_F(TheLeakCheck, SeesAStubAndTheRestOfALibraryThatIsStillInitialised) {
  app.initialises();

  EXPECT_THAT(complaints(), TextsAre({"1 stubs left, expected 0",
                                      "2 heap blocks of the library left, expected 0"}));

  // What is left is the same as after an initialisation that failed half way.
  expectLeft(DeliberateLeak::StubOfFailedInitialise);
}

TEST_F(TheLeakCheck, SeesAParcel) {
  rpc_port_parcel_h left = nullptr;
  rpc_port_parcel_create(&left);

  EXPECT_THAT(complaints(), TextsAre({"1 parcels left, expected 0"}));

  rpc_port_parcel_destroy(left);
}

TEST_F(TheLeakCheck, SeesAnAppInfo) {
  app_info_h left = nullptr;
  app_info_create(fake::kAppId, &left);

  EXPECT_THAT(complaints(), TextsAre({"1 app infos left, expected 0"}));

  app_info_destroy(left);
}

TEST_F(TheLeakCheck, SeesATimer) {
  Ecore_Timer *left = ecore_timer_add(
      30.0, [](void *) { return Eina_Bool{ECORE_CALLBACK_CANCEL}; }, nullptr);

  EXPECT_THAT(complaints(), TextsAre({"1 timers left, expected 0"}));

  ecore_timer_del(left);
}

TEST_F(TheLeakCheck, SeesATextOfThePlatform) {
  char *left = nullptr;
  app_get_id(&left);

  EXPECT_THAT(complaints(), TextsAre({"1 texts of the platform left, expected 0"}));

  std::free(left);
}

TEST_F(TheLeakCheck, SeesAHeapBlockOfTheLibrary) {
  void *left = library([] { return std::malloc(1); });

  EXPECT_THAT(complaints(), TextsAre({"1 heap blocks of the library left, expected 0"}));

  std::free(left);
}

TEST_F(TheLeakCheck, TakesWhatWasDeclared) {
  bundle *left = bundle_create();
  expectLeft(DeliberateLeak::ParkedBundle, 1);

  EXPECT_THAT(complaints(), IsEmpty());

  platform().leaks = {};
  bundle_free(left);
}

TEST_F(TheLeakCheck, SeesThatADeclaredLeakDidNotHappen) {
  expectLeft(DeliberateLeak::ParkedBundle, 1);

  EXPECT_THAT(complaints(), TextsAre({"0 bundles left, expected 1"}));

  platform().leaks = {};
}

} // namespace
