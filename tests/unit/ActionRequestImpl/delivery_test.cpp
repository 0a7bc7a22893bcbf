// SPDX-License-Identifier: Apache-2.0
#include "NorixImpl/NorixCommonData.h"
#include "NorixImpl/NorixImpl.h"

#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"
#include "fakes/NoClient.h"

#include <norix.h>

#include <new>
#include <utility>

namespace {

using fake::DeliberateLeak;
using fake::IsLine;
using fake::ParcelsAre;
using fake::platform;
using fake::ResponsesAre;
using norix::NorixCommonData;
using norix::NorixImpl;
using testing::IsEmpty;

auto isDeliveryLine(const char *text) {
  return IsLine("ActionRequestImpl.cpp", "sendResponse", text);
}

class AnActionResponse : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersFor("play");
  }
};

TEST_F(AnActionResponse, CarriesTheApplicationsOwnId) {
  platform().application.id = "org.example.renamed";
  assistant.asksForAction("play", 1);

  app.answersAction("result");

  EXPECT_THAT(assistant.callbacks(), ParcelsAre({fake::callback({}, "org.example.renamed",
                                                                fake::actionAnswer("result", 1))}));
}

TEST_F(AnActionResponse, CarriesTheIdWhateverAppGetIdReturns) {
  platform().application.idResult = -12;
  assistant.asksForAction("play", 1);

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);
}

TEST_F(AnActionResponse, CarriesTheDelegateAsItWasRegistered) {
  const fake::Delegate delegate{2147483647, -2147483647 - 1, true};
  assistant.registers(delegate);
  assistant.asksForAction("play", 1);

  app.answersAction("result");

  EXPECT_THAT(assistant.callbacks(), ParcelsAre({fake::callback(delegate, fake::kAppId,
                                                                fake::actionAnswer("result", 1))}));
}

TEST_F(AnActionResponse, NeedsADelegate) {
  assistant.unregisters();
  assistant.asksForAction("play", 1);
  forgetCalls();

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[4], isDeliveryLine("response error: InvalidCallbackException"));
  EXPECT_EQ(log().size(), 6U);
  // The look-up has left an entry without a delegate; bundle and id are freed.
  const auto &delegates = NorixImpl::_instance->_responseCbMap;
  ASSERT_EQ(delegates.count(fake::kAssistantId), 1U);
  EXPECT_EQ(delegates.at(fake::kAssistantId), nullptr);
}

TEST_F(AnActionResponse, NeedsTheConnectionOfTheDelegate) {
  assistant.asksForAction("play", 1);
  assistant.disconnects();
  forgetCalls();

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[4], isDeliveryLine("response error: NotConnectedSocketException"));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  expectLeft(DeliberateLeak::AppIdOfFailedDelivery);
}

TEST_F(AnActionResponse, NeedsACallbackPort) {
  platform().faults.fail("rpc_port_stub_get_port");
  assistant.registers();
  assistant.asksForAction("play", 1);
  forgetCalls();

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[4], isDeliveryLine("response error: NotConnectedSocketException"));
  expectLeft(DeliberateLeak::AppIdOfFailedDelivery);
}

TEST_F(AnActionResponse, NeedsADelegateThatMayBeInvokedAgain) {
  assistant.registers({1, 7, true});
  assistant.asksForAction("play", 1);
  app.answersAction("first");
  assistant.asksForAction("play", 2);
  forgetCalls();

  EXPECT_EQ(app.answersAction("second"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[4], isDeliveryLine("response error: InvalidCallbackException"));
  EXPECT_EQ(assistant.callbacks().size(), 1U);
  expectLeft(DeliberateLeak::AppIdOfFailedDelivery);
}

TEST_F(AnActionResponse, NeedsTheApplicationsOwnId) {
  assistant.asksForAction("play", 1);
  platform().application.id.reset();
  forgetCalls();

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[3], isDeliveryLine("App Id is null"));
  EXPECT_EQ(log().size(), 5U);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AnActionResponse, NeedsACore) {
  assistant.asksForAction("play", 1);
  forgetCalls();
  NorixImpl *core = std::exchange(NorixImpl::_instance, nullptr);

  platform().clock.advance(30);
  NorixImpl::_instance = core;

  EXPECT_THAT(logLines()[1], isDeliveryLine("NorixImpl instance is null"));
  EXPECT_EQ(log().back(), "send reponse result: -12");
  EXPECT_EQ(platform().journal.count("app_get_id"), 0);
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AnActionResponse, TellsTheApplicationThatThereIsNoCore) {
  assistant.asksForAction("play", 1);
  NorixImpl *core = nullptr;
  platform().during["bundle_create"] = [&core] {
    core = std::exchange(NorixImpl::_instance, nullptr);
  };

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_OUT_OF_MEMORY);

  NorixImpl::_instance = core;
  EXPECT_EQ(log().back(), "Response success");
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_THAT(NorixCommonData::_instance->_actionHandlerMap, IsEmpty());
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AnActionResponse, NeedsAClient) {
  assistant.asksForAction("play", 1);
  forgetCalls();
  {
    const fake::NoClient noClient;
    platform().clock.advance(30);
  }

  EXPECT_THAT(logLines()[1], isDeliveryLine("Norix Client is not connected"));
  EXPECT_EQ(log().back(), "send reponse result: -1073741825");
  EXPECT_EQ(platform().journal.count("app_get_id"), 0);
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AnActionResponse, DoesNotNoticeThatItWasNotSent) {
  assistant.asksForAction("play", 1);
  platform().faults.fail("rpc_port_parcel_send");

  EXPECT_EQ(app.answersAction("result"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AnActionResponse, LetsAnotherExceptionOfTheDelegateThrough) {
  assistant.asksForAction("play", 1);
  platform().during["rpc_port_parcel_create"] = [] { throw std::bad_alloc(); };
  forgetCalls();

  EXPECT_THROW(app.answersAction("result"), std::bad_alloc);

  EXPECT_EQ(log().back(), "App Id org.example.music");
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_EQ(NorixCommonData::_instance->_actionHandlerMap.count(2), 1U);
  expectLeft(DeliberateLeak::AppIdOfFailedDelivery);
}

TEST_F(AnActionResponse, LetsAnotherExceptionThrough) {
  // Long enough for a copy of its own, which is the allocation to fail.
  platform().application.id = std::string(100, 'a');
  assistant.asksForAction("play", 1);
  platform().during["app_get_id"] = [] { fake::Heap::instance().failNew(1); };

  EXPECT_THROW(app.answersAction("result"), std::bad_alloc);

  expectLeft(DeliberateLeak::AppIdOfFailedDelivery);
}

TEST_F(AnActionResponse, GoesToTheClientThatAsked) {
  fake::Assistant other("org.example.other", "instance-2");
  other.isReady();
  other.asksForAction("play", 44);

  app.answersAction("result");

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_THAT(other.responses(), ResponsesAre({fake::actionAnswer("result", 44)}));
}

} // namespace
