// SPDX-License-Identifier: Apache-2.0
#include "RecordingService.h"

#include "message/Exception.h"

#include <new>

namespace {

using fake::Bool;
using fake::BundleOf;
using fake::Int32;
using fake::library;
using fake::Parcel;
using fake::ParcelsAre;
using fake::platform;
using fake::Text;
using fake::TextsAre;
using rpc_port::message::Bundle;
using rpc_port::message::stub::InvalidCallbackException;
using rpc_port::message::stub::NotConnectedSocketException;
using testing::IsEmpty;

class AResponseDelegate : public ConnectedStubTest {
protected:
  // Registers as a proxy does and invokes what arrived at the service.
  void registers(const fake::Delegate &delegate = {}) {
    assistant.registers(delegate);
    forgetCalls();
  }

  void invoke(const std::string &text) {
    bundle *response = platform().bundles.create({fake::text("key", "value")});
    library([&] {
      recorded.delegates.back()->Invoke(text, Bundle(response));
      return 0;
    });
  }
};

TEST_F(AResponseDelegate, SendsItsRecordTheTextAndTheBundle) {
  registers({-1, 2147483647, true});

  invoke("org.example.music");

  EXPECT_THAT(assistant.callbacks(), ParcelsAre({Parcel{Int32{1}, Int32{-1}, Int32{2147483647},
                                                        Bool{true}, Text{"org.example.music"},
                                                        BundleOf{{fake::text("key", "value")}}}}));
}

TEST_F(AResponseDelegate, WritesFieldByFieldAndSendsOnce) {
  registers();

  invoke("text");

  EXPECT_THAT(
      calls({"rpc_port_parcel_create", "rpc_port_parcel_write_int32", "rpc_port_parcel_write_bool",
             "rpc_port_parcel_write_string", "rpc_port_parcel_write_bundle", "rpc_port_parcel_send",
             "rpc_port_parcel_destroy", "bundle_free"}),
      TextsAre({"rpc_port_parcel_create()", "rpc_port_parcel_write_int32(parcel 3, 1)",
                "rpc_port_parcel_write_int32(parcel 3, 1)",
                "rpc_port_parcel_write_int32(parcel 3, 7)",
                "rpc_port_parcel_write_bool(parcel 3, false)",
                "rpc_port_parcel_write_string(parcel 3, text)",
                "rpc_port_parcel_write_bundle(parcel 3, bundle 1)",
                "rpc_port_parcel_send(parcel 3, callback port of instance-1)",
                "rpc_port_parcel_destroy(parcel 3)", "bundle_free(bundle 1)"}));
}

TEST_F(AResponseDelegate, SendsATextUpToItsFirstNul) {
  registers();

  invoke(std::string("before\0after", 12));

  EXPECT_EQ(std::get<Text>(assistant.callbacks()[0][4]).value, "before");
}

TEST_F(AResponseDelegate, MayBeInvokedAgainAndAgain) {
  registers();

  invoke("one");
  invoke("two");
  invoke("three");

  EXPECT_EQ(assistant.callbacks().size(), 3U);
}

TEST_F(AResponseDelegate, MayBeInvokedOnceWhenItSaysSo) {
  registers({1, 7, true});
  invoke("one");

  EXPECT_THROW(invoke("two"), InvalidCallbackException);

  EXPECT_EQ(assistant.callbacks().size(), 1U);
}

TEST_F(AResponseDelegate, MakesNoParcelWhenItIsSpent) {
  registers({1, 7, true});
  invoke("one");
  forgetCalls();

  EXPECT_THROW(invoke("two"), InvalidCallbackException);

  EXPECT_THAT(calls({"rpc_port_parcel_create"}), testing::IsEmpty());
}

TEST_F(AResponseDelegate, IsSpentAlsoWhenTheSendFailed) {
  registers({1, 7, true});
  platform().faults.fail("rpc_port_parcel_send");
  invoke("one");

  EXPECT_THROW(invoke("two"), InvalidCallbackException);

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(AResponseDelegate, IsNotConnectedWhenItsConnectionHasEnded) {
  registers();
  assistant.disconnects();
  forgetCalls();

  EXPECT_THROW(invoke("text"), NotConnectedSocketException);

  EXPECT_THAT(calls({"rpc_port_parcel_create"}), IsEmpty());
}

TEST_F(AResponseDelegate, IsNotConnectedWhenTheStubIsGone) {
  registers();
  destroysStub();

  EXPECT_THROW(invoke("text"), NotConnectedSocketException);
}

TEST_F(AResponseDelegate, IsNotRevivedByANewConnectionOfTheSameInstance) {
  registers();
  assistant.disconnects();
  assistant.connects();

  EXPECT_THROW(invoke("text"), NotConnectedSocketException);
}

TEST_F(AResponseDelegate, IsNotConnectedWithoutACallbackPort) {
  platform().faults.fail("rpc_port_stub_get_port");
  registers();

  EXPECT_THROW(invoke("text"), NotConnectedSocketException);
}

TEST_F(AResponseDelegate, MindsItsPortBeforeItMindsThatItIsSpent) {
  platform().faults.fail("rpc_port_stub_get_port");
  registers({1, 7, true});

  EXPECT_THROW(invoke("one"), NotConnectedSocketException);
  EXPECT_THROW(invoke("two"), NotConnectedSocketException);
}

TEST_F(AResponseDelegate, MindsItsServiceBeforeItMindsThatItIsSpent) {
  registers({1, 7, true});
  invoke("one");
  assistant.disconnects();

  EXPECT_THROW(invoke("two"), NotConnectedSocketException);
}

TEST_F(AResponseDelegate, IsNotConnectedWithoutAServiceAtAll) {
  int port = 0;
  const bool thrown = library([&port] {
    try {
      Message::ResponseCB(&port, {}).Invoke("text", Bundle(nullptr));
    } catch (const NotConnectedSocketException &) {
      return true;
    }
    return false;
  });

  EXPECT_TRUE(thrown);
}

TEST_F(AResponseDelegate, DoesNotKeepItsServiceAlive) {
  registers();
  recorded.events.clear();

  assistant.disconnects();

  EXPECT_THAT(recorded.events, TextsAre({"OnTerminate instance-1", "destroyed instance-1"}));
}

TEST_F(AResponseDelegate, DoesNotKeepItsServiceAliveWhileItSends) {
  registers();
  recorded.events.clear();
  platform().during["rpc_port_parcel_send"] = [this] {
    assistant.disconnects();
    recorded.add("sent");
  };

  invoke("text");

  EXPECT_THAT(recorded.events,
              TextsAre({"OnTerminate instance-1", "destroyed instance-1", "sent"}));
}

TEST_F(AResponseDelegate, ReleasesItsParcelAndItsBundleWhenItIsInterrupted) {
  registers({1, 7, true});
  platform().during["rpc_port_parcel_send"] = [] { throw std::bad_alloc(); };

  EXPECT_THROW(invoke("text"), std::bad_alloc);

  EXPECT_EQ(platform().bundles.alive(), 0U);
  EXPECT_EQ(platform().ports.parcelsAlive(), 0U);
  EXPECT_NO_THROW(invoke("again")); // it counts as not invoked
}

TEST_F(AResponseDelegate, SendsNothingWhenItIsDestroyed) {
  registers();

  library([this] {
    recorded.delegates.clear();
    return 0;
  });

  EXPECT_THAT(platform().journal.calls(), IsEmpty());
}

TEST_F(AResponseDelegate, IsSilentWithoutAParcel) {
  registers();
  platform().faults.fail("rpc_port_parcel_create");

  invoke("text");

  EXPECT_THAT(assistant.callbacks(), IsEmpty());
  EXPECT_THAT(log(), IsEmpty());
}

} // namespace
