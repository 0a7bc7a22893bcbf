// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_PARCEL_H
#define NORIX_ASSISTANT_CLIENT_PARCEL_H

#include "assistant/client/Answer.h"
#include "assistant/client/BundlePtr.h"

#include <rpc-port-parcel.h>

#include <string>

namespace norix::assistant {

/**
 * @brief One message of the interface "message" on its way out or in. Move-only.
 * @details Reading checks every field: Error with Failure::Malformed says which one is missing.
 */
class Parcel {
public:
  /** @brief An empty one, to be written and sent. */
  Parcel();
  /**
   * @brief The next one that arrived on a port.
   * @throw Error with Failure::Disconnected when the peer is gone
   */
  static Parcel receive(rpc_port_h port);

  Parcel(Parcel &&other) noexcept;
  Parcel &operator=(Parcel &&) = delete;
  ~Parcel();

  Parcel &writeInt(int value);
  Parcel &write(const Delegate &delegate);
  Parcel &write(bundle *content);
  /** @throw Error with Failure::Disconnected when the port does not take it */
  void send(rpc_port_h port);

  int readInt(const char *field);
  Delegate readDelegate();
  std::string readString(const char *field);
  BundlePtr readBundle(const char *field);

private:
  explicit Parcel(rpc_port_parcel_h handle) : _handle(handle) {}
  bool readBool(const char *field);

  rpc_port_parcel_h _handle = nullptr;
};

} // namespace norix::assistant

#endif
