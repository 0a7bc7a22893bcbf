// SPDX-License-Identifier: Apache-2.0
//
// Messages that the interface does not have.
#include "assistant/client/Parcel.h"
#include "integration/harness/Failures.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/Named.h"
#include "integration/harness/TestApplication.h"

#include <limits>

namespace integration {
namespace {

using norix::assistant::Failure;
using norix::assistant::Parcel;
using norix::assistant::Session;
using norix::assistant::stateRequest;

using MessageId = Named<int>;

class AnUnknownMessage : public IntegrationTest, public testing::WithParamInterface<MessageId> {};
class AnEmptyMessage : public IntegrationTest {};
class ARequestMessage : public IntegrationTest {};

INSTANTIATE_TEST_SUITE_P(, AnUnknownMessage,
                         testing::Values(MessageId{"Result", 0}, MessageId{"Callback", 1},
                                         MessageId{"BehindTheLast", 5}, MessageId{"Negative", -2},
                                         MessageId{"Smallest", std::numeric_limits<int>::min()}));

TEST_P(AnUnknownMessage, EndsItsConnectionUnanswered) {
  const TestApplication application(runtime);
  Session session(application.id());

  Parcel().writeInt(GetParam().value).send(session.client().mainPort());

  EXPECT_EQ(failureOf([&] { session.next(kBound); }), Failure::Disconnected);
}

TEST_P(AnUnknownMessage, LeavesOtherConnectionsAlone) {
  const TestApplication application(runtime);
  Session hostile(application.id());
  runtime.sendAs("com.example.other");
  Session other(application.id());

  Parcel().writeInt(GetParam().value).send(hostile.client().mainPort());
  hostile.awaitEnd(kBound);

  EXPECT_TRUE(other.ask(stateRequest(), kBound).response.isState());
}

TEST_F(AnEmptyMessage, LeavesOtherConnectionsAlone) {
  const TestApplication application(runtime);
  Session hostile(application.id());
  runtime.sendAs("com.example.other");
  Session other(application.id());

  Parcel().send(hostile.client().mainPort());

  EXPECT_TRUE(other.ask(stateRequest(), kBound).response.isState());
}

TEST_F(ARequestMessage, WithoutItsBundleLeavesOtherConnectionsAlone) {
  constexpr int kSend = 4;
  const TestApplication application(runtime);
  Session hostile(application.id());
  runtime.sendAs("com.example.other");
  Session other(application.id());

  Parcel().writeInt(kSend).send(hostile.client().mainPort());

  EXPECT_TRUE(other.ask(stateRequest(), kBound).response.isState());
}

} // namespace
} // namespace integration
