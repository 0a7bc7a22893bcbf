// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_RPC_PORT_SOCKET_DESCRIPTOR_H
#define PLATFORM_RPC_PORT_SOCKET_DESCRIPTOR_H

#include "common/LinkedList.h"

namespace platform::rpc_port {

/**
 * @brief Owns a file descriptor, in this process only.
 * @details A child that was forked off closes its copies before it does anything else; otherwise a
 *          connection would outlive the application for as long as any child of it runs. In the
 *          child, every Descriptor is then empty.
 */
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
