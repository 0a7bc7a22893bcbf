// SPDX-License-Identifier: Apache-2.0
#include "message/message.h"

#include "common/log.h"
#include "common/text.h"
#include "message/Exception.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <string_view>
#include <utility>

// One log line of the channel: its tag, the file, the function and the line. NORIX_LOG says why
// there are two macros.
#define STUB_LOG(text)                                                                             \
  dlog_print(DLOG_ERROR, "RPC_PORT_STUB", "%s: %s(%d) > " text, kFileName, __func__, __LINE__)
#define STUB_LOG_FORMAT(format, ...)                                                               \
  dlog_print(DLOG_ERROR, "RPC_PORT_STUB", "%s: %s(%d) > " format, kFileName, __func__, __LINE__,   \
             __VA_ARGS__)

namespace rpc_port::message::stub {

namespace {

constexpr const char *kFileName = norix::baseName(__FILE__);
constexpr const char *kPortName = "message";
// Returned to the platform for a request that was not processed.
constexpr int kNotServed = -1;

// The first field of every parcel.
enum MethodId {
  Result = 0,
  Callback = 1,
  SetCB = 2,
  UnsetCB = 3,
  Send = 4,
};

// The kinds of delegate.
enum DelegateId {
  ResponseCB = 1,
};

std::size_t hashOf(std::string_view instance) {
  return std::hash<std::string_view>()(instance);
}

// Owner of a parcel.
class Parcel {
public:
  explicit Parcel(rpc_port_parcel_h handle) : _handle(handle) {}
  Parcel(const Parcel &) = delete;
  Parcel &operator=(const Parcel &) = delete;
  ~Parcel() { rpc_port_parcel_destroy(_handle); }

  // A new, empty parcel; null without memory. The platform's calls refuse a null parcel.
  static rpc_port_parcel_h create() {
    rpc_port_parcel_h handle = nullptr;
    rpc_port_parcel_create(&handle);
    return handle;
  }

