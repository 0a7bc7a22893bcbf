// SPDX-License-Identifier: Apache-2.0
//
// The stub object: making it, listening, destroying it.
#include "RecordingService.h"

#include "fakes/LogMatchers.h"

#include "message/Exception.h"

#include <ostream>

namespace {

using fake::IsStubLine;
using fake::library;
using fake::LinesAre;
using fake::platform;
using fake::TextsAre;
using rpc_port::message::stub::InvalidIOException;
using testing::IsEmpty;

class AStub : public StubTest {};

TEST_F(AStub, OpensThePortAndRegistersItsHandlers) {
  makesStub();

  EXPECT_THAT(
      calls({"rpc_port_stub_create", "rpc_port_stub_add_connected_event_cb",
             "rpc_port_stub_add_disconnected_event_cb", "rpc_port_stub_add_received_event_cb"}),
      TextsAre({"rpc_port_stub_create(message)", "rpc_port_stub_add_connected_event_cb(stub 1)",
                "rpc_port_stub_add_disconnected_event_cb(stub 1)",
                "rpc_port_stub_add_received_event_cb(stub 1)"}));
  EXPECT_EQ(platform().ports.stub()->received.userData, stub.get());
}

TEST_F(AStub, CannotBeMadeWithoutAPort) {
  platform().faults.fail("rpc_port_stub_create", 1, -12);

  EXPECT_THROW(makesStub(), InvalidIOException);

  EXPECT_THAT(logLines(), LinesAre({IsStubLine("message", "Failed to create stub handle",
                                               "Failed to create stub handle")}));
  EXPECT_EQ(platform().journal.count("rpc_port_stub_add_connected_event_cb"), 0);
}

TEST_F(AStub, CannotBeMadeWhateverTheNonZeroResult) {
  platform().faults.fail("rpc_port_stub_create", 1, 1);

  EXPECT_THROW(makesStub(), InvalidIOException);
}

TEST_F(AStub, Listens) {
  makesStub();
  forgetCalls();

  listens();

  EXPECT_THAT(calls({"rpc_port_stub_listen"}), TextsAre({"rpc_port_stub_listen(stub 1)"}));
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(AStub, ReplacesItsFactory) {
  makesStub();
  listens();
  EXPECT_THAT(recorded.events, IsEmpty());

  listens();

  EXPECT_THAT(recorded.events, TextsAre({"factory destroyed"}));
}

TEST_F(AStub, MakesItsServicesWithTheLatestFactory) {
  Recorded ofTheSecond;
  makesStub();
  listens();
  library([&] { stub->Listen(std::make_shared<RecordingService::Factory>(ofTheSecond)); });

  assistant.connects();

  EXPECT_EQ(ofTheSecond.events.front(), "create com.valtren.tizen.norix instance-1");
  destroysStub();
}

TEST_F(AStub, KeepsItsFactoryWhenItCannotListen) {
  makesStub();
  platform().faults.fail("rpc_port_stub_listen", 1, -5);

  EXPECT_THROW(listens(), InvalidIOException);
  assistant.connects();

  EXPECT_THAT(recorded.events,
              TextsAre({"create com.valtren.tizen.norix instance-1", "OnCreate instance-1"}));
}

struct ListenResult {
  const char *name;
  int result;
  bool throws;
};

void PrintTo(const ListenResult &row, std::ostream *out) {
  *out << row.name;
}

class AListenResult : public StubTest, public testing::WithParamInterface<ListenResult> {};

TEST_P(AListenResult, CountsOrNot) {
  makesStub();
  platform().faults.fail("rpc_port_stub_listen", 1, GetParam().result);

  if (GetParam().throws) {
    EXPECT_THROW(listens(), InvalidIOException);
  } else {
    EXPECT_NO_THROW(listens());
  }

  EXPECT_THAT(logLines(),
              LinesAre({IsStubLine("Listen", "Failed to listen stub", "Failed to listen stub")}));
}

INSTANTIATE_TEST_SUITE_P(, AListenResult,
                         testing::Values(ListenResult{"OfAnInvalidParameter", -22, true},
                                         ListenResult{"OfAnIoError", -5, true},
                                         ListenResult{"OfNoMemory", -12, false},
                                         ListenResult{"OfNoPermission", -13, false},
                                         ListenResult{"OfAnotherCode", -1, false},
                                         ListenResult{"OfAPositiveCode", 22, false}),
                         [](const auto &tested) { return std::string(tested.param.name); });

TEST_F(AStub, TerminatesItsServicesInOrderBeforeItGoes) {
  makesStub();
  listens();
  fake::Assistant("a", "first").connects();
  fake::Assistant("b", "second").connects();
  recorded.events.clear();
  platform().during["rpc_port_stub_destroy"] = [this] { recorded.add("stub destroyed"); };

  destroysStub();

  EXPECT_THAT(recorded.events,
              TextsAre({"OnTerminate first", "OnTerminate second", "stub destroyed",
                        "destroyed first", "destroyed second", "factory destroyed"}));
}

TEST_F(AStub, GoesWithoutHavingListened) {
  makesStub();

  destroysStub();

  EXPECT_THAT(calls({"rpc_port_stub_destroy"}), TextsAre({"rpc_port_stub_destroy(stub 1)"}));
}

TEST_F(AStub, RefusesAConnectionBeforeItHasAFactory) {
  makesStub();
  forgetCalls();

  assistant.connects();

  EXPECT_THAT(logLines(), LinesAre({IsStubLine("OnConnectedCB", "No factory for service(%s)",
                                               "No factory for service(instance-1)")}));
  EXPECT_EQ(assistant.unregisters(), -1);
}

// A factory that makes nothing.
class EmptyFactory final : public rpc_port::message::stub::message::ServiceBase::Factory {
public:
  std::unique_ptr<rpc_port::message::stub::message::ServiceBase>
  CreateService(std::string /*sender*/, std::string /*instance*/) override {
    return nullptr;
  }
};

TEST_F(AStub, RefusesAConnectionThatItsFactoryMakesNothingFor) {
  makesStub();
  library([this] {
    stub->Listen(std::make_shared<EmptyFactory>());
    return 0;
  });
  forgetCalls();

  assistant.connects();

  EXPECT_THAT(logLines(), LinesAre({IsStubLine("OnConnectedCB", "Failed to create service(%s)",
                                               "Failed to create service(instance-1)")}));
  EXPECT_EQ(assistant.unregisters(), -1);
  assistant.disconnects();
}

} // namespace
