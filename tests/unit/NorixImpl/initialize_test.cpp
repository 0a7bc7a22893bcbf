// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include "NorixImpl/NorixCommonData.h"
#include "message/Exception.h"

#include <norix.h>
#include <rpc-port.h>

#include <new>
#include <ostream>

namespace {

using fake::DeliberateLeak;
using fake::IsLine;
using fake::IsStubLine;
using fake::kNothrowNew;
using fake::LinesAre;
using fake::platform;
using fake::TextsAre;
using norix::NorixCommonData;
using testing::IsEmpty;

class Initialising : public fake::LibraryTest {
protected:
  // With the core object made and nothing recorded.
  void SetUp() override {
    (void)norix_deinitialize();
    forgetCalls();
  }
};

TEST_F(Initialising, OpensTheStubAndListens) {
  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(
      calls({"rpc_port_stub_create", "rpc_port_stub_add_connected_event_cb",
             "rpc_port_stub_add_disconnected_event_cb", "rpc_port_stub_add_received_event_cb",
             "rpc_port_stub_listen"}),
      TextsAre({"rpc_port_stub_create(message)", "rpc_port_stub_add_connected_event_cb(stub 1)",
                "rpc_port_stub_add_disconnected_event_cb(stub 1)",
                "rpc_port_stub_add_received_event_cb(stub 1)", "rpc_port_stub_listen(stub 1)"}));
  EXPECT_THAT(logLines(), LinesAre({IsLine("NorixImpl.cpp", "initialize",
                                           "App SDK NorixImpl is initialized")}));
}

TEST_F(Initialising, GivesTheHandlersOneObject) {
  app.initialises();

  const fake::FakeStub *stub = platform().ports.stub();
  ASSERT_NE(stub, nullptr);
  EXPECT_NE(stub->connected.userData, nullptr);
  EXPECT_EQ(stub->connected.userData, stub->disconnected.userData);
  EXPECT_EQ(stub->connected.userData, stub->received.userData);
}

TEST_F(Initialising, MakesTheOtherObjectsAfterListening) {
  app.initialises();

  const std::vector<std::string> order = calls({"rpc_port_stub_listen", kNothrowNew});
  ASSERT_EQ(order.size(), 5U); // the stub's object, then the three
  EXPECT_EQ(order[1], "rpc_port_stub_listen(stub 1)");
}

TEST_F(Initialising, PreparesTheRequestData) {
  app.initialises();

  const NorixCommonData *common = NorixCommonData::_instance;
  EXPECT_EQ(common->_requestId, 0xffffffffffffffffULL);
  EXPECT_EQ(common->_actionHandlerIndex, 1);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(common->_actionHandlers.at(static_cast<size_t>(i)), i);
  }
}

TEST_F(Initialising, ASecondTimeDoesNothing) {
  app.isReady();

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(logLines(), LinesAre({IsLine("NorixImpl.cpp", "initialize",
                                           "NorixImpl has been already initialized")}));
  EXPECT_EQ(platform().ports.stubsCreated(), 1);
}

TEST_F(Initialising, FailsWithoutMemoryForTheStub) {
  platform().faults.fail(kNothrowNew);

  EXPECT_EQ(app.initialises(), NORIX_ERROR_OUT_OF_MEMORY);

  EXPECT_THAT(logLines(), LinesAre({IsLine("NorixImpl.cpp", "initialize", "message is failed")}));
  EXPECT_EQ(platform().ports.stubsCreated(), 0);
}

TEST_F(Initialising, SucceedsAfterTheStubFoundNoMemory) {
  platform().faults.fail(kNothrowNew);
  app.initialises();

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
}

TEST_F(Initialising, ThrowsWhenTheStubCannotBeCreated) {
  platform().faults.fail("rpc_port_stub_create", 1, RPC_PORT_ERROR_IO_ERROR);

  EXPECT_THROW(app.initialises(), rpc_port::message::stub::InvalidIOException);

  EXPECT_THAT(logLines(), LinesAre({IsStubLine("message", "Failed to create stub handle",
                                               "Failed to create stub handle")}));
}

