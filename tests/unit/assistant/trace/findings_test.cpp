// SPDX-License-Identifier: Apache-2.0
//
// What the events do not have to mean: findings that must not be made. That each mistake is found,
// real applications show.
#include "assistant/trace/Findings.h"

#include <gmock/gmock.h>

namespace {

using nlohmann::json;
using norix::assistant::trace::Event;
using norix::assistant::trace::Finding;
using norix::assistant::trace::Findings;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

class TheFindings : public testing::Test {
protected:
  std::vector<Finding> see(const std::string &name, json members) {
    members["event"] = name;
    return _findings.see({name, ++_time, std::move(members)});
  }
  std::vector<Finding> call(const std::string &function, json members = json::object(),
                            int result = 0) {
    members["function"] = function;
    members["result"] = result;
    members.emplace("onLoop", true);
    return see("call", std::move(members));
  }
  void initialize() { EXPECT_THAT(call("norix_initialize"), IsEmpty()); }
  std::vector<Finding> registerAction() {
    return call("norix_set_action_execution_cb", {{"action", "act"}, {"registers", true}});
  }
  void receive(int number, const std::string &handle) {
    see("received", {{"request", number}, {"action", "act"}});
    see("callback-entered",
        {{"request", number}, {"action", "act"}, {"handle", handle}, {"deferred", false}});
  }
  std::vector<Finding> answer(const std::string &handle) {
    return call("norix_complete_action_execution", {{"handle", handle}, {"utf8", true}});
  }
  static auto isWord(const std::string &word) { return Field(&Finding::word, word); }

private:
  Findings _findings{"org.example.app"};
  std::uint64_t _time = 0;
};

TEST_F(TheFindings, LetAnActionBeRegisteredAgainOnceItWasUnset) {
  initialize();
  registerAction();
  call("norix_unset_action_execution_cb", {{"action", "act"}});

  EXPECT_THAT(registerAction(), IsEmpty());
}

TEST_F(TheFindings, LetAnActionBeRegisteredAgainAfterDeinitialize) {
  initialize();
  registerAction();
  EXPECT_THAT(call("norix_deinitialize"), IsEmpty());
  initialize();

  EXPECT_THAT(registerAction(), IsEmpty());
}

TEST_F(TheFindings, CountANullCallbackAsTakenAway) {
  initialize();
  registerAction();
  call("norix_set_action_execution_cb", {{"action", "act"}, {"registers", false}});

  EXPECT_THAT(registerAction(), IsEmpty());
}

TEST_F(TheFindings, LetAHandleBeUsedAgainForALaterRequest) {
  initialize();
  receive(1, "0x10");
  EXPECT_THAT(answer("0x10"), IsEmpty());
  receive(2, "0x10");

  EXPECT_THAT(answer("0x10"), IsEmpty());
}

TEST_F(TheFindings, BlameNobodyForARequestThatANewerOneReplaced) {
  initialize();
  receive(1, "0x10");
  receive(2, "0x14");

  EXPECT_THAT(answer("0x14"), IsEmpty());
}

TEST_F(TheFindings, SayThatAnIgnoredFailureWasIgnoredOnce) {
  call("norix_initialize", json::object(), -1073741822);

  EXPECT_THAT(call("norix_set_app_state_request_cb", {}, -1073741825),
              ElementsAre(isWord("initialize-ignored")));
  EXPECT_THAT(call("norix_set_action_execution_cb", {}, -1073741825), IsEmpty());
}

TEST_F(TheFindings, BelieveNoLogLineThatQuotesAnAnswer) {
  initialize();

  EXPECT_THAT(see("log", {{"tag", "NORIX-APPSDK"},
                          {"function", "completeActionExecution"},
                          {"text", "action execution timed out. Failed to execute action."}}),
              IsEmpty());
}

TEST_F(TheFindings, SayThatARequestWasLeftUnansweredAtTheEnd) {
  initialize();
  receive(1, "0x10");

  EXPECT_THAT(see("exit", {{"status", 0}}), ElementsAre(isWord("never-answered")));
}

TEST_F(TheFindings, AreNoneForAnEventTheyDoNotKnow) {
  EXPECT_THAT(see("from-the-future", json::object()), IsEmpty());
}

} // namespace
