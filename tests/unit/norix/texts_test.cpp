// SPDX-License-Identifier: Apache-2.0
//
// Every text that comes in or goes out passes unchanged. (Action ids,
// answers and lines of the allow list have their tests where they belong.)
#include "NorixImpl/NorixCommonData.h"
#include "exported_calls.h"

#include "fakes/LibraryTest.h"

#include <norix.h>

#include <ostream>
#include <string>

namespace {

using fake::DeliberateLeak;
using fake::ParcelsAre;
using fake::platform;
using fake::ResponsesAre;
using testing::Contains;

struct Content {
  const char *name;
  std::string value;
};

void PrintTo(const Content &row, std::ostream *out) {
  *out << row.name;
}

class AText : public fake::LibraryTest, public testing::WithParamInterface<Content> {
protected:
  static const std::string &text() { return GetParam().value; }

  void isReady() {
    app.isReady();
    app.registersFor("play");
    app.registersForState();
    assistant.isReady();
  }
};

TEST_P(AText, MayBeTheApplicationsOwnId) {
  platform().application.id = text();
  isReady();
  assistant.asksForAction("play", 1);

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.callbacks(),
              ParcelsAre({fake::callback({}, text(), fake::actionAnswer("result", 1))}));
  EXPECT_THAT(log(), Contains("App Id " + text()));
}

TEST_P(AText, MayBeTheIdThatTheAppInfoIsAskedForWith) {
  platform().application.id = text();

  (void)norix_deinitialize();

  EXPECT_EQ(log()[0], "AppId = " + text());
  EXPECT_THAT(calls({"app_info_create"}),
              testing::ElementsAre("app_info_create(" + fake::describe(text().c_str()) + ")"));
}

TEST_P(AText, MayBeTheSdkVersion) {
  platform().application.metadata = {{NORIX_SDK_VERSION_METADATA_KEY, text()}};

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), Contains("AppSdkVersion " + text()));
}

TEST_P(AText, MayStandAroundAnUnsupportedSdkVersion) {
  platform().application.metadata = {
      {NORIX_SDK_VERSION_METADATA_KEY, text() + "1.0-alpha" + text()}};

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NOT_SUPPORTED);
}

TEST_P(AText, MayBeAnotherEntryOfTheManifest) {
  platform().application.metadata = {{text(), text()}, {NORIX_SDK_VERSION_METADATA_KEY, "1.0"}};

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(log()[1], "metadata_key[" + text() + "] metadata_value[" + text() + "]");
}

TEST_P(AText, MayBeTheSendersId) {
  isReady();
  fake::Assistant sender(text(), "instance-2");
  sender.connects();
  EXPECT_EQ(sender.registers(), 0);

  EXPECT_EQ(sender.asksForState(1), 0);
  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);

  EXPECT_EQ(norix::NorixCommonData::_instance->_norixClientAppId, text());
  EXPECT_THAT(log(), Contains("Call stub CreateService Sender:" + text()));
  EXPECT_THAT(log(), Contains("Call stub Sender " + text()));
  EXPECT_THAT(log(), Contains("_norixClientAppId : " + text()));
  EXPECT_THAT(sender.responses(), ResponsesAre({fake::stateAnswer("state", 1)}));
  EXPECT_THAT(assistant.callbacks(), testing::IsEmpty());
}

TEST_P(AText, MayBeTheIdOfASenderThatIsRefused) {
  isReady();
  allowListIs("only\n");
  fake::Assistant sender(text(), "instance-2");
  sender.connects();

  EXPECT_EQ(sender.asksForState(1), 0);

  EXPECT_THAT(log(), Contains(text() + " is not permitted app id"));
  EXPECT_TRUE(app.stateRequests.empty());
}

TEST_P(AText, MayBeTheInstanceOfAConnection) {
  isReady();
  fake::Assistant sender("org.example.other", text());
  sender.connects();
  EXPECT_EQ(sender.registers(), 0);

  EXPECT_EQ(sender.asksForAction("play", 1), 0);
  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);
  sender.disconnects();

  EXPECT_THAT(sender.responses(), ResponsesAre({fake::actionAnswer("result", 1)}));
  EXPECT_EQ(sender.unregisters(), -1);
  EXPECT_THAT(log(), Contains("Failed to find $$ context(" + text() + ")"));
}

TEST_P(AText, MayBeAnyEntryOfARequest) {
  isReady();
  const fake::Contents request = {fake::text("actionId", "play"), fake::text("actionType", text()),
                                  fake::text("actionParams", text()), fake::id("requestId", 1)};

  EXPECT_EQ(assistant.sends(request), 0);

  EXPECT_EQ(app.actionRequests.back().params, request);
}

TEST_P(AText, MayBeAnyEntryOfARequestThatWaits) {
  isReady();
  const fake::Contents request = {fake::text("actionId", "late"), fake::text("actionType", text()),
                                  fake::text("actionParams", text()), fake::id("requestId", 1)};

  EXPECT_EQ(assistant.sends(request), 0);
  app.registersFor("late");
  platform().clock.advance(0.02);

  EXPECT_EQ(app.actionRequests.back().params, request);
  expectLeft(DeliberateLeak::ParkedBundle);
}

// The handle of such a request is read as a number: at least four bytes are there.
TEST_P(AText, MayBeTheActionIdOfARequestThatWaits) {
  isReady();

  EXPECT_EQ(assistant.asksForAction(text(), 1), 0);
  app.registersFor(text());
  platform().clock.advance(0.02);

  ASSERT_EQ(app.actionRequests.size(), 1U);
  EXPECT_EQ(static_cast<const char *>(app.actionRequests.back().handle), text());
  expectLeft(DeliberateLeak::ParkedBundle);
}

TEST_P(AText, MayBeAnActionsName) {
  std::string name;
  isReady();
  app.registersFor(text());
  assistant.asksForAction(text(), 1);

  const int result = getActionName(app.actionRequests.back().handle, &name);

  // An empty name cannot be told from none.
  EXPECT_EQ(result, text().empty() ? NORIX_ERROR_INVALID_PARAMETER : NORIX_ERROR_NONE);
  EXPECT_EQ(name, text());
}

INSTANTIATE_TEST_SUITE_P(, AText,
                         testing::Values(Content{"ThatIsEmpty", ""}, Content{"OfOneLetter", "a"},
                                         Content{"WithPercentSigns", "%s %n 100%"},
                                         Content{"OfSeveralLines", "a\nb\r\n"},
                                         Content{"ThatIsNoUtf8", "\xff\xfe\x80"},
                                         Content{"InAnotherScript", "재생 중 ▶"},
                                         Content{"OfTenThousandLetters", std::string(10000, 'x')},
                                         Content{"OfAMebibyte", std::string(1 << 20, 'x')}),
                         [](const auto &tested) { return std::string(tested.param.name); });

} // namespace
