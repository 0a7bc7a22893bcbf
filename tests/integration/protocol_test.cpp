// SPDX-License-Identifier: Apache-2.0
//
// Messages that the interface does not have.
#include "assistant/client/Parcel.h"
#include "integration/harness/Failures.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/Named.h"
#include "integration/harness/TestApplication.h"
#include "integration/harness/wire.h"

#include <rpc-port-parcel.h>

#include <limits>

namespace integration {
namespace {

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

// What stands where the request's bundle should, as a parcel lays it out: a length, and bytes.
using Garbage = Named<const char *>;

class ARequestBundle : public IntegrationTest {
protected:
  void SetUp() override {
    application.setState();
    application.setAction("play");
    application.answerAtOnce("well");
  }

  // The application sees the next request, and has seen none before it.
  void expectNextIsTheFirstToBeServed() {
    EXPECT_EQ(session.ask(stateRequest(), kBound).response.text(), "well");
    EXPECT_EQ(application.awaitRequest().kind, "state");
  }

  // A Send whose bundle is these bytes, with their length before them.
  void sendRequest(const std::string &field) {
    constexpr int kSend = 4;
    const std::string raw = support::parcel(support::bytes(kSend) + field);
    rpc_port_parcel_h parcel = nullptr;
    ASSERT_EQ(
        rpc_port_parcel_create_from_raw(&parcel, raw.data(), static_cast<unsigned>(raw.size())),
        RPC_PORT_ERROR_NONE);
    EXPECT_EQ(rpc_port_parcel_send(parcel, session.client().mainPort()), RPC_PORT_ERROR_NONE);
    rpc_port_parcel_destroy(parcel);
  }

  TestApplication application{runtime};
  Session session{application.id()};
};

class AGarbledRequest : public ARequestBundle, public testing::WithParamInterface<Garbage> {};

INSTANTIATE_TEST_SUITE_P(
    , AGarbledRequest,
    testing::Values(Garbage{"OfNoBytes", "00000000"},
                    Garbage{"OfNoise", "08000000fedcba9876543210"},
                    Garbage{"OfFourGibibytes", "ffffffff0000000000"},
                    Garbage{"ThatClaimsManyKeys", "0c000000ffffff7f0104000002000000"},
                    Garbage{"WithGarbageBehindNoKeys", "0800000000000000deadbeef"}));

std::string bytesFrom(const std::string &hexadecimal) {
  std::string bytes;
  for (size_t at = 0; at < hexadecimal.size(); at += 2) {
    bytes += static_cast<char>(std::stoi(hexadecimal.substr(at, 2), nullptr, 16));
  }
  return bytes;
}

std::string withLength(const std::string &bytes) {
  return support::bytes(static_cast<std::uint32_t>(bytes.size())) + bytes;
}

TEST_P(AGarbledRequest, IsDroppedAndTheNextIsServed) {
  sendRequest(bytesFrom(GetParam().value));

  expectNextIsTheFirstToBeServed();
}

TEST_F(ARequestBundle, CutAnywhereOrWithGarbageBehindItIsDroppedAndTheNextIsServed) {
  constexpr size_t kBeforeTheBundle = 8 + 24 + 4 + 4; // Prefix, header, message id, length.
  const std::string bundle = requestFrame(actionRequest("play")).substr(kBeforeTheBundle);

  for (size_t cut = 0; cut < bundle.size(); ++cut) {
    sendRequest(withLength(bundle.substr(0, cut)));
  }
  sendRequest(withLength(bundle + "garbage"));

  expectNextIsTheFirstToBeServed();
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
