// SPDX-License-Identifier: Apache-2.0
//
// Every call of the platform: what is recorded, what fails, and what happens inside.
#include "fakes/LibraryTest.h"
#include "fakes/NoClient.h"

#include "NorixImpl/NorixCommonData.h"

#include <norix.h>

#include <stdexcept>

namespace {

using fake::library;
using fake::platform;
using fake::TextsAre;
using testing::IsEmpty;

class AFakeCall : public fake::LibraryTest {
protected:
  static int del() {
    return library([] { return ecore_timer_del(nullptr) == nullptr ? 0 : 1; });
  }
};

TEST_F(AFakeCall, IsRecordedWhenTheLibraryMakesIt) {
  ecore_timer_del(nullptr);
  EXPECT_THAT(platform().journal.calls(), IsEmpty());

  del();

  EXPECT_THAT(calls({"ecore_timer_del"}), TextsAre({"ecore_timer_del(null)"}));
  EXPECT_EQ(platform().journal.count("ecore_timer_del"), 1);
}

TEST_F(AFakeCall, RunsWhatATestWantsInsideTheNextOneAlone) {
  int times = 0;
  platform().during["ecore_timer_del"] = [&times] {
    EXPECT_FALSE(fake::runningLibrary());
    ++times;
  };

  del();
  del();

  EXPECT_EQ(times, 1);
}

TEST_F(AFakeCall, RunsWhatATestWantsInsideTheOneWithTheseArguments) {
  std::vector<std::string> seen;
  inside("bundle_free(bundle 2)", [&seen] { seen = platform().journal.of({"bundle_free"}); });
  bundle *first = bundle_create();
  bundle *second = bundle_create();
  bundle *third = bundle_create();

  library([&] {
    bundle_free(first);
    bundle_free(second);
    bundle_free(third);
  });

  EXPECT_THAT(seen, TextsAre({"bundle_free(bundle 1)", "bundle_free(bundle 2)"}));
}

TEST_F(AFakeCall, LetsAnExceptionFromInsideThrough) {
  platform().during["ecore_timer_del"] = [] { throw std::runtime_error("inside"); };

  EXPECT_THROW(del(), std::runtime_error);

  EXPECT_FALSE(fake::runningLibrary());
}

TEST_F(AFakeCall, FailsTheNthTimeWithTheResultThatATestNames) {
  fake::Faults faults;
  faults.fail("call", 2, -7);

  EXPECT_EQ(faults.next("call"), std::nullopt);
  EXPECT_EQ(faults.next("other"), std::nullopt);
  EXPECT_EQ(faults.next("call"), -7);
  EXPECT_EQ(faults.next("call"), std::nullopt);
}

TEST_F(AFakeCall, CountsTheNthTimeFromTheMomentItWasNamed) {
  fake::Faults faults;
  (void)faults.next("call");
  faults.fail("call", 1, -7);
  faults.fail("call", 2, -8);

  EXPECT_EQ(faults.next("call"), -7);
  EXPECT_EQ(faults.next("call"), -8);
}

TEST_F(AFakeCall, FailsEachTimeWhenATestSaysSo) {
  fake::Faults faults;
  faults.failAlways("call", -7);
  faults.fail("call", 2, -8);

  EXPECT_EQ(faults.next("call"), -7);
  EXPECT_EQ(faults.next("call"), -8);
  EXPECT_EQ(faults.next("call"), -7);
}

// The arguments in the journal.
class ADescription : public fake::LibraryTest {};

TEST_F(ADescription, NamesHandlesByTheOrderOfTheirCreation) {
  bundle *first = platform().bundles.create();
  bundle *second = platform().bundles.create();

  EXPECT_EQ(fake::describe(second), "bundle 2");
  bundle_free(first);
  EXPECT_EQ(fake::describe(first), "stale bundle");
  EXPECT_EQ(fake::describe(static_cast<bundle *>(nullptr)), "null");
  bundle_free(second);
}

TEST_F(ADescription, NamesPortsByTheirInstance) {
  int stale = 0;

  EXPECT_EQ(fake::describe(fake::PortHandle{platform().ports.port("i", RPC_PORT_PORT_MAIN)}),
            "main port of i");
  EXPECT_EQ(fake::describe(fake::PortHandle{platform().ports.port("i", RPC_PORT_PORT_CALLBACK)}),
            "callback port of i");
  EXPECT_EQ(fake::describe(fake::PortHandle{nullptr}), "null");
  EXPECT_EQ(fake::describe(fake::PortHandle{&stale}), "stale port");
}

TEST_F(ADescription, CutsALongText) {
  EXPECT_EQ(fake::describe(std::string(200, 'x').c_str()), std::string(200, 'x'));
  EXPECT_EQ(fake::describe(std::string(201, 'x').c_str()), std::string(200, 'x') + "… (201 bytes)");
  EXPECT_EQ(fake::describe(static_cast<const char *>(nullptr)), "null");
}

TEST_F(ADescription, ShowsNumbersAndTruths) {
  EXPECT_EQ(fake::describe(-22), "-22");
  EXPECT_EQ(fake::describe(0.02), "0.02");
  EXPECT_EQ(fake::describe(size_t{8}), "8");
  EXPECT_EQ(fake::describe(true), "true");
}

TEST_F(ADescription, ShowsEntriesAndFieldsWhenATestFails) {
  EXPECT_EQ(testing::PrintToString(fake::id("requestId", 42)), "requestId=id 42");
  EXPECT_EQ(testing::PrintToString(fake::texts("k", {"a", "b"})),
            "k=type " + std::to_string(BUNDLE_TYPE_STR_ARRAY) + " 'a' 'b'");
  EXPECT_EQ(testing::PrintToString(fake::Int32{-1}), "int32 -1");
  EXPECT_EQ(testing::PrintToString(fake::Bool{true}), "bool true");
  EXPECT_EQ(testing::PrintToString(fake::Text{"t"}), "string 't'");
  EXPECT_EQ(testing::PrintToString(fake::BundleOf{{fake::id("a", 1), fake::id("b", 2)}}),
            "bundle {a=id 1, b=id 2}");
}

TEST_F(ADescription, TellsEntriesApartByEachOfTheirParts) {
  EXPECT_TRUE(fake::text("a", "x") == fake::text("a", "x"));
  EXPECT_FALSE(fake::text("a", "x") == fake::text("b", "x"));
  EXPECT_FALSE(fake::text("a", "x") == fake::text("a", "y"));
  EXPECT_FALSE(fake::text("a", "x") == fake::bytes("a", "x"));
  EXPECT_FALSE(fake::texts("a", {"x"}) == fake::texts("a", {"x", "y"}));
}

// The client whose id has no buffer.
class ANoClient : public fake::ReadyLibraryTest {};

TEST_F(ANoClient, IsOneOnlyForItsBlock) {
  norix::NorixCommonData &common = *norix::NorixCommonData::_instance;
  common._norixClientAppId = "an id that is longer than a string's own buffer";
  {
    const fake::NoClient noClient;
    EXPECT_FALSE(common.hasClient());
  }
  EXPECT_TRUE(common.hasClient());
  EXPECT_EQ(common._norixClientAppId, "an id that is longer than a string's own buffer");
}

// The application that most tests use.
class AnApp : public fake::ReadyLibraryTest {};

TEST_F(AnApp, KeepsItsRequestsAndThenDoesWhatATestWants) {
  size_t kept = 0;
  app.registersFor("play");
  app.onAction = [&](const fake::App::Request &request) {
    kept = app.actionRequests.size();
    EXPECT_EQ(request.number, 2);
    EXPECT_FALSE(fake::runningLibrary());
  };

  assistant.asksForAction("play", 1);

  EXPECT_EQ(kept, 1U);
  EXPECT_EQ(app.actionRequests[0].params, fake::actionRequest("play", 1));
}

// What one test has done to the library is nothing to the next.
TEST_F(AnApp, StartsAnewWithEachTest) {
  fake::startAnew();

  EXPECT_EQ(norix::NorixCommonData::_instance, nullptr);
  EXPECT_EQ(app.registersForState(), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
  EXPECT_EQ(platform().ports.stubsCreated(), 1);
}

} // namespace
