// SPDX-License-Identifier: Apache-2.0
#include "fakes/Ports.h"

#include "fakes/Platform.h"

#include <algorithm>
#include <utility>

namespace fake {

namespace {

template <typename Object>
Object *findIn(const std::vector<std::unique_ptr<Object>> &objects, const void *handle) {
  for (const auto &object : objects) {
    if (object.get() == handle) {
      return object.get();
    }
  }
  return nullptr;
}

template <typename Object>
bool moveTo(std::vector<std::unique_ptr<Object>> &from, std::vector<std::unique_ptr<Object>> &to,
            const void *handle) {
  const auto found = std::find_if(from.begin(), from.end(),
                                  [handle](const auto &object) { return object.get() == handle; });
  if (found == from.end()) {
    return false;
  }
  to.push_back(std::move(*found));
  from.erase(found);
  return true;
}

} // namespace

void Ports::connect(const std::string &sender, const std::string &instance) {
  FakeStub *listener = stub();
  if (listener == nullptr || listener->connected.handler == nullptr) {
    platform().misuses.emplace_back("a proxy connected, but nothing listens for it");
    return;
  }
  (void)port(instance, RPC_PORT_PORT_MAIN);
  (void)port(instance, RPC_PORT_PORT_CALLBACK);
  const auto [handler, userData] = listener->connected;
  const InsideLibrary inside;
  handler(sender.c_str(), instance.c_str(), userData);
}

void Ports::disconnect(const std::string &sender, const std::string &instance) {
  FakeStub *listener = stub();
  if (listener == nullptr || listener->disconnected.handler == nullptr) {
    platform().misuses.emplace_back("a proxy disconnected, but nothing listens for it");
    return;
  }
  const auto [handler, userData] = listener->disconnected;
  const InsideLibrary inside;
  handler(sender.c_str(), instance.c_str(), userData);
}

int Ports::deliver(const std::string &sender, const std::string &instance, Parcel parcel) {
  FakeStub *listener = stub();
  if (listener == nullptr || listener->received.handler == nullptr) {
    platform().misuses.emplace_back("a parcel was sent, but nothing listens for it");
    return RPC_PORT_ERROR_IO_ERROR;
  }
  FakePort *main = port(instance, RPC_PORT_PORT_MAIN);
  main->incoming.push_back(std::move(parcel));
  const auto [handler, userData] = listener->received;
  const InsideLibrary inside;
  return handler(sender.c_str(), instance.c_str(), main, userData);
}

const std::vector<Parcel> &Ports::sentOn(const std::string &instance, rpc_port_port_type_e type) {
  return port(instance, type)->sent;
}

FakePort *Ports::port(const std::string &instance, rpc_port_port_type_e type) {
  std::unique_ptr<FakePort> &found = _ports[{instance, type}];
  if (found == nullptr) {
    found = std::make_unique<FakePort>(FakePort{instance, type, {}, {}});
  }
  return found.get();
}

FakeStub *Ports::createStub(const std::string &portName) {
  _stubs.push_back(
      std::make_unique<FakeStub>(FakeStub{++_stubsCreated, portName, false, {}, {}, {}}));
  return _stubs.back().get();
}

bool Ports::destroyStub(rpc_port_stub_h handle) {
  return moveTo(_stubs, _destroyedStubs, handle);
}

FakeStub *Ports::findStub(rpc_port_stub_h handle) const {
  return findIn(_stubs, handle);
}

FakePort *Ports::findPort(rpc_port_h handle) const {
  for (const auto &[key, found] : _ports) {
    if (found.get() == handle) {
      return found.get();
    }
  }
  return nullptr;
}

FakeParcel *Ports::createParcel(Parcel fields) {
  _parcels.push_back(
      std::make_unique<FakeParcel>(FakeParcel{++_parcelsCreated, std::move(fields), 0}));
  return _parcels.back().get();
}

bool Ports::destroyParcel(rpc_port_parcel_h handle) {
  return moveTo(_parcels, _destroyedParcels, handle);
}

FakeParcel *Ports::findParcel(rpc_port_parcel_h handle) const {
  return findIn(_parcels, handle);
}

FakeStub *Ports::stub() const {
  return _stubs.empty() ? nullptr : _stubs.back().get();
}

} // namespace fake