  rpc_port_parcel_h get() const { return _handle; }

private:
  rpc_port_parcel_h _handle;
};

void sendResult(const Parcel &parcel, int result, rpc_port_h port) {
  rpc_port_parcel_write_int32(parcel.get(), MethodId::Result);
  rpc_port_parcel_write_int32(parcel.get(), result);
  rpc_port_parcel_send(parcel.get(), port);
}

} // namespace

std::atomic<int> message::CallbackBase::seq_num_{0};

message::CallbackBase::CallbackBase(int delegateId, bool invokedOnce)
    : id(delegateId), seqId(seq_num_.fetch_add(1)), once(invokedOnce) {}

std::string message::CallbackBase::GetTag() const {
  std::array<char, sizeof "-2147483648::-2147483648"> tag = {};
  (void)std::snprintf(tag.data(), tag.size(), "%d::%d", id, seqId);
  return tag.data();
}

rpc_port_parcel_h operator<<(rpc_port_parcel_h parcel, const message::CallbackBase &callback) {
  rpc_port_parcel_write_int32(parcel, callback.id);
  rpc_port_parcel_write_int32(parcel, callback.seqId);
  rpc_port_parcel_write_bool(parcel, callback.once);
  return parcel;
}

rpc_port_parcel_h operator>>(rpc_port_parcel_h parcel, message::CallbackBase &callback) {
  rpc_port_parcel_read_int32(parcel, &callback.id);
  rpc_port_parcel_read_int32(parcel, &callback.seqId);
  rpc_port_parcel_read_bool(parcel, &callback.once);
  return parcel;
}

message::ResponseCB::ResponseCB(rpc_port_h callbackPort,
                                std::weak_ptr<ServiceBase> registeringService)
    : CallbackBase(DelegateId::ResponseCB, false), callback_port(callbackPort),
      service(std::move(registeringService)) {}

void message::ResponseCB::Invoke(std::string text, Bundle response) {
  if (callback_port == nullptr || service.expired()) {
    throw NotConnectedSocketException();
  }
  if (IsOnce() && !valid) {
    throw InvalidCallbackException();
  }

  const Parcel parcel(Parcel::create());
  rpc_port_parcel_write_int32(parcel.get(), MethodId::Callback);
  parcel.get() << *this;
  rpc_port_parcel_write_string(parcel.get(), text.c_str());
  rpc_port_parcel_write_bundle(parcel.get(), response.GetHandle());
  rpc_port_parcel_send(parcel.get(), callback_port);
  valid = false;
}

message::ServiceBase::ServiceBase(std::string senderAppId, std::string instanceId)
    : sender(std::move(senderAppId)), instance(std::move(instanceId)) {}

message::message() {
  if (rpc_port_stub_create(&stub_handle, kPortName) != RPC_PORT_ERROR_NONE) {
    STUB_LOG("Failed to create stub handle");
    throw InvalidIOException();
  }
  rpc_port_stub_add_connected_event_cb(stub_handle, OnConnectedCB, this);
  rpc_port_stub_add_disconnected_event_cb(stub_handle, OnDisconnectedCB, this);
  rpc_port_stub_add_received_event_cb(stub_handle, OnReceivedCB, this);
}

message::~message() {
  for (const Connected &connected : services) {
    connected.service->OnTerminate();
  }
  if (stub_handle != nullptr) {
    rpc_port_stub_destroy(stub_handle);
  }
  services.clear();
  service_factory.reset();
}

void message::Listen(std::shared_ptr<ServiceBase::Factory> factory) {
  service_factory = std::move(factory);
  const int result = rpc_port_stub_listen(stub_handle);
  if (result == RPC_PORT_ERROR_NONE) {
    return;
  }
  STUB_LOG("Failed to listen stub");
  // Only these two codes are failures: with other codes the platform was seen to listen.
  if (result == RPC_PORT_ERROR_INVALID_PARAMETER || result == RPC_PORT_ERROR_IO_ERROR) {
    throw InvalidIOException();
  }
}

std::shared_ptr<message::ServiceBase> message::findService(std::string_view instance) const {
  const std::size_t hash = hashOf(instance);
  for (const Connected &connected : services) {
    if (connected.instanceHash == hash && connected.service->GetInstance() == instance) {
      return connected.service;
    }
  }
  return nullptr;
}

void message::OnConnectedCB(const char *sender, const char *instance, void *userData) {
  auto *const self = static_cast<message *>(userData);
  std::string senderText = norix::textOf(sender);
  std::string instanceText = norix::textOf(instance);
  if (self->service_factory == nullptr) {
    STUB_LOG_FORMAT("No factory for service(%s)", instance);
    return;
  }
  std::shared_ptr<ServiceBase> created =
      self->service_factory->CreateService(std::move(senderText), std::move(instanceText));
  if (created == nullptr) {
    STUB_LOG_FORMAT("Failed to create service(%s)", instance);
    return;
  }
  created->OnCreate();
  const std::size_t instanceHash = hashOf(created->GetInstance());
  self->services.push_back({instanceHash, std::move(created)});
}

void message::OnDisconnectedCB(const char * /*sender*/, const char *instance, void *userData) {
  auto *const self = static_cast<message *>(userData);
  const std::shared_ptr<ServiceBase> connected = self->findService(instance);
  if (connected == nullptr) {
    return;
  }
  connected->OnTerminate();
  for (auto each = self->services.begin(); each != self->services.end();) {
    each = each->service == connected ? self->services.erase(each) : each + 1;
  }
  if (self->services.empty()) {
    std::vector<Connected>().swap(self->services); // clear() would keep the memory
  }
}

int message::OnReceivedCB(const char * /*sender*/, const char *instance, rpc_port_h port,
                          void *userData) {
  auto *const self = static_cast<message *>(userData);
  // Keeps the service alive to the end: a request may close its own connection or destroy the stub.
  const std::shared_ptr<ServiceBase> connected = self->findService(instance);
  if (connected == nullptr) {
    STUB_LOG_FORMAT("Failed to find $$ context(%s)", instance);
    return kNotServed;
  }

  rpc_port_h callbackPort = nullptr;
  if (rpc_port_stub_get_port(self->stub_handle, RPC_PORT_PORT_CALLBACK, instance, &callbackPort)
      != RPC_PORT_ERROR_NONE) {
    // The request is processed nevertheless; a delegate that it registers cannot be called back.
    STUB_LOG("Failed to get callback port");
  }
  rpc_port_parcel_h received = nullptr;
  const int created = rpc_port_parcel_create_from_port(&received, port);
  if (created != RPC_PORT_ERROR_NONE) {
    STUB_LOG("Failed to create parcel from port");
    return created;
  }

  const Parcel result(Parcel::create());
  const Parcel request(received);
  int methodId = kNotServed;
  rpc_port_parcel_read_int32(request.get(), &methodId);
  switch (methodId) {
  case MethodId::SetCB: {
    auto responseCb = std::make_unique<ResponseCB>(callbackPort, connected);
    request.get() >> *responseCb;
    // A statement of its own: a delegate that the service does not keep is destroyed at its end,
    // before the proxy gets the result.
    const int done = connected->SetCB(std::move(responseCb));
    sendResult(result, done, port);
    return 0;
  }
  case MethodId::UnsetCB:
    sendResult(result, connected->UnsetCB(), port);
    return 0;
  case MethodId::Send: {
    bundle *sent = nullptr;
    rpc_port_parcel_read_bundle(request.get(), &sent);
    const Bundle owned(sent);
    connected->Send(Bundle(bundle_dup(sent)));
    return 0;
  }
  default:
    STUB_LOG_FORMAT("Unknown command(%d)", methodId);
    return kNotServed;
  }
}

} // namespace rpc_port::message::stub
