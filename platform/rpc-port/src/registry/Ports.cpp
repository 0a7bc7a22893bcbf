// SPDX-License-Identifier: Apache-2.0
#include "registry/Ports.h"

namespace platform::rpc_port {

PortTable &ports() {
  // Never destroyed: an application that exits without cleaning up leaves that to the kernel.
  static auto *const table = new PortTable;
  return *table;
}

} // namespace platform::rpc_port