TEST_F(Initialising, SucceedsAfterTheStubCouldNotBeCreated) {
  platform().faults.fail("rpc_port_stub_create", 1, RPC_PORT_ERROR_IO_ERROR);
  EXPECT_THROW(app.initialises(), rpc_port::message::stub::InvalidIOException);

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
}

TEST_F(Initialising, DoesNotMindHandlersThatCannotBeRegistered) {
  platform().faults.fail("rpc_port_stub_add_connected_event_cb");
  platform().faults.fail("rpc_port_stub_add_disconnected_event_cb");
  platform().faults.fail("rpc_port_stub_add_received_event_cb");

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);
}

class AListenFailure : public Initialising, public testing::WithParamInterface<int> {};

TEST_P(AListenFailure, FailsTheInitialisation) {
  platform().faults.fail("rpc_port_stub_listen", 1, GetParam());

  EXPECT_EQ(app.initialises(), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(
      logLines(),
      LinesAre({IsStubLine("Listen", "Failed to listen stub", "Failed to listen stub"),
                IsLine("NorixImpl.cpp", "initialize", "Listen error: InvalidIOException")}));
  EXPECT_EQ(platform().journal.count(kNothrowNew), 1); // the stub's object and no other
  expectLeft(DeliberateLeak::StubOfFailedInitialise);
}

TEST_P(AListenFailure, LeavesTheLibraryUninitialised) {
  platform().faults.fail("rpc_port_stub_listen", 1, GetParam());
  app.initialises();

  EXPECT_EQ(app.registersForState(), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(platform().ports.stubsAlive(), 1U);
  expectLeft(DeliberateLeak::StubOfFailedInitialise);
}

TEST_P(AListenFailure, IsFollowedByANewStub) {
  platform().faults.fail("rpc_port_stub_listen", 1, GetParam());
  app.initialises();

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(platform().ports.stubsAlive(), 2U);
  expectLeft(DeliberateLeak::StubOfFailedInitialise);
}

INSTANTIATE_TEST_SUITE_P(ThatCounts, AListenFailure,
                         testing::Values(RPC_PORT_ERROR_INVALID_PARAMETER, RPC_PORT_ERROR_IO_ERROR),
                         [](const auto &tested) {
                           return "Minus" + std::to_string(-tested.param);
                         });

// Not an exception of the channel: it is not caught.
class AnotherExceptionOfListening : public Initialising {
protected:
  static void listeningThrows() {
    platform().during["rpc_port_stub_listen"] = [] { throw std::bad_alloc(); };
  }
};

TEST_F(AnotherExceptionOfListening, ReachesTheApplication) {
  listeningThrows();

  EXPECT_THROW(app.initialises(), std::bad_alloc);

  EXPECT_THAT(log(), IsEmpty());
  EXPECT_EQ(platform().journal.count(kNothrowNew), 1); // the stub's object and no other
  expectLeft(DeliberateLeak::StubOfFailedInitialise);
}

TEST_F(AnotherExceptionOfListening, LeavesTheLibraryUninitialised) {
  listeningThrows();
  EXPECT_THROW(app.initialises(), std::bad_alloc);

  EXPECT_EQ(app.registersForState(), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(platform().ports.stubsAlive(), 1U);
  expectLeft(DeliberateLeak::StubOfFailedInitialise);
}

TEST_F(AnotherExceptionOfListening, IsFollowedByANewStub) {
  listeningThrows();
  EXPECT_THROW(app.initialises(), std::bad_alloc);

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_EQ(platform().ports.stubsAlive(), 2U);
  expectLeft(DeliberateLeak::StubOfFailedInitialise);
}

class AHarmlessListenFailure : public Initialising, public testing::WithParamInterface<int> {};

TEST_P(AHarmlessListenFailure, IsLoggedAndNothingMore) {
  platform().faults.fail("rpc_port_stub_listen", 1, GetParam());

  EXPECT_EQ(app.initialises(), NORIX_ERROR_NONE);

  EXPECT_THAT(log(), TextsAre({"Failed to listen stub", "App SDK NorixImpl is initialized"}));
}

INSTANTIATE_TEST_SUITE_P(, AHarmlessListenFailure, testing::Values(-1, -12, -13, -1073741824, 1));

// The objects that initialisation makes after the stub; a failure is for good.
struct MissingObject {
  const char *name;
  int nthAllocation;
};

void PrintTo(const MissingObject &row, std::ostream *out) {
  *out << row.name;
}

class AMissingObject : public Initialising, public testing::WithParamInterface<MissingObject> {
protected:
  std::string text() const { return std::string(GetParam().name) + " instance is null"; }

  void TearDown() override {
    Initialising::TearDown();
    expectLeft(DeliberateLeak::StubOfFailedInitialise,
               static_cast<size_t>(platform().ports.stubsCreated()));
  }
};

TEST_P(AMissingObject, FailsTheInitialisation) {
  platform().faults.fail(kNothrowNew, GetParam().nthAllocation);

  EXPECT_EQ(app.initialises(), NORIX_ERROR_OUT_OF_MEMORY);

  EXPECT_THAT(logLines(), LinesAre({IsLine("NorixImpl.cpp", "initialize", text().c_str())}));
  EXPECT_TRUE(platform().ports.stub()->listening);
}

TEST_P(AMissingObject, EndsTheInitialisationBeforeTheNextOneIsMade) {
  platform().faults.fail(kNothrowNew, GetParam().nthAllocation);
  app.initialises();

  EXPECT_EQ(calls({kNothrowNew}).size(), static_cast<std::size_t>(GetParam().nthAllocation));
}

TEST_P(AMissingObject, IsNamedBeforeThoseThatAreMissingBehindIt) {
  platform().faults.fail(kNothrowNew, GetParam().nthAllocation);
  app.initialises();
  assistant.isReady();
  platform().faults.failAlways(kNothrowNew);
  forgetCalls();

  assistant.asksForState(1);

  EXPECT_EQ(log().back(), text());
  EXPECT_THAT(log(), testing::Contains(testing::EndsWith("instance is null")).Times(1));
  assistant.disconnects();
}

TEST_P(AMissingObject, FailsEveryLaterInitialisationWithAnotherStub) {
  platform().faults.fail(kNothrowNew, GetParam().nthAllocation);
  app.initialises();
  forgetCalls();

  EXPECT_EQ(app.initialises(), NORIX_ERROR_OUT_OF_MEMORY);

  EXPECT_THAT(log(), TextsAre({text()}));
  EXPECT_EQ(platform().ports.stubsAlive(), 2U);
}

TEST_P(AMissingObject, LeavesTheLibraryUninitialised) {
  platform().faults.fail(kNothrowNew, GetParam().nthAllocation);
  app.initialises();

  EXPECT_EQ(app.registersFor("play"), NORIX_ERROR_OPERATION_FAILED);
  EXPECT_EQ(app.deinitialises(), NORIX_ERROR_NONE);
}

// The stub listens already: a request can arrive.
TEST_P(AMissingObject, DropsTheRequestsThatArriveNevertheless) {
  platform().faults.fail(kNothrowNew, GetParam().nthAllocation);
  app.initialises();
  assistant.isReady();

  EXPECT_EQ(assistant.asksForState(1), 0);
  EXPECT_EQ(assistant.asksForAction("play", 2), 0);

  EXPECT_THAT(log(), testing::Contains(text()).Times(2));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  assistant.disconnects();
}

INSTANTIATE_TEST_SUITE_P(, AMissingObject,
                         testing::Values(MissingObject{"NorixCommonData", 2},
                                         MissingObject{"StateRequestImpl", 3},
                                         MissingObject{"ActionRequestImpl", 4}),
                         [](const auto &tested) { return std::string(tested.param.name); });

} // namespace
