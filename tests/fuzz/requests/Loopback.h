// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_LOOPBACK_H
#define NORIX_FUZZ_LOOPBACK_H

#include <rpc-port-parcel.h>
#include <rpc-port.h>

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

// The stub functions of rpc-port and the way of a parcel through a port, without sockets and
// without a loop: what a peer sends is handed to the library at once. Bundles and parcels are the
// desktop's own.
class Loopback {
public:
  // What the library sent.
  struct Sent {
    std::string instance;
    rpc_port_port_type_e port;
    std::string parcel;
  };

  // The one that the C functions serve.
  static Loopback &instance();

  // The peer's side. Nothing happens without a stub that listens.
  void connect(const std::string &sender, const std::string &instance);
  void disconnect(const std::string &instance);
  // A parcel of these fields. A connection whose request is not served ends, as over sockets.
  void deliver(const std::string &instance, std::string_view fields);
  std::vector<Sent> takeSent();
  bool isConnected(const std::string &instance) const { return _connections.count(instance) != 0; }

  // The library's side.
  int create(rpc_port_stub_h *stub);
  int destroy(rpc_port_stub_h stub);
  int listen(rpc_port_stub_h stub);
  void onConnected(rpc_port_stub_connected_event_cb callback, void *data);
  void onDisconnected(rpc_port_stub_disconnected_event_cb callback, void *data);
  void onReceived(rpc_port_stub_received_event_cb callback, void *data);
  int findPort(const std::string &instance, rpc_port_port_type_e type, rpc_port_h *port);
  int receive(rpc_port_h port, rpc_port_parcel_h *parcel);
  int send(rpc_port_h port, rpc_port_parcel_h parcel);

private:
  struct Port {
    std::string instance;
    rpc_port_port_type_e type;
    std::deque<std::string> arrived;
  };
  struct Connection {
    std::string sender;
    Port *main;
    Port *callback;
  };
  template <typename Callback>
  struct Handler {
    Callback callback = nullptr;
    void *data = nullptr;
  };

  Port *makePort(const std::string &instance, rpc_port_port_type_e type);
  // Null for a port whose connection has ended.
  Port *alive(rpc_port_h port) const;

  bool _isCreated = false;
  bool _isListening = false;
  Handler<rpc_port_stub_connected_event_cb> _connected;
  Handler<rpc_port_stub_disconnected_event_cb> _disconnected;
  Handler<rpc_port_stub_received_event_cb> _received;
  std::map<std::string, Connection> _connections;
  // Also those that are dead: a stale handle must never name a new port.
  std::vector<std::unique_ptr<Port>> _ports;
  std::vector<Sent> _sent;
};

// A fresh one.
void resetLoopback();

} // namespace fuzz

#endif
