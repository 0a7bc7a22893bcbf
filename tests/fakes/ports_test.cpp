// SPDX-License-Identifier: Apache-2.0
#include "fakes/LibraryTest.h"

#include <norix.h>
#include <rpc-port-parcel.h>
#include <rpc-port.h>

namespace {

using fake::Bool;
using fake::BundleOf;
using fake::Int32;
using fake::Parcel;
using fake::ParcelsAre;
using fake::platform;
using fake::Text;
using fake::TextsAre;
using testing::IsEmpty;

class AFakeStub : public fake::NothingLeft {
protected:
  AFakeStub() {
    rpc_port_stub_create(&stub, "port");
    rpc_port_stub_add_connected_event_cb(stub, noteEvent, &events);
    rpc_port_stub_add_disconnected_event_cb(stub, noteEvent, &events);
    rpc_port_stub_add_received_event_cb(stub, readAnInt, &events);
  }
  ~AFakeStub() override { rpc_port_stub_destroy(stub); }

  static void noteEvent(const char *sender, const char *instance, void *events) {
    static_cast<std::vector<std::string> *>(events)->push_back(std::string(sender) + " "
                                                               + instance);
  }

  static int readAnInt(const char *sender, const char *instance, rpc_port_h port, void *events) {
    int number = 0;
    rpc_port_parcel_h parcel = nullptr;
    rpc_port_parcel_create_from_port(&parcel, port);
    rpc_port_parcel_read_int32(parcel, &number);
    rpc_port_parcel_destroy(parcel);
    noteEvent(sender, instance, events);
    return number;
  }

  rpc_port_stub_h stub = nullptr;
  std::vector<std::string> events;
};

TEST_F(AFakeStub, RaisesTheEventsThatATestAsksFor) {
  fake::Assistant proxy("sender", "instance");

  proxy.connects();
  EXPECT_EQ(proxy.sendsParcel({Int32{12}}), 12);
  proxy.disconnects();

  EXPECT_THAT(events, TextsAre({"sender instance", "sender instance", "sender instance"}));
}

TEST_F(AFakeStub, HasAPortOfEachTypePerInstance) {
  rpc_port_h main = nullptr;
  rpc_port_h callback = nullptr;

  rpc_port_stub_get_port(stub, RPC_PORT_PORT_MAIN, "instance", &main);
  rpc_port_stub_get_port(stub, RPC_PORT_PORT_CALLBACK, "instance", &callback);

  EXPECT_EQ(main, platform().ports.port("instance", RPC_PORT_PORT_MAIN));
  EXPECT_EQ(callback, platform().ports.port("instance", RPC_PORT_PORT_CALLBACK));
  EXPECT_NE(main, callback);
}

TEST_F(AFakeStub, LeavesThePortUntouchedWhenTheLookUpFails) {
  int nothing = 0;
  rpc_port_h port = &nothing;
  platform().faults.fail("rpc_port_stub_get_port", 1, RPC_PORT_ERROR_IO_ERROR);

  const int result = fake::library(
      [&] { return rpc_port_stub_get_port(stub, RPC_PORT_PORT_CALLBACK, "instance", &port); });

  EXPECT_EQ(result, RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(port, &nothing);
}

TEST_F(AFakeStub, HasNobodyToConnectToWithoutHandlers) {
  rpc_port_stub_destroy(stub);

  fake::Assistant().connects();

  EXPECT_THAT(platform().misuses, TextsAre({"a proxy connected, but nothing listens for it"}));
  platform().misuses.clear();
  rpc_port_stub_create(&stub, "port");
}

class AFakeParcel : public fake::NothingLeft {
protected:
  AFakeParcel() { rpc_port_parcel_create(&parcel); }
  ~AFakeParcel() override { rpc_port_parcel_destroy(parcel); }

  rpc_port_parcel_h parcel = nullptr;
};

TEST_F(AFakeParcel, ArrivesWithItsFieldsInOrder) {
  rpc_port_h port = platform().ports.port("instance", RPC_PORT_PORT_CALLBACK);
  bundle *content = platform().bundles.create({fake::text("key", "value")});

  rpc_port_parcel_write_int32(parcel, -1);
  rpc_port_parcel_write_bool(parcel, true);
  rpc_port_parcel_write_string(parcel, "text");
  rpc_port_parcel_write_bundle(parcel, content);
  rpc_port_parcel_send(parcel, port);

  EXPECT_THAT(platform().ports.sentOn("instance", RPC_PORT_PORT_CALLBACK),
              ParcelsAre({Parcel{Int32{-1}, Bool{true}, Text{"text"},
                                 BundleOf{{fake::text("key", "value")}}}}));
  bundle_free(content);
}

TEST_F(AFakeParcel, LeavesTheOutputUntouchedWhenTheNextFieldIsAnother) {
  int number = 12;
  bool truth = false;
  rpc_port_parcel_write_bool(parcel, true);

  EXPECT_EQ(rpc_port_parcel_read_int32(parcel, &number), RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(number, 12);
  EXPECT_EQ(rpc_port_parcel_read_bool(parcel, &truth), RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(truth);
  EXPECT_EQ(rpc_port_parcel_read_bool(parcel, &truth), RPC_PORT_ERROR_IO_ERROR);
}

TEST_F(AFakeParcel, CannotBeReadFromAPortWithoutData) {
  rpc_port_parcel_h read = nullptr;

  EXPECT_EQ(rpc_port_parcel_create_from_port(&read, platform().ports.port("i", RPC_PORT_PORT_MAIN)),
            RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(read, nullptr);
}

TEST_F(AFakeParcel, IsMisusedAfterItWasDestroyed) {
  rpc_port_parcel_h destroyed = nullptr;
  rpc_port_parcel_create(&destroyed);
  rpc_port_parcel_destroy(destroyed);

  rpc_port_parcel_write_int32(destroyed, 1);

  EXPECT_THAT(platform().misuses,
              TextsAre({"rpc_port_parcel_write_int32 with a parcel that is not alive"}));
  platform().misuses.clear();
}

} // namespace
