// SPDX-License-Identifier: Apache-2.0
//
// In the place of sdBus.cpp where its packages are missing.
#include "peers/Peer.h"

namespace benchmarks {

PeerKind messageBus() {
  return {"sd-bus through dbus-daemon", nullptr, nullptr, "libsystemd-dev and dbus-daemon"};
}

PeerKind busPeerToPeer() {
  return {"sd-bus peer to peer", nullptr, nullptr, "libsystemd-dev and dbus-daemon"};
}

} // namespace benchmarks
