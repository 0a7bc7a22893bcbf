// SPDX-License-Identifier: Apache-2.0
#include "logFile.h"

#include "fakes/Heap.h"
#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"
#include "fakes/NoClient.h"

#include "NorixImpl/NorixImpl.h"

#include <norix.h>

#include <new>
#include <optional>
#include <utility>

namespace {

using fake::DeliberateLeak;
using fake::IsLine;
using fake::ParcelsAre;
using fake::platform;
using fake::ResponsesAre;
using norix::NorixImpl;
using testing::IsEmpty;

auto isDeliveryLine(const char *text) {
  return IsLine(kFile, "sendResponse", text);
}

class AStateResponse : public fake::ReadyLibraryTest {
protected:
  void SetUp() override {
    ReadyLibraryTest::SetUp();
    app.registersForState();
  }
};

TEST_F(AStateResponse, CarriesTheApplicationsOwnId) {
  platform().application.id = "org.example.renamed";
  assistant.asksForState(1);

  app.answersState("state");

  EXPECT_THAT(assistant.callbacks(), ParcelsAre({fake::callback({}, "org.example.renamed",
                                                                fake::stateAnswer("state", 1))}));
}

TEST_F(AStateResponse, CarriesTheDelegateAsItWasRegistered) {
  const fake::Delegate delegate{-5, 2147483647, true};
  assistant.registers(delegate);
  assistant.asksForState(1);

  app.answersState("state");

  EXPECT_THAT(assistant.callbacks(),
              ParcelsAre({fake::callback(delegate, fake::kAppId, fake::stateAnswer("state", 1))}));
}

TEST_F(AStateResponse, GoesToTheLatestDelegateOfTheClient) {
  assistant.asksForState(1);
  assistant.registers({1, 8, false});

  app.answersState("state");

  EXPECT_THAT(assistant.callbacks(), ParcelsAre({fake::callback({1, 8, false}, fake::kAppId,
                                                                fake::stateAnswer("state", 1))}));
}

TEST_F(AStateResponse, NeedsADelegate) {
  assistant.unregisters();
  assistant.asksForState(1);
  forgetCalls();

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[5], isDeliveryLine("response error: InvalidCallbackException"));
  // The look-up has left an entry without a delegate.
  const auto &delegates = NorixImpl::_instance->_responseCbMap;
  ASSERT_EQ(delegates.count(fake::kAssistantId), 1U);
  EXPECT_EQ(delegates.at(fake::kAssistantId), nullptr);
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AStateResponse, FindsTheDelegateThatCameLater) {
  assistant.unregisters();
  assistant.asksForState(1);
  app.answersState("nobody hears this");
  assistant.registers();
  assistant.asksForState(2);

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.responses(), ResponsesAre({fake::stateAnswer("state", 2)}));
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AStateResponse, NeedsTheConnectionOfTheDelegate) {
  assistant.asksForState(1);
  assistant.disconnects();
  forgetCalls();

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[5], isDeliveryLine("response error: NotConnectedSocketException"));
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AStateResponse, NeedsACallbackPort) {
  platform().faults.fail("rpc_port_stub_get_port");
  assistant.registers();
  assistant.asksForState(1);
  forgetCalls();

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[5], isDeliveryLine("response error: NotConnectedSocketException"));
}

TEST_F(AStateResponse, NeedsADelegateThatMayBeInvokedAgain) {
  assistant.registers({1, 7, true});
  assistant.asksForState(1);
  app.answersState("first");
  assistant.asksForState(2);
  forgetCalls();

  EXPECT_EQ(app.answersState("second"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[5], isDeliveryLine("response error: InvalidCallbackException"));
  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

TEST_F(AStateResponse, NeedsTheApplicationsOwnId) {
  assistant.asksForState(1);
  platform().application.id.reset();
  forgetCalls();

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_OPERATION_FAILED);

  EXPECT_THAT(logLines()[4], isDeliveryLine("App Id is null"));
  EXPECT_EQ(log().back(), "[NorixClient <- App] send result: -1073741825");
  EXPECT_EQ(log().size(), 6U);
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AStateResponse, NeedsACore) {
  assistant.asksForState(1);
  forgetCalls();
  NorixImpl *core = std::exchange(NorixImpl::_instance, nullptr);

  platform().clock.advance(30);
  NorixImpl::_instance = core;

  EXPECT_THAT(logLines().back(), isDeliveryLine("NorixImpl instance is null"));
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AStateResponse, TellsTheApplicationThatThereIsNoCore) {
  assistant.asksForState(1);
  NorixImpl *core = nullptr;
  platform().during["bundle_create"] = [&core] {
    core = std::exchange(NorixImpl::_instance, nullptr);
  };

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_OUT_OF_MEMORY);

  NorixImpl::_instance = core;
  EXPECT_EQ(log().back(), "[NorixClient <- App] send result: -12");
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AStateResponse, TellsTheApplicationThatThereIsNoClient) {
  assistant.asksForState(1);
  std::optional<fake::NoClient> noClient;
  platform().during["bundle_create"] = [&noClient] { noClient.emplace(); };

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_OPERATION_FAILED);

  noClient.reset();
  EXPECT_EQ(log().back(), "[NorixClient <- App] send result: -1073741825");
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AStateResponse, NeedsAClient) {
  assistant.asksForState(1);
  forgetCalls();
  {
    const fake::NoClient noClient;
    platform().clock.advance(30);
  }

  EXPECT_THAT(logLines().back(), isDeliveryLine("Norix Client is not connected"));
  EXPECT_EQ(platform().journal.count("app_get_id"), 0);
  expectLeft(DeliberateLeak::UndeliveredResponse);
}

TEST_F(AStateResponse, ReleasesThePlatformsTextBeforeTheIdIsLogged) {
  assistant.asksForState(1);
  bool isHeld = true;
  inside("dlog_print(App Id org.example.music)", [&isHeld] {
    isHeld = !fake::Heap::instance().blocksOf(fake::Heap::Owner::PlatformText).empty();
  });

  app.answersState("state");

  EXPECT_FALSE(isHeld);
}

// The response has an owner, and the application's id is a copy: nothing is left.
TEST_F(AStateResponse, LetsAnotherExceptionOfTheDelegateThrough) {
  assistant.asksForState(1);
  platform().during["rpc_port_parcel_create"] = [] { throw std::bad_alloc(); };
  forgetCalls();

  EXPECT_THROW(app.answersState("state"), std::bad_alloc);

  EXPECT_EQ(log().back(), "App Id org.example.music");
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AStateResponse, DoesNotNoticeThatItWasNotSent) {
  assistant.asksForState(1);
  platform().faults.fail("rpc_port_parcel_send");

  EXPECT_EQ(app.answersState("state"), NORIX_ERROR_NONE);

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

} // namespace
