// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_RPC_PORT_SUPPORT_ENDS_H
#define TESTS_RPC_PORT_SUPPORT_ENDS_H

#include "Runtime.h"

#include <functional>
#include <rpc-port-parcel.h>
#include <string>
#include <vector>

namespace rpc_test {

constexpr const char *kPort = "message";

/// Makes a parcel that holds one text, and sends it. @return What the platform returned.
int sendText(rpc_port_h port, const std::string &text);

/// Takes a parcel from the port. @return Its text, or "error <number>".
std::string takeText(rpc_port_h port);

/// A stub that notes its events, and consumes every message, unless a test gives it other handlers.
class StubEnd {
public:
  explicit StubEnd(const char *port = kPort);
  ~StubEnd();
  StubEnd(const StubEnd &) = delete;
  StubEnd &operator=(const StubEnd &) = delete;

  int listen() { return rpc_port_stub_listen(handle); }
  void destroy();
  rpc_port_h port(rpc_port_port_type_e type, std::size_t connection = 0) const;

  rpc_port_stub_h handle = nullptr;
  std::vector<std::string> senders;
  std::vector<std::string> instances;
  std::vector<std::string> ended; // Instances.
  std::vector<std::string> texts;
  std::function<void()> onConnected = [] {};
  std::function<void()> onDisconnected = [] {};
  std::function<int(rpc_port_h)> onReceived;

private:
  static void noteConnected(const char *sender, const char *instance, void *data);
  static void noteDisconnected(const char *sender, const char *instance, void *data);
  static int noteReceived(const char *sender, const char *instance, rpc_port_h port, void *data);
};

/// A proxy that notes its events, and consumes every message, unless a test gives it other
/// handlers.
class ProxyEnd {
public:
  ProxyEnd();
  ~ProxyEnd();
  ProxyEnd(const ProxyEnd &) = delete;
  ProxyEnd &operator=(const ProxyEnd &) = delete;

  int connect(const char *port = kPort) { return rpc_port_proxy_connect(handle, kAppId, port); }
  void destroy();
  rpc_port_h port(rpc_port_port_type_e type) const;

  rpc_port_proxy_h handle = nullptr;
  std::vector<rpc_port_h> mainPorts; // Of each connected event.
  int rejections = 0;
  int endings = 0;
  std::vector<std::string> texts;
  std::function<void()> onConnected = [] {};
  std::function<void()> onDisconnected = [] {};
  std::function<void()> onRejected = [] {};
  std::function<void()> onReceived;

private:
  static void noteConnected(const char *receiver, const char *name, rpc_port_h port, void *data);
  static void noteDisconnected(const char *receiver, const char *name, void *data);
  static void noteRejected(const char *receiver, const char *name, void *data);
  static void noteReceived(const char *receiver, const char *name, void *data);
};

/// A stub that listens, and a proxy of it, in one process and on one loop.
class ConnectedEnds : public Runtime {
protected:
  void SetUp() override;

  StubEnd stub;
  ProxyEnd proxy;
};

} // namespace rpc_test

#endif
