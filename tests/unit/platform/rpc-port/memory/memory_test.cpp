// SPDX-License-Identifier: Apache-2.0
// Every allocation that a connection makes in its life fails once: at most that connection ends.
#include "memory/heap.h"
#include "support/Runtime.h"

#include <Ecore.h>
#include <gtest/gtest.h>
#include <rpc-port-parcel.h>
#include <rpc-port.h>
#include <string>

namespace rpc_test {
namespace {

constexpr const char *kPort = "message";
constexpr double kBoundSeconds = 20;

/// What both sides were told. The handlers allocate nothing but a parcel: what fails is the
/// transport's.
struct Events {
  int connected = 0;
  int rejected = 0;
  int disconnected = 0;
  int received = 0;

  bool hasOutcome() const { return connected + rejected > 0; }
};

void send(rpc_port_h port, const char *text) {
  rpc_port_parcel_h parcel = nullptr;
  if (rpc_port_parcel_create(&parcel) == RPC_PORT_ERROR_NONE) {
    (void)rpc_port_parcel_write_string(parcel, text);
    (void)rpc_port_parcel_send(parcel, port);
    rpc_port_parcel_destroy(parcel);
  }
}

void take(rpc_port_h port, Events &events) {
  rpc_port_parcel_h parcel = nullptr;
  if (rpc_port_parcel_create_from_port(&parcel, port) == RPC_PORT_ERROR_NONE) {
    ++events.received;
    rpc_port_parcel_destroy(parcel);
  }
}

/// A stub that answers each message on the callback port.
class Stub {
public:
  Stub() {
    rpc_port_stub_create(&_handle, kPort);
    rpc_port_stub_add_connected_event_cb(_handle, onConnected, this);
    rpc_port_stub_add_disconnected_event_cb(_handle, onDisconnected, this);
    rpc_port_stub_add_received_event_cb(_handle, onReceived, this);
  }
  ~Stub() { rpc_port_stub_destroy(_handle); }
  Stub(const Stub &) = delete;
  Stub &operator=(const Stub &) = delete;

  int listen() { return rpc_port_stub_listen(_handle); }

  Events events;

private:
  static void onConnected(const char * /*sender*/, const char * /*instance*/, void *data) {
    ++static_cast<Stub *>(data)->events.connected;
  }
  static void onDisconnected(const char * /*sender*/, const char * /*instance*/, void *data) {
    ++static_cast<Stub *>(data)->events.disconnected;
  }
  static int onReceived(const char * /*sender*/, const char *instance, rpc_port_h port,
                        void *data) {
    auto *stub = static_cast<Stub *>(data);
    take(port, stub->events);
    rpc_port_h callback = nullptr;
    if (rpc_port_stub_get_port(stub->_handle, RPC_PORT_PORT_CALLBACK, instance, &callback) == 0) {
      send(callback, "answer");
    }
    return 0;
  }

  rpc_port_stub_h _handle = nullptr;
};

class Proxy {
public:
  Proxy() {
    rpc_port_proxy_create(&_handle);
    rpc_port_proxy_add_connected_event_cb(_handle, onConnected, this);
    rpc_port_proxy_add_disconnected_event_cb(_handle, onDisconnected, this);
    rpc_port_proxy_add_rejected_event_cb(_handle, onRejected, this);
    rpc_port_proxy_add_received_event_cb(_handle, onReceived, this);
  }
  ~Proxy() { destroy(); }
  Proxy(const Proxy &) = delete;
  Proxy &operator=(const Proxy &) = delete;

  int connect(const char *port = kPort) { return rpc_port_proxy_connect(_handle, kAppId, port); }
  rpc_port_h port(rpc_port_port_type_e type) const {
    rpc_port_h found = nullptr;
    (void)rpc_port_proxy_get_port(_handle, type, &found);
    return found;
  }
  void destroy() {
    (void)rpc_port_proxy_destroy(_handle);
    _handle = nullptr;
  }

  Events events;

private:
  static void onConnected(const char * /*receiver*/, const char * /*name*/, rpc_port_h /*port*/,
                          void *data) {
    ++static_cast<Proxy *>(data)->events.connected;
  }
  static void onDisconnected(const char * /*receiver*/, const char * /*name*/, void *data) {
    ++static_cast<Proxy *>(data)->events.disconnected;
  }
  static void onRejected(const char * /*receiver*/, const char * /*name*/, void *data) {
    ++static_cast<Proxy *>(data)->events.rejected;
  }
  static void onReceived(const char * /*receiver*/, const char * /*name*/, void *data) {
    auto *proxy = static_cast<Proxy *>(data);
    take(proxy->port(RPC_PORT_PORT_CALLBACK), proxy->events);
  }

  rpc_port_proxy_h _handle = nullptr;
};

class AFailingAllocation : public Runtime {
protected:
  AFailingAllocation() : _tick(ecore_timer_add(0.005, &keepTicking, nullptr)) {}
  ~AFailingAllocation() override { ecore_timer_del(_tick); }

