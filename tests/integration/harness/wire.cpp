// SPDX-License-Identifier: Apache-2.0
#include "integration/harness/wire.h"

#include "assistant/client/Delegate.h"

#include <rpc-port-parcel.h>

#include <cstdlib>

namespace integration {
namespace {

using norix::assistant::BundlePtr;
using norix::assistant::Delegate;

constexpr int kResult = 0;
constexpr int kCallback = 1;
constexpr int kSetCb = 2;
constexpr int kSend = 4;

// The frame of a parcel that a function writes.
template <typename Writer>
std::string parcelFrame(Writer write) {
  rpc_port_parcel_h parcel = nullptr;
  rpc_port_parcel_create(&parcel);
  write(parcel);
  void *bytes = nullptr;
  unsigned int size = 0;
  rpc_port_parcel_get_raw(parcel, &bytes, &size);
  std::string frame = support::frame(support::kParcel, {static_cast<const char *>(bytes), size});
  rpc_port_parcel_destroy(parcel);
  return frame;
}

void writeDelegate(rpc_port_parcel_h parcel) {
  const Delegate delegate;
  rpc_port_parcel_write_int32(parcel, delegate.id);
  rpc_port_parcel_write_int32(parcel, delegate.seqId);
  rpc_port_parcel_write_bool(parcel, delegate.once);
}

} // namespace

std::string helloFrame(rpc_port_port_type_e type, const std::string &instance,
                       const std::string &sender) {
  return support::frame(support::kHello,
                        support::hello(static_cast<std::uint16_t>(type), instance, sender));
}

std::string welcomeFrame() {
  return support::frame(support::kWelcome, "RPCP" + support::bytes(std::uint32_t{1}));
}

std::string setCallbackFrame() {
  return parcelFrame([](rpc_port_parcel_h parcel) {
    rpc_port_parcel_write_int32(parcel, kSetCb);
    writeDelegate(parcel);
  });
}

std::string resultFrame() {
  return parcelFrame([](rpc_port_parcel_h parcel) {
    rpc_port_parcel_write_int32(parcel, kResult);
    rpc_port_parcel_write_int32(parcel, 0);
  });
}

std::string requestFrame(const norix::assistant::Request &request) {
  return parcelFrame([&request](rpc_port_parcel_h parcel) {
    const BundlePtr content = request.toBundle();
    rpc_port_parcel_write_int32(parcel, kSend);
    rpc_port_parcel_write_bundle(parcel, content.get());
  });
}

std::string answerFrame(const std::string &appId, std::uint64_t requestId,
                        const std::string &text) {
  return parcelFrame([&](rpc_port_parcel_h parcel) {
    const BundlePtr content(bundle_create());
    bundle_add_str(content.get(), "status_code", "ACTION_EXECUTION_SUCCESS");
    bundle_add_str(content.get(), "result", text.c_str());
    bundle_add_byte(content.get(), "requestId", &requestId, sizeof requestId);
    rpc_port_parcel_write_int32(parcel, kCallback);
    writeDelegate(parcel);
    rpc_port_parcel_write_string(parcel, appId.c_str());
    rpc_port_parcel_write_bundle(parcel, content.get());
  });
}

std::string socketPath(const std::string &appId, const std::string &port) {
  const char *runtime = std::getenv("XDG_RUNTIME_DIR");
  return std::string(runtime == nullptr ? "" : runtime) + "/rpc-port/" + appId + "/" + port;
}

} // namespace integration
