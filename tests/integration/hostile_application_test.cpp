// SPDX-License-Identifier: Apache-2.0
//
// The assistant's side against applications that do not keep to the protocol.
#include "integration/harness/Failures.h"
#include "integration/harness/IntegrationTest.h"

#include <gmock/gmock.h>

namespace integration {
namespace {

using testing::HasSubstr;

constexpr const char *kHostileId = "org.example.hostile";

struct Misbehaviour {
  const char *name;
  const char *argument;
  Failure failure;
  const char *message;
};

std::ostream &operator<<(std::ostream &out, const Misbehaviour &misbehaviour) {
  return out << misbehaviour.name;
}

class AHostileApplication : public IntegrationTest,
                            public testing::WithParamInterface<Misbehaviour> {
protected:
  Process application{{HOSTILE_APPLICATION, GetParam().argument}, {{"AUL_APPID", kHostileId}}};
};

INSTANTIATE_TEST_SUITE_P(
    , AHostileApplication,
    testing::Values(
        Misbehaviour{"ThatHangsUp", "hang-up", Failure::Disconnected, "in answer to SetCB"},
        Misbehaviour{"ThatHangsUpOnARequest", "hang-up-on-request", Failure::Disconnected,
                     "the connection ended"},
        Misbehaviour{"WithAnEmptyResult", "empty-result", Failure::Malformed, "no message id"},
        Misbehaviour{"WithAShortResult", "short-result", Failure::Malformed, "no result"},
        Misbehaviour{"WithAnotherMessageAsResult", "other-message-as-result", Failure::Malformed,
                     "id 1, not 0 (Result)"},
        Misbehaviour{"WithAnUnknownResult", "unknown-result", Failure::Malformed,
                     "unknown result 7"},
        Misbehaviour{"WithAnEmptyCallback", "empty-callback", Failure::Malformed, "no message id"},
        Misbehaviour{"WithAnotherMessageAsCallback", "other-message-as-callback",
                     Failure::Malformed, "id 0, not 1 (Callback)"},
        Misbehaviour{"WithAShortDelegate", "short-delegate", Failure::Malformed,
                     "no delegate sequence id"},
        Misbehaviour{"WithAnotherDelegate", "other-delegate", Failure::Malformed,
                     "delegate 1::5 is not the registered 1::0"},
        Misbehaviour{"WithoutAppId", "no-app-id", Failure::Malformed, "no app id"},
        Misbehaviour{"WithoutBundle", "no-bundle", Failure::Malformed, "no bundle"},
        Misbehaviour{"WithAnEmptyBundle", "empty-bundle", Failure::Malformed,
                     "no key 'status_code'"}));

TEST_P(AHostileApplication, GetsAnErrorThatSaysWhatIsWrong) {
  application.readLine();
  const auto exchange = [] { Session(kHostileId).ask(stateRequest(), kBound); };

  EXPECT_EQ(failureOf(exchange), GetParam().failure);
  EXPECT_THAT(messageOf(exchange), HasSubstr(GetParam().message));
}

} // namespace
} // namespace integration
