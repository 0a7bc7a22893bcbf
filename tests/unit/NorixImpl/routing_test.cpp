// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include "NorixImpl/NorixCommonData.h"
#include "NorixImpl/NorixImpl.h"

#include <norix.h>

#include <ostream>
#include <stdexcept>

namespace {

using fake::Contents;
using fake::DeliberateLeak;
using fake::IsLine;
using fake::library;
using fake::LinesAre;
using fake::platform;
using fake::ResponsesAre;
using fake::TextsAre;
using norix::NorixCommonData;
using norix::NorixImpl;
using testing::Contains;
using testing::IsEmpty;

class ARequest : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
    app.registersFor("play");
    // States are answered at once, so that no test has a timer to think of.
    app.onState = [this](const auto &) { app.answersState("state"); };
    forgetCalls();
  }

  static unsigned long long requestId() { return NorixCommonData::_instance->_requestId; }
};

TEST_F(ARequest, IsReadEntryByEntry) {
  assistant.asksForAction("play", 1);

  EXPECT_THAT(
      calls({"bundle_get_str", "bundle_get_byte"}),
      TextsAre({"bundle_get_str(bundle 2, actionId)", "bundle_get_str(bundle 2, actionType)",
                "bundle_get_str(bundle 2, actionParams)", "bundle_get_byte(bundle 2, requestId)"}));
}

TEST_F(ARequest, ForTheStateGoesToTheStateCallback) {
  assistant.asksForState(1);

  EXPECT_EQ(app.stateRequests.size(), 1U);
  EXPECT_THAT(app.actionRequests, IsEmpty());
  EXPECT_THAT(logLines(),
              Contains(IsLine("NorixImpl.cpp", "executeRequest", "App State request recieved")));
}

TEST_F(ARequest, ForAnActionGoesToItsCallback) {
  assistant.asksForAction("play", 1);

  EXPECT_EQ(app.actionRequests.size(), 1U);
  EXPECT_THAT(app.stateRequests, IsEmpty());
  EXPECT_THAT(logLines(), Contains(IsLine("NorixImpl.cpp", "executeRequest",
                                          "Action Execution request recieved")));
}

TEST_F(ARequest, IsRoutedByItsActionIdWhateverItsTypeSays) {
  assistant.sends({fake::text("actionId", "getAppContext"), fake::text("actionType", "action")});
  assistant.sends({fake::text("actionId", "play"), fake::text("actionType", "getAppContext")});

  EXPECT_EQ(app.stateRequests.size(), 1U);
  EXPECT_EQ(app.actionRequests.size(), 1U);
}

TEST_F(ARequest, NeedsNothingButItsActionId) {
  assistant.sends({fake::text("actionId", "play")});

  EXPECT_EQ(app.actionRequests.size(), 1U);
  EXPECT_EQ(requestId(), 0U);
}

TEST_F(ARequest, IsHandedOverWithAllItsEntries) {
  const Contents whole = {fake::text("actionId", "play"), fake::text("song", "Blue"),
                          fake::texts("artists", {"a", "b"}), fake::bytes("raw", "xyz"),
                          fake::byteArrays("raws", {"x", "y"})};

  assistant.sends(whole);

  EXPECT_EQ(app.actionRequests.back().params, whole);
}

TEST_F(ARequest, RecordsItsSender) {
  fake::Assistant other("org.example.other", "instance-2");
  other.connects();

  other.asksForAction("play", 1);
  EXPECT_EQ(NorixCommonData::_instance->_norixClientAppId, "org.example.other");

  assistant.asksForState(2);
  EXPECT_EQ(NorixCommonData::_instance->_norixClientAppId, fake::kAssistantId);
}