  void SetUp() override { ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE); }

  /// Runs the loop until the condition holds, without allocating anything.
  template <typename Condition>
  static bool turnUntil(Condition holds) {
    const double end = ecore_time_get() + kBoundSeconds;
    while (!holds() && ecore_time_get() < end) {
      ecore_main_loop_iterate_may_block(1);
    }
    return holds();
  }

  /// Runs `life` again and again, with one allocation failing each time, until none is left to
  /// fail; after each, another connection has to work.
  template <typename Life>
  void sweep(Life life) {
    int count = 0;
    for (bool failed = true; failed; ++count) {
      SCOPED_TRACE("allocation " + std::to_string(count + 1));
      Proxy proxy;
      failAllocation(count + 1);
      ASSERT_NO_THROW(life(proxy));
      failed = hasFailed();
      failAllocation(0);
      proxy.destroy();
      ASSERT_TRUE(servesAnother());
    }
    EXPECT_GT(count, 5);
  }

  bool servesAnother() {
    Proxy other;
    other.connect();
    if (!turnUntil([&] { return other.events.hasOutcome(); })) {
      return false;
    }
    send(other.port(RPC_PORT_PORT_MAIN), "question");
    const bool isAnswered = turnUntil([&] { return other.events.received == 1; });
    other.destroy();
    return isAnswered
           && turnUntil([&] { return stub.events.disconnected == stub.events.connected; });
  }

  Stub stub;

private:
  static Eina_Bool keepTicking(void * /*data*/) { return ECORE_CALLBACK_RENEW; }

  Ecore_Timer *_tick;
};

TEST_F(AFailingAllocation, EndsAtMostTheConnectionThatIsEstablished) {
  sweep([&](Proxy &proxy) {
    if (proxy.connect() == RPC_PORT_ERROR_NONE) {
      EXPECT_TRUE(turnUntil([&] { return proxy.events.hasOutcome(); }));
    }
  });
}

TEST_F(AFailingAllocation, EndsAtMostTheConnectionThatExchangesMessages) {
  const std::string text(300000, 'x'); // More than a socket takes at once.
  sweep([&](Proxy &proxy) {
    if (proxy.connect() != RPC_PORT_ERROR_NONE
        || !turnUntil([&] { return proxy.events.hasOutcome(); })) {
      return;
    }
    const int before = stub.events.received;
    send(proxy.port(RPC_PORT_PORT_MAIN), text.c_str());
    send(proxy.port(RPC_PORT_PORT_MAIN), "behind it");
    for (int turn = 0; turn < 100 && stub.events.received < before + 2; ++turn) {
      ecore_main_loop_iterate_may_block(0);
    }
  });
}

TEST_F(AFailingAllocation, EndsAtMostTheConnectionThatIsClosed) {
  sweep([&](Proxy &proxy) {
    if (proxy.connect() != RPC_PORT_ERROR_NONE
        || !turnUntil([&] { return proxy.events.hasOutcome(); })) {
      return;
    }
    proxy.destroy();
    EXPECT_TRUE(turnUntil([&] { return stub.events.disconnected == stub.events.connected; }));
  });
}

TEST_F(AFailingAllocation, EndsAtMostTheConnectionThatIsDisconnected) {
  sweep([&](Proxy &proxy) {
    if (proxy.connect() != RPC_PORT_ERROR_NONE
        || !turnUntil([&] { return proxy.events.hasOutcome(); })) {
      return;
    }
    (void)rpc_port_disconnect(proxy.port(RPC_PORT_PORT_CALLBACK));
    (void)rpc_port_disconnect(proxy.port(RPC_PORT_PORT_MAIN));
    EXPECT_TRUE(turnUntil([&] { return stub.events.disconnected == stub.events.connected; }));
  });
}

TEST_F(AFailingAllocation, EndsAtMostTheConnectionThatIsRejected) {
  sweep([&](Proxy &proxy) {
    if (proxy.connect("nobody") == RPC_PORT_ERROR_NONE) {
      EXPECT_TRUE(turnUntil([&] { return proxy.events.rejected == 1; }));
    }
  });
}

TEST_F(AFailingAllocation, IsAnIoErrorForAStubThatListens) {
  int failures = 0;
  for (bool failed = true; failed;) {
    rpc_port_stub_h other = nullptr;
    rpc_port_stub_create(&other, "other");
    failAllocation(++failures);
    const int result = rpc_port_stub_listen(other);
    failed = hasFailed();
    failAllocation(0);
    EXPECT_TRUE(result == RPC_PORT_ERROR_IO_ERROR || result == RPC_PORT_ERROR_NONE) << result;
    EXPECT_TRUE(failed || result == RPC_PORT_ERROR_NONE);
    rpc_port_stub_destroy(other);
  }
  EXPECT_GT(failures, 5);
}

} // namespace
} // namespace rpc_test
