// SPDX-License-Identifier: Apache-2.0
#include "support/Ends.h"

#include <gmock/gmock.h>

namespace rpc_test {
namespace {

using testing::Each;

class AHandle : public ConnectedEnds {
protected:
  static std::vector<int> callStubFunctions(rpc_port_stub_h h) {
    rpc_port_h port = nullptr;
    return {
        rpc_port_stub_listen(h),
        rpc_port_stub_add_connected_event_cb(
            h, [](const char *, const char *, void *) {}, nullptr),
        rpc_port_stub_add_disconnected_event_cb(
            h, [](const char *, const char *, void *) {}, nullptr),
        rpc_port_stub_add_received_event_cb(
            h, [](const char *, const char *, rpc_port_h, void *) { return 0; }, nullptr),
        rpc_port_stub_add_privilege(h, "privilege"),
        rpc_port_stub_set_trusted(h, true),
        rpc_port_stub_get_port(h, RPC_PORT_PORT_MAIN, "instance", &port),
        rpc_port_stub_destroy(h),
    };
  }

  static std::vector<int> callProxyFunctions(rpc_port_proxy_h h) {
    rpc_port_h port = nullptr;
    return {
        rpc_port_proxy_connect(h, kAppId, kPort),
        rpc_port_proxy_connect_sync(h, kAppId, kPort),
        rpc_port_proxy_add_connected_event_cb(
            h, [](const char *, const char *, rpc_port_h, void *) {}, nullptr),
        rpc_port_proxy_add_disconnected_event_cb(
            h, [](const char *, const char *, void *) {}, nullptr),
        rpc_port_proxy_add_rejected_event_cb(
            h, [](const char *, const char *, void *) {}, nullptr),
        rpc_port_proxy_add_received_event_cb(
            h, [](const char *, const char *, void *) {}, nullptr),
        rpc_port_proxy_get_port(h, RPC_PORT_PORT_MAIN, &port),
        rpc_port_proxy_destroy(h),
    };
  }

