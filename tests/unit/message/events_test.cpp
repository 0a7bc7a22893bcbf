// SPDX-License-Identifier: Apache-2.0
//
// The platform's events: connections that come and go, and whose parcels are whose.
#include "RecordingService.h"

#include "fakes/LogMatchers.h"

#include <stdexcept>

namespace {

using fake::IsStubLine;
using fake::LinesAre;
using fake::platform;
using fake::TextsAre;
using testing::IsEmpty;

class AConnection : public ListeningStubTest {
protected:
  static constexpr const char *kUnknown = "Failed to find $$ context(%s)";
};

TEST_F(AConnection, GetsItsService) {
  assistant.connects();

  EXPECT_THAT(recorded.events,
              TextsAre({"create com.valtren.tizen.norix instance-1", "OnCreate instance-1"}));
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(AConnection, NeedsASender) {
  const auto connected = platform().ports.stub()->connected;

  EXPECT_THROW(fake::library([&] { connected.handler(nullptr, "instance-1", connected.userData); }),
               std::logic_error);

  EXPECT_THAT(recorded.events, IsEmpty());
}

TEST_F(AConnection, NeedsAnInstance) {
  const auto connected = platform().ports.stub()->connected;

  EXPECT_THROW(
      fake::library([&] { connected.handler(fake::kAssistantId, nullptr, connected.userData); }),
      std::logic_error);

  EXPECT_THAT(recorded.events, IsEmpty());
}

TEST_F(AConnection, IsNotServedBeforeItsServiceIsCreated) {
  int result = 0;
  recorded.onCreate = [&] { result = assistant.unregisters(); };

  assistant.connects();

  EXPECT_EQ(result, -1);
}

TEST_F(AConnection, EndsWithItsService) {
  assistant.connects();
  recorded.events.clear();

  assistant.disconnects();

  EXPECT_THAT(recorded.events, TextsAre({"OnTerminate instance-1", "destroyed instance-1"}));
  EXPECT_EQ(assistant.unregisters(), -1);
}

TEST_F(AConnection, ThatIsNotKnownEndsSilently) {
  assistant.disconnects();

  EXPECT_THAT(recorded.events, IsEmpty());
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(AConnection, IsKnownByItsInstanceAndNotByItsSender) {
  assistant.connects();
  recorded.events.clear();

  EXPECT_EQ(fake::Assistant("another sender", "instance-1").unregisters(), 0);
  fake::Assistant("another sender", "instance-1").disconnects();

  EXPECT_THAT(recorded.events,
              TextsAre({"UnsetCB", "OnTerminate instance-1", "destroyed instance-1"}));
}

TEST_F(AConnection, IsNotKnownByAPartOfItsInstance) {
  assistant.connects();

  EXPECT_EQ(fake::Assistant(fake::kAssistantId, "instance-").unregisters(), -1);
  EXPECT_EQ(fake::Assistant(fake::kAssistantId, "instance-10").unregisters(), -1);
}

TEST_F(AConnection, IsServedByItsOwnService) {
  fake::Assistant first("first", "1");
  fake::Assistant second("second", "2");
  first.connects();
  second.connects();
  recorded.events.clear();

  second.sends({});
  first.sends({});

  EXPECT_THAT(recorded.events, TextsAre({"Send to second", "Send to first"}));
}

TEST_F(AConnection, WithTheSameInstanceAsAnotherIsServedAfterIt) {
  fake::Assistant first("first", "same");
  fake::Assistant second("second", "same");
  first.connects();
  second.connects();
  recorded.events.clear();

  second.sends({});
  second.disconnects();
  second.sends({});
  first.disconnects();

  EXPECT_THAT(recorded.events, TextsAre({"Send to first", "OnTerminate same", "destroyed same",
                                         "Send to second", "OnTerminate same", "destroyed same"}));
  EXPECT_EQ(first.sends({}), -1);
}

TEST_F(AConnection, ThatIsUnknownIsRefusedUnread) {
  EXPECT_EQ(assistant.sends({}), -1);

  EXPECT_THAT(logLines(), LinesAre({IsStubLine("OnReceivedCB", kUnknown,
                                               "Failed to find $$ context(instance-1)")}));
  EXPECT_THAT(calls({"rpc_port_stub_get_port", "rpc_port_parcel_create_from_port",
                     "rpc_port_parcel_create"}),
              IsEmpty());
}

TEST_F(AConnection, MayEndInTheMiddleOfItsRequest) {
  assistant.connects();
  recorded.events.clear();
  recorded.onSend = [this] { assistant.disconnects(); };

  EXPECT_EQ(assistant.sends({}), 0);

  // The service lives until its request has been dealt with.
  EXPECT_THAT(recorded.events, TextsAre({"Send to com.valtren.tizen.norix",
                                         "OnTerminate instance-1", "destroyed instance-1"}));
}

TEST_F(AConnection, HasItsServiceUntilTheParcelsOfItsRequestAreDestroyed) {
  assistant.connects();
  recorded.onSend = [this] { assistant.disconnects(); };
  bool isServiceAlive = false;
  inside("rpc_port_parcel_destroy(parcel 2)",
         [&] { isServiceAlive = recorded.events.back() != "destroyed instance-1"; });

  assistant.sends({});

  EXPECT_TRUE(isServiceAlive);
  EXPECT_EQ(recorded.events.back(), "destroyed instance-1");
}

TEST_F(AConnection, GivesEverythingBackWhenItsServiceThrows) {
  assistant.connects();
  recorded.onSend = [] { throw std::runtime_error("the service's"); };
  forgetCalls();

  EXPECT_THROW(assistant.sends({}), std::runtime_error);

  EXPECT_THAT(calls({"bundle_free", "rpc_port_parcel_destroy"}),
              TextsAre({"bundle_free(bundle 2)", "bundle_free(bundle 1)",
                        "rpc_port_parcel_destroy(parcel 1)", "rpc_port_parcel_destroy(parcel 2)"}));
  recorded.onSend = nullptr;
  EXPECT_EQ(assistant.sends({}), 0);
}

TEST_F(AConnection, MaySeeTheStubGoInTheMiddleOfItsRequest) {
  assistant.connects();
  recorded.events.clear();
  recorded.onSend = [this] { destroysStub(); };

  EXPECT_EQ(assistant.sends({}), 0);

  EXPECT_THAT(recorded.events,
              TextsAre({"Send to com.valtren.tizen.norix", "OnTerminate instance-1",
                        "factory destroyed", "destroyed instance-1"}));
}

TEST_F(AConnection, ThatComesInTheMiddleOfARequestIsServed) {
  assistant.connects();
  fake::Assistant other("other", "2");
  recorded.onSend = [this, &other] {
    recorded.onSend = nullptr;
    other.connects();
    other.sends({});
  };
  recorded.events.clear();

  assistant.sends({});

  EXPECT_THAT(recorded.events, TextsAre({"Send to com.valtren.tizen.norix", "create other 2",
                                         "OnCreate 2", "Send to other"}));
}

} // namespace
