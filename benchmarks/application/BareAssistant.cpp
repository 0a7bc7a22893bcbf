// SPDX-License-Identifier: Apache-2.0
#include "application/BareAssistant.h"

#include "assistant/client/Delegate.h"
#include "assistant/client/Request.h"
#include "support/sockets.h"

#include <fcntl.h>
#include <rpc-port-parcel.h>
#include <socket/PortSocket.h>
#include <sys/socket.h>
#include <wire/Hello.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace benchmarks {

namespace {

namespace rpc = platform::rpc_port;

// The message ids of the interface "message".
constexpr int kSetCb = 2;
constexpr int kSend = 4;

// With the rest of the request, 200 bytes on the wire.
constexpr std::size_t kParametersSize = 44;
// A response without its text is shorter than this.
constexpr std::size_t kLongestEnvelope = 300;
constexpr std::size_t kUsualFrame = 4096;

using Bytes = std::vector<char>;

rpc::Descriptor connectTo(const std::string &appId) {
  rpc::ConnectedSocket socket = rpc::connectToPort(appId, "message");
  if (socket.outcome != rpc::ConnectOutcome::Connected) {
    throw std::runtime_error("no connection to " + appId);
  }
  (void)fcntl(socket.descriptor.get(), F_SETFL, 0); // From now on its calls wait.
  return std::move(socket.descriptor);
}

Bytes frameOf(rpc::FrameKind kind, const void *payload, std::size_t size) {
  const rpc::FramePrefix prefix{static_cast<std::uint32_t>(size), kind};
  Bytes frame(sizeof prefix + size);
  std::memcpy(frame.data(), &prefix, sizeof prefix);
  std::memcpy(frame.data() + sizeof prefix, payload, size);
  return frame;
}

/** @param write Writes what follows the message id. */
template <typename Write>
Bytes parcelFrame(int messageId, Write write) {
  rpc_port_parcel_h handle = nullptr;
  rpc_port_parcel_create(&handle);
  rpc_port_parcel_write_int32(handle, messageId);
  write(handle);
  void *bytes = nullptr;
  unsigned int size = 0;
  rpc_port_parcel_get_raw(handle, &bytes, &size);
  Bytes frame = frameOf(rpc::FrameKind::Parcel, bytes, size);
  rpc_port_parcel_destroy(handle);
  return frame;
}

void send(const rpc::Descriptor &socket, const Bytes &frame) {
  if (!support::sendAll(socket.get(), frame.data(), frame.size())) {
    throw std::runtime_error("the application has gone");
  }
}

Bytes encodeRequest(const std::string &actionId) {
  const norix::assistant::Request request =
      norix::assistant::actionRequest(actionId, std::string(kParametersSize, 'p'));
  const norix::assistant::BundlePtr content = request.toBundle();
  return parcelFrame(kSend, [&content](rpc_port_parcel_h parcel) {
    rpc_port_parcel_write_bundle(parcel, content.get());
  });
}

} // namespace

BareAssistant::BareAssistant(const std::string &appId)
    : _main(connectTo(appId)), _callback(connectTo(appId)) {
  const std::string instance = rpc::makeInstance();
  sayHello(_main, RPC_PORT_PORT_MAIN, instance);
  sayHello(_callback, RPC_PORT_PORT_CALLBACK, instance);
  receiveFrame(_main);
  receiveFrame(_callback);
  registerDelegate();
}

void BareAssistant::sayHello(const rpc::Descriptor &socket, int portType,
                             const std::string &instance) {
  const auto type = static_cast<rpc_port_port_type_e>(portType);
  const rpc::Buffer hello = rpc::encodeHello({type, instance, "com.valtren.tizen.norix"});
  send(socket, frameOf(rpc::FrameKind::Hello, hello.data(), hello.size()));
}

void BareAssistant::registerDelegate() {
  const norix::assistant::Delegate delegate;
  send(_main, parcelFrame(kSetCb, [&delegate](rpc_port_parcel_h parcel) {
         rpc_port_parcel_write_int32(parcel, delegate.id);
         rpc_port_parcel_write_int32(parcel, delegate.seqId);
         rpc_port_parcel_write_bool(parcel, delegate.once);
       }));
  receiveFrame(_main);
}

/// In as few calls as bytes that arrive in one piece need: frames do not follow on each other's
/// heels.
std::size_t BareAssistant::receiveFrame(const rpc::Descriptor &socket) {
  rpc::FramePrefix prefix{};
  _received.resize(std::max(_received.size(), kUsualFrame));
  std::size_t size = 0;
  for (std::size_t wanted = sizeof prefix; size < wanted;) {
    const ssize_t received =
        recv(socket.get(), _received.data() + size, _received.size() - size, 0);
    if (received <= 0) {
      throw std::runtime_error("the application has gone");
    }
    size += static_cast<std::size_t>(received);
    if (size >= sizeof prefix) {
      std::memcpy(&prefix, _received.data(), sizeof prefix);
      wanted = sizeof prefix + prefix.size;
      _received.resize(std::max(_received.size(), wanted));
    }
  }
  return prefix.size;
}

void BareAssistant::exchange(const std::string &actionId, std::size_t answerSize, int count,
                             Samples &samples) {
  const Bytes request = encodeRequest(actionId);
  auto start = Samples::Clock::now();
  for (int i = 0; i < count; ++i) {
    send(_main, request);
    const std::size_t size = receiveFrame(_callback);
    if (size <= answerSize || size > answerSize + kLongestEnvelope) {
      throw std::runtime_error("not the answer that was asked for: " + std::to_string(size)
                               + " bytes");
    }
    start = samples.addSince(start);
  }
}

} // namespace benchmarks
