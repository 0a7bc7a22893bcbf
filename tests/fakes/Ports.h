// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_PORTS_H
#define NORIX_FAKES_PORTS_H

#include "fakes/Values.h"

#include <rpc-port-parcel.h>
#include <rpc-port.h>

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace fake {

/// One of the two ports of a connection.
struct FakePort {
  std::string instance;
  rpc_port_port_type_e type;
  /// Parcels of the proxy that the library has not read yet, and those that it sent to the proxy.
  std::deque<Parcel> incoming;
  std::vector<Parcel> sent;
};

struct FakeParcel {
  int number;
  Parcel fields;
  size_t read;
};

struct FakeStub {
  template <typename Handler>
  struct Registered {
    Handler handler = nullptr;
    void *userData = nullptr;
  };

  int number;
  std::string portName;
  bool listening;
  Registered<rpc_port_stub_connected_event_cb> connected;
  Registered<rpc_port_stub_disconnected_event_cb> disconnected;
  Registered<rpc_port_stub_received_event_cb> received;
};

/// Stubs, connections and parcels: what the library opened, and what a proxy does to it.
class Ports {
public:
  /// The proxy's side. Events go to the latest stub that is alive; without one they are a misuse of
  /// the fake, reported like the library's.
  void connect(const std::string &sender, const std::string &instance);
  void disconnect(const std::string &sender, const std::string &instance);
  /// Sends a parcel to the library; the result is the one of the library's received handler.
  int deliver(const std::string &sender, const std::string &instance, Parcel parcel);
  /// What arrived at the proxy.
  const std::vector<Parcel> &sentOn(const std::string &instance, rpc_port_port_type_e type);
  /// Both ports of a connection die with it; the proxy may forget it before the library hears of
  /// it.
  FakePort *port(const std::string &instance, rpc_port_port_type_e type);

  /// The library's side; null for handles that are not alive.
  FakeStub *createStub(const std::string &portName);
  bool destroyStub(rpc_port_stub_h handle);
  FakeStub *findStub(rpc_port_stub_h handle) const;
  FakePort *findPort(rpc_port_h handle) const;
  FakeParcel *createParcel(Parcel fields);
  bool destroyParcel(rpc_port_parcel_h handle);
  FakeParcel *findParcel(rpc_port_parcel_h handle) const;

  size_t stubsAlive() const { return _stubs.size(); }
  size_t parcelsAlive() const { return _parcels.size(); }
  int stubsCreated() const { return _stubsCreated; }
  /// The stub that events go to.
  FakeStub *stub() const;

private:
  using PortKey = std::pair<std::string, rpc_port_port_type_e>;

  std::vector<std::unique_ptr<FakeStub>> _stubs;
  std::vector<std::unique_ptr<FakeParcel>> _parcels;
  std::map<PortKey, std::unique_ptr<FakePort>> _ports;
  /// Kept, so that a stale handle never names a new object.
  std::vector<std::unique_ptr<FakeStub>> _destroyedStubs;
  std::vector<std::unique_ptr<FakeParcel>> _destroyedParcels;
  int _stubsCreated = 0;
  int _parcelsCreated = 0;
};

} // namespace fake

#endif
