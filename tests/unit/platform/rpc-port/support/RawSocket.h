// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_RPC_PORT_SUPPORT_RAW_SOCKET_H
#define TESTS_RPC_PORT_SUPPORT_RAW_SOCKET_H

#include <cstdint>
#include <memory>
#include <string>

namespace rpc_test {

/// The numbers of the wire, written down a second time on purpose.
enum Kind : std::uint32_t { kHello = 1, kWelcome = 2, kParcel = 3, kRaw = 4 };

/// A frame as it travels.
std::string frame(std::uint32_t kind, const std::string &payload);

/// A hello's payload.
std::string hello(std::uint16_t type, const std::string &instance, const std::string &sender);

/// A parcel's payload, with a header of zeros and these fields.
std::string parcel(const std::string &fields);

/// A parcel's text field.
std::string text(const std::string &characters);

/// A number's bytes.
template <typename Number>
std::string bytes(Number number) {
  return {reinterpret_cast<const char *>(&number), sizeof number};
}

/// A plain socket that says what it is told to say.
class RawSocket {
public:
  explicit RawSocket(int descriptor) : _descriptor(descriptor) {}
  ~RawSocket() { close(); }
  RawSocket(const RawSocket &) = delete;
  RawSocket &operator=(const RawSocket &) = delete;

  /// @return A socket connected to the path, or nullptr.
  static std::unique_ptr<RawSocket> connectTo(const std::string &path);
  /// @return A socket that listens there, or nullptr.
  static std::unique_ptr<RawSocket> listenAt(const std::string &path);
  /// @return The next of those who connected, or nullptr: nobody has.
  std::unique_ptr<RawSocket> accept();

  bool send(const std::string &what);
  /// @return What has arrived, without waiting.
  std::string receive();
  /// Whether the other side has closed and everything before that has been received.
  bool hasEnded();
  void close();
  int descriptor() const { return _descriptor; }

private:
  int _descriptor;
};

} // namespace rpc_test

#endif
