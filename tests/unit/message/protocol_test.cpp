// SPDX-License-Identifier: Apache-2.0
//
// The five messages of the interface, field by field.
#include "RecordingService.h"

#include "fakes/Heap.h"
#include "fakes/LogMatchers.h"

#include <climits>

namespace {

using fake::Bool;
using fake::BundleOf;
using fake::Contents;
using fake::Int32;
using fake::IsStubLine;
using fake::LinesAre;
using fake::Parcel;
using fake::ParcelsAre;
using fake::platform;
using fake::resultOf;
using fake::Text;
using fake::TextsAre;
using testing::ElementsAre;
using testing::IsEmpty;

class TheProtocol : public ConnectedStubTest {};

TEST_F(TheProtocol, ReadsAParcelAndAnswersIt) {
  assistant.unregisters();

  EXPECT_THAT(
      calls({"rpc_port_stub_get_port", "rpc_port_parcel_create_from_port", "rpc_port_parcel_create",
             "rpc_port_parcel_read_int32", "rpc_port_parcel_write_int32", "rpc_port_parcel_send",
             "rpc_port_parcel_destroy"}),
      TextsAre({"rpc_port_stub_get_port(stub 1, 1, instance-1)",
                "rpc_port_parcel_create_from_port(main port of instance-1)",
                "rpc_port_parcel_create()", "rpc_port_parcel_read_int32(parcel 1)",
                "rpc_port_parcel_write_int32(parcel 2, 0)",
                "rpc_port_parcel_write_int32(parcel 2, 0)",
                "rpc_port_parcel_send(parcel 2, main port of instance-1)",
                "rpc_port_parcel_destroy(parcel 1)", "rpc_port_parcel_destroy(parcel 2)"}));
  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(TheProtocol, HandsADelegateToSetCbAndSendsTheResult) {
  recorded.result = -1;

  EXPECT_EQ(assistant.sendsParcel({Int32{2}, Int32{5}, Int32{-9}, Bool{true}}), 0);

  EXPECT_THAT(recorded.events, TextsAre({"SetCB 5::-9"}));
  EXPECT_TRUE(recorded.delegates.back()->IsOnce());
  EXPECT_THAT(assistant.results(), ParcelsAre({resultOf(-1)}));
}

TEST_F(TheProtocol, ReadsTheDelegateInItsOrder) {
  assistant.registers();

  EXPECT_THAT(
      calls({"rpc_port_parcel_read_int32", "rpc_port_parcel_read_bool"}),
      TextsAre({"rpc_port_parcel_read_int32(parcel 1)", "rpc_port_parcel_read_int32(parcel 1)",
                "rpc_port_parcel_read_int32(parcel 1)", "rpc_port_parcel_read_bool(parcel 1)"}));
}

TEST_F(TheProtocol, DrawsASequenceIdForEachDelegateThatArrives) {
  const Message::CallbackBase before(1, false);

  assistant.registers();

  const Message::CallbackBase after(1, false);
  EXPECT_EQ(after.GetSeqId(), before.GetSeqId() + 2);
}

TEST_F(TheProtocol, DestroysADelegateThatNobodyKeepsBeforeItWritesTheResult) {
  recorded.keepsDelegate = false;
  bool isAlive = true;
  platform().during["rpc_port_parcel_write_int32"] = [&] {
    isAlive = fake::Heap::instance().holds(recorded.lastDelegate);
  };

  EXPECT_EQ(assistant.registers(), 0);

  EXPECT_FALSE(isAlive);
  EXPECT_THAT(assistant.results(), ParcelsAre({resultOf(0)}));
}

TEST_F(TheProtocol, SendsTheResultOfUnsetCb) {
  recorded.result = 77;

  EXPECT_EQ(assistant.sendsParcel({Int32{3}}), 0);

  EXPECT_THAT(recorded.events, TextsAre({"UnsetCB"}));
  EXPECT_THAT(assistant.results(), ParcelsAre({resultOf(77)}));
}

TEST_F(TheProtocol, HandsABundleToSendAndAnswersNothing) {
  const Contents request = {fake::text("actionId", "play"), fake::id("requestId", 42)};

  EXPECT_EQ(assistant.sendsParcel({Int32{4}, BundleOf{request}}), 0);

  EXPECT_THAT(recorded.requests, ElementsAre(request));
  EXPECT_THAT(assistant.results(), IsEmpty());
  EXPECT_THAT(assistant.callbacks(), IsEmpty());
}

TEST_F(TheProtocol, GivesSendACopyAndFreesBoth) {
  assistant.sends({});

  EXPECT_THAT(calls({"bundle_dup", "bundle_free", "rpc_port_parcel_destroy"}),
              TextsAre({"bundle_dup(bundle 1)", "bundle_free(bundle 2)", "bundle_free(bundle 1)",
                        "rpc_port_parcel_destroy(parcel 1)", "rpc_port_parcel_destroy(parcel 2)"}));
}

TEST_F(TheProtocol, IgnoresWhatFollowsTheLastField) {
  EXPECT_EQ(assistant.sendsParcel({Int32{3}, Int32{1}, Text{"more"}}), 0);
  EXPECT_EQ(assistant.sendsParcel({Int32{2}, Int32{1}, Int32{2}, Bool{false}, Bool{true}}), 0);
  EXPECT_EQ(assistant.sendsParcel({Int32{4}, BundleOf{}, BundleOf{}}), 0);

  EXPECT_THAT(recorded.events,
              TextsAre({"UnsetCB", "SetCB 1::2", "Send to com.valtren.tizen.norix"}));
}

TEST_F(TheProtocol, AnswersEachOfTwoRegistrations) {
  assistant.registers({1, 1, false});
  assistant.registers({1, 2, false});

  EXPECT_THAT(assistant.results(), ParcelsAre({resultOf(0), resultOf(0)}));
}

TEST_F(TheProtocol, GoesOnWithoutACallbackPort) {
  platform().faults.fail("rpc_port_stub_get_port");

  EXPECT_EQ(assistant.registers(), 0);

  EXPECT_THAT(logLines(), LinesAre({IsStubLine("OnReceivedCB", "Failed to get callback port",
                                               "Failed to get callback port")}));
  EXPECT_THAT(assistant.results(), ParcelsAre({resultOf(0)}));
}

TEST_F(TheProtocol, ReportsAParcelThatCannotBeRead) {
  platform().faults.fail("rpc_port_parcel_create_from_port", 1, -77);

  EXPECT_EQ(assistant.registers(), -77);

  EXPECT_THAT(logLines(), LinesAre({IsStubLine("OnReceivedCB", "Failed to create parcel from port",
                                               "Failed to create parcel from port")}));
  EXPECT_THAT(calls({"rpc_port_parcel_create", "rpc_port_parcel_destroy"}), IsEmpty());
  EXPECT_THAT(recorded.events, IsEmpty());
}

TEST_F(TheProtocol, ServesARequestWhoseResultCannotBeMade) {
  platform().faults.fail("rpc_port_parcel_create");

  EXPECT_EQ(assistant.unregisters(), 0);

  EXPECT_THAT(recorded.events, TextsAre({"UnsetCB"}));
  EXPECT_THAT(assistant.results(), IsEmpty());
}

TEST_F(TheProtocol, DoesNotNoticeAResultThatIsNotSent) {
  platform().faults.fail("rpc_port_parcel_send");

  EXPECT_EQ(assistant.unregisters(), 0);

  EXPECT_THAT(log(), IsEmpty());
}

TEST_F(TheProtocol, SendsWithoutABundleWhenTheRequestHasNone) {
  EXPECT_EQ(assistant.sendsParcel({Int32{4}}), 0);

  EXPECT_THAT(recorded.events, TextsAre({"Send to com.valtren.tizen.norix"}));
  EXPECT_THAT(recorded.requests, IsEmpty());
  EXPECT_THAT(calls({"bundle_dup", "bundle_free"}), TextsAre({"bundle_dup(null)"}));
}

TEST_F(TheProtocol, SendsWithoutABundleWhenItCannotBeCopied) {
  platform().faults.fail("bundle_dup");

  EXPECT_EQ(assistant.sends({}), 0);

  EXPECT_THAT(recorded.requests, IsEmpty());
  EXPECT_THAT(calls({"bundle_free"}), TextsAre({"bundle_free(bundle 1)"}));
}

TEST_F(TheProtocol, RegistersADelegateWithWhatTheParcelHas) {
  EXPECT_EQ(assistant.sendsParcel({Int32{2}}), 0);

  EXPECT_EQ(recorded.delegates.back()->GetId(), 1);
  EXPECT_FALSE(recorded.delegates.back()->IsOnce());
  EXPECT_THAT(assistant.results(), ParcelsAre({resultOf(0)}));
}

TEST_F(TheProtocol, TakesAnEmptyParcelForAnUnknownCommand) {
  EXPECT_EQ(assistant.sendsParcel({}), -1);

  EXPECT_EQ(log().size(), 1U);
  EXPECT_THAT(recorded.events, IsEmpty());
  EXPECT_THAT(assistant.results(), IsEmpty());
}

class AnUnknownCommand : public ConnectedStubTest, public testing::WithParamInterface<int> {};

TEST_P(AnUnknownCommand, IsLoggedAndRefused) {
  EXPECT_EQ(assistant.sendsParcel({Int32{GetParam()}, BundleOf{}}), -1);

  EXPECT_THAT(logLines(),
              LinesAre({IsStubLine("OnReceivedCB", "Unknown command(%d)",
                                   "Unknown command(" + std::to_string(GetParam()) + ")")}));
  EXPECT_THAT(recorded.events, IsEmpty());
  EXPECT_THAT(assistant.results(), IsEmpty());
  EXPECT_EQ(calls({"rpc_port_parcel_destroy"}).size(), 2U);
}

TEST_P(AnUnknownCommand, LeavesTheConnectionServed) {
  assistant.sendsParcel({Int32{GetParam()}});

  EXPECT_EQ(assistant.unregisters(), 0);
}

INSTANTIATE_TEST_SUITE_P(, AnUnknownCommand,
                         testing::Values(0, 1, 5, 6, 255, -1, -2, INT_MIN, INT_MAX));

} // namespace
