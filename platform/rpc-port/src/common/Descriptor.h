// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_COMMON_DESCRIPTOR_H
#define PLATFORM_RPC_PORT_COMMON_DESCRIPTOR_H

#include "common/LinkedList.h"

namespace platform::rpc_port {

/// Owns a file descriptor, in this process only. A forked child closes its copies before fork()
/// returns, and every Descriptor is empty there; otherwise a connection would outlive the
/// application for as long as any child of it runs.
class Descriptor : public Linked<Descriptor> {
public:
  Descriptor() : Descriptor(-1) {}
  explicit Descriptor(int number);
  Descriptor(Descriptor &&other) noexcept;
  Descriptor &operator=(Descriptor &&other) noexcept;
  ~Descriptor();

  int get() const { return _number; }
  explicit operator bool() const { return _number >= 0; }
  void close();

private:
  friend class DescriptorList;

  void closeNumber();

  int _number;
};

} // namespace platform::rpc_port

#endif