  static std::vector<int> callPortFunctions(rpc_port_h h) {
    char byte = 0;
    const char *path = "/path";
    rpc_port_parcel_h parcel = nullptr;
    return {
        rpc_port_read(h, &byte, 1),
        rpc_port_write(h, &byte, 1),
        rpc_port_disconnect(h),
        rpc_port_set_private_sharing(h, path),
        rpc_port_set_private_sharing_array(h, &path, 1),
        rpc_port_unset_private_sharing(h),
        rpc_port_parcel_create_from_port(&parcel, h),
    };
  }
};

TEST_F(AHandle, OfADestroyedStubIsRefused) {
  const rpc_port_stub_h stale = stub.handle;
  stub.destroy();

  EXPECT_THAT(callStubFunctions(stale), Each(RPC_PORT_ERROR_INVALID_PARAMETER));
}

TEST_F(AHandle, OfADestroyedProxyIsRefused) {
  const rpc_port_proxy_h stale = proxy.handle;
  proxy.destroy();

  EXPECT_THAT(callProxyFunctions(stale), Each(RPC_PORT_ERROR_INVALID_PARAMETER));
}

TEST_F(AHandle, OfADestroyedStubIsNotThatOfTheNextOne) {
  const rpc_port_stub_h stale = stub.handle;
  stub.destroy();
  const StubEnd next;

  EXPECT_NE(next.handle, stale);
  EXPECT_EQ(rpc_port_stub_destroy(stale), RPC_PORT_ERROR_INVALID_PARAMETER);
}

TEST_F(AHandle, ThatIsNullIsRefused) {
  EXPECT_THAT(callStubFunctions(nullptr), Each(RPC_PORT_ERROR_INVALID_PARAMETER));
  EXPECT_THAT(callProxyFunctions(nullptr), Each(RPC_PORT_ERROR_INVALID_PARAMETER));
  EXPECT_THAT(callPortFunctions(nullptr), Each(RPC_PORT_ERROR_INVALID_PARAMETER));
}

TEST_F(AHandle, ThatIsGarbageIsRefused) {
  int variable = 0;

  EXPECT_THAT(callStubFunctions(&variable), Each(RPC_PORT_ERROR_INVALID_PARAMETER));
  EXPECT_THAT(callProxyFunctions(&variable), Each(RPC_PORT_ERROR_INVALID_PARAMETER));
  EXPECT_THAT(callPortFunctions(&variable), Each(RPC_PORT_ERROR_IO_ERROR));
}

TEST_F(AHandle, OfAnotherKindIsRefused) {
  EXPECT_THAT(callStubFunctions(proxy.handle), Each(RPC_PORT_ERROR_INVALID_PARAMETER));
  EXPECT_THAT(callProxyFunctions(stub.handle), Each(RPC_PORT_ERROR_INVALID_PARAMETER));
  EXPECT_THAT(callPortFunctions(stub.handle), Each(RPC_PORT_ERROR_IO_ERROR));
  EXPECT_THAT(callStubFunctions(stub.port(RPC_PORT_PORT_MAIN)),
              Each(RPC_PORT_ERROR_INVALID_PARAMETER));
}

TEST_F(AHandle, ComesWithArgumentsThatAreChecked) {
  rpc_port_h port = nullptr;
  const rpc_port_h live = stub.port(RPC_PORT_PORT_MAIN);
  char byte = 0;

  const std::vector<int> results = {
      rpc_port_stub_create(nullptr, kPort),
      rpc_port_stub_create(&port, nullptr),
      rpc_port_stub_add_connected_event_cb(stub.handle, nullptr, nullptr),
      rpc_port_stub_add_disconnected_event_cb(stub.handle, nullptr, nullptr),
      rpc_port_stub_add_received_event_cb(stub.handle, nullptr, nullptr),
      rpc_port_stub_add_privilege(stub.handle, nullptr),
      rpc_port_stub_get_port(stub.handle, RPC_PORT_PORT_MAIN, nullptr, &port),
      rpc_port_stub_get_port(stub.handle, RPC_PORT_PORT_MAIN, "instance", nullptr),
      rpc_port_proxy_create(nullptr),
      rpc_port_proxy_add_connected_event_cb(proxy.handle, nullptr, nullptr),
      rpc_port_proxy_add_disconnected_event_cb(proxy.handle, nullptr, nullptr),
      rpc_port_proxy_add_rejected_event_cb(proxy.handle, nullptr, nullptr),
      rpc_port_proxy_add_received_event_cb(proxy.handle, nullptr, nullptr),
      rpc_port_proxy_get_port(proxy.handle, RPC_PORT_PORT_MAIN, nullptr),
      rpc_port_read(live, nullptr, 1),
      rpc_port_read(live, &byte, 0),
      rpc_port_write(live, nullptr, 1),
      rpc_port_write(live, &byte, 0),
      rpc_port_set_private_sharing(live, nullptr),
      rpc_port_set_private_sharing_array(live, nullptr, 1),
  };

  EXPECT_THAT(results, Each(RPC_PORT_ERROR_INVALID_PARAMETER));
}

TEST_F(AHandle, OfALivePortAcceptsWhatHasNoEffectOnADesktop) {
  const rpc_port_h port = stub.port(RPC_PORT_PORT_MAIN);
  const char *path = "/path";

  EXPECT_EQ(rpc_port_set_private_sharing(port, path), RPC_PORT_ERROR_NONE);
  EXPECT_EQ(rpc_port_set_private_sharing_array(port, &path, 1), RPC_PORT_ERROR_NONE);
  EXPECT_EQ(rpc_port_unset_private_sharing(port), RPC_PORT_ERROR_NONE);
  EXPECT_EQ(rpc_port_stub_add_privilege(stub.handle, "privilege"), RPC_PORT_ERROR_NONE);
  EXPECT_EQ(rpc_port_stub_set_trusted(stub.handle, true), RPC_PORT_ERROR_NONE);
}

TEST_F(AHandle, OfAnUnknownInstanceGetsNoPort) {
  rpc_port_h port = nullptr;

  EXPECT_EQ(rpc_port_stub_get_port(stub.handle, RPC_PORT_PORT_MAIN, "unknown", &port),
            RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(port, nullptr);
}

} // namespace
} // namespace rpc_test