TEST_F(ARequest, AbandonsTheOneBefore) {
  assistant.asksForAction("play", 1); // waits with timer 1
  platform().journal.clear();

  assistant.asksForAction("play", 2);

  // The timer of states first, then the one of actions.
  EXPECT_THAT(
      calls({"ecore_timer_del", "ecore_timer_add"}),
      TextsAre({"ecore_timer_del(null)", "ecore_timer_del(timer 1)", "ecore_timer_add(30)"}));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(ARequest, AbandonsOneOfTheOtherKind) {
  app.onState = nullptr;
  assistant.asksForState(1); // waits with timer 1
  platform().journal.clear();

  assistant.asksForAction("play", 2);

  EXPECT_THAT(calls({"ecore_timer_del"}),
              TextsAre({"ecore_timer_del(timer 1)", "ecore_timer_del(null)"}));
}

TEST_F(ARequest, FreesTheParkedOneBefore) {
  assistant.asksForAction("late", 1);
  const size_t alive = platform().bundles.alive();

  assistant.asksForAction("play", 2);

  EXPECT_EQ(platform().bundles.alive(), alive - 1);
}

TEST_F(ARequest, TakesTheHandleOfTheOneBeforeAway) {
  assistant.asksForAction("play", 1);

  assistant.asksForAction("late", 2);

  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_F(ARequest, MayHaveTextsThatAreNoUtf8) {
  const std::string actionId = "\xff\xfe\x80";
  app.registersFor(actionId);

  assistant.asksForAction(actionId, 1);

  EXPECT_EQ(app.actionRequests.back().params[0], fake::text("actionId", actionId));
}

struct ActionId {
  const char *name;
  const char *value;
};

void PrintTo(const ActionId &row, std::ostream *out) {
  *out << row.name;
}

class AnActionIdLikeGetAppContext : public ARequest,
                                    public testing::WithParamInterface<ActionId> {};

TEST_P(AnActionIdLikeGetAppContext, IsAnAction) {
  app.registersFor(GetParam().value);

  assistant.asksForAction(GetParam().value, 1);

  EXPECT_EQ(app.actionRequests.size(), 1U);
  EXPECT_THAT(app.stateRequests, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(, AnActionIdLikeGetAppContext,
                         testing::Values(ActionId{"InLowerCase", "getappcontext"},
                                         ActionId{"InUpperCase", "GETAPPCONTEXT"},
                                         ActionId{"ButLonger", "getAppContext2"},
                                         ActionId{"ButShorter", "getAppContex"},
                                         ActionId{"WithABlank", "getAppContext "},
                                         ActionId{"Empty", ""}),
                         [](const auto &tested) { return std::string(tested.param.name); });

// What a request's "requestId" entry becomes.
struct RequestId {
  const char *name;
  Contents entries;
  unsigned long long id;
};

void PrintTo(const RequestId &row, std::ostream *out) {
  *out << row.name;
}

class ARequestId : public ARequest, public testing::WithParamInterface<RequestId> {};

TEST_P(ARequestId, IsRecorded) {
  Contents request = {fake::text("actionId", "play")};
  request.insert(request.end(), GetParam().entries.begin(), GetParam().entries.end());

  assistant.sends(request);
  EXPECT_EQ(requestId(), GetParam().id);

  app.answersAction("result");
  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("result", GetParam().id)}));
}

INSTANTIATE_TEST_SUITE_P(
    , ARequestId,
    testing::Values(
        RequestId{"OfEightBytes", {fake::id("requestId", 42)}, 42},
        RequestId{"WithEveryBitSet", {fake::id("requestId", ~0ULL)}, ~0ULL},
        RequestId{"OfZero", {fake::id("requestId", 0)}, 0}, RequestId{"ThatIsMissing", {}, 0},
        // The size is not asked for: eight bytes are read in any case.
        RequestId{"OfFourBytes", {fake::bytes("requestId", std::string("\x05\0\0\0", 4))}, 5},
        RequestId{
            "OfNineBytes", {fake::bytes("requestId", std::string("\x06\0\0\0\0\0\0\0\xff", 9))}, 6},
        RequestId{"ThatIsAText", {fake::text("requestId", "42")}, 0},
        RequestId{"ThatIsAnArray", {fake::byteArrays("requestId", {"\x01"})}, 0}),
    [](const auto &tested) { return std::string(tested.param.name); });

// Without "actionId" there is nothing to route by.
class ARequestWithoutActionId : public ARequest, public testing::WithParamInterface<RequestId> {};

TEST_P(ARequestWithoutActionId, IsDroppedAfterItHasReplacedTheOneBefore) {
  assistant.asksForAction("play", 1);
  forgetCalls();

  EXPECT_EQ(assistant.sends(GetParam().entries), 0);
  platform().clock.advance(kLong);

  EXPECT_THAT(logLines(),
              LinesAre({testing::_, testing::_, testing::_, testing::_,
                        IsLine("NorixImpl.cpp", "executeRequest", "actionId is null")}));
  EXPECT_EQ(requestId(), GetParam().id);
  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(, ARequestWithoutActionId,
                         testing::Values(RequestId{"ThatIsEmpty", {}, 0},
                                         RequestId{"WithAnIdOnly", {fake::id("requestId", 42)}, 42},
                                         RequestId{"WithBytesInItsPlace",
                                                   {fake::bytes("actionId", "play"),
                                                    fake::id("requestId", 42)},
                                                   42}),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST_F(ARequestWithoutActionId, AlsoFreesTheParkedOneBefore) {
  assistant.asksForAction("late", 1);

  assistant.sends({});
  assistant.asksForAction("play", 2);
  app.answersAction("result");

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::actionAnswer("result", 2)}));
}

TEST_F(ARequest, OfANullBundleIsDropped) {
  platform().faults.fail("bundle_dup");

  EXPECT_EQ(assistant.asksForAction("play", 1), 0);

  EXPECT_THAT(log().back(), "actionId is null");
  EXPECT_THAT(app.actionRequests, IsEmpty());
}

class ANullSender : public ARequest {
protected:
  void executes(const Contents &contents) {
    bundle *request = platform().bundles.create(contents);
    EXPECT_THAT(
        [request] {
          library([request] { NorixImpl::getInstance()->executeRequest(nullptr, request); });
        },
        testing::ThrowsMessage<std::logic_error>(
            testing::StrEq("basic_string::_M_construct null not valid")));
    bundle_free(request);
  }
};

TEST_F(ANullSender, ThrowsAfterAnActionHasReplacedTheRequestBefore) {
  assistant.asksForAction("play", 1);
  forgetCalls();

  executes(fake::actionRequest("play", 42));

  EXPECT_THAT(log(), TextsAre({"Action Execution request recieved"}));
  EXPECT_EQ(requestId(), 42U);
  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
}

TEST_F(ANullSender, ThrowsAfterAStateRequestHasReplacedTheRequestBefore) {
  assistant.asksForAction("play", 1);
  forgetCalls();

  executes(fake::stateRequest(42));

  EXPECT_THAT(log(), TextsAre({"App State request recieved"}));
  EXPECT_EQ(requestId(), 42U);
  EXPECT_THAT(platform().clock.alive(), IsEmpty());
}

} // namespace
