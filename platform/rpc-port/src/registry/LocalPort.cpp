// SPDX-License-Identifier: Apache-2.0
#include "registry/LocalPort.h"

namespace platform::rpc_port {

namespace {

LinkedList<LocalPort> ports;

} // namespace

LocalPort::LocalPort(IsAt isAt, Callback<void()> serve) : _isAt(isAt), _serve(serve) {
  ports.add(*this);
}

LocalPort::~LocalPort() {
  ports.remove(*this);
}

bool LocalPort::serve(const std::string &appId, const std::string &port) {
  for (LocalPort *one = ports.first(); one != nullptr; one = LinkedList<LocalPort>::after(*one)) {
    if (one->_isAt(appId, port)) {
      one->_serve(); // Handlers run here, and may destroy the port.
      return true;
    }
  }
  return false;
}

} // namespace platform::rpc_port
