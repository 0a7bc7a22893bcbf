// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_MESSAGE_MESSAGE_H
#define NORIX_MESSAGE_MESSAGE_H

#include "message/Bundle.h"

#include <rpc-port-parcel.h>
#include <rpc-port.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace rpc_port::message::stub {

/// The stub of the interface "message": one service per connected proxy, made by the factory; every
/// parcel of a proxy becomes a call of its service. All of it runs on the main loop.
class message {
public:
  /// Base of every delegate. A delegate is a callback object of the proxy; on this side it is known
  /// by three values.
  class CallbackBase {
  public:
    CallbackBase(int delegateId, bool once);
    virtual ~CallbackBase() = default;

    int GetId() const { return id; }
    int GetSeqId() const { return seqId; }
    bool IsOnce() const { return once; }

    /// The delegate as text: id, two colons, sequence id.
    std::string GetTag() const;

  private:
    friend rpc_port_parcel_h operator<<(rpc_port_parcel_h parcel, const CallbackBase &callback);
    friend rpc_port_parcel_h operator>>(rpc_port_parcel_h parcel, CallbackBase &callback);

    /// Counts every delegate ever made; never reset.
    static std::atomic<int> seq_num_;

    int id;
    int seqId;
    bool once;
  };

  class ServiceBase;

  /// The delegate that a proxy registers to receive responses.
  class ResponseCB : public CallbackBase {
  public:
    ResponseCB(rpc_port_h callbackPort, std::weak_ptr<ServiceBase> registeringService);

    /// Sends the text and the bundle to the proxy. Throws NotConnectedSocketException when the
    /// connection is gone, InvalidCallbackException when a once-only delegate was used before. A
    /// failed send is not reported: its connection is about to end, which the proxy notices.
    void Invoke(std::string text, Bundle response);

  private:
    rpc_port_h callback_port;
    /// Weak: a stored delegate must not keep the service of a closed connection alive.
    std::weak_ptr<ServiceBase> service;
    bool valid = true;
  };

  /// The operations that a connected proxy can call. They must not throw: they are called from the
  /// platform's event dispatch.
  class ServiceBase {
  public:
    class Factory {
    public:
      /// Never null.
      virtual std::unique_ptr<ServiceBase> CreateService(std::string sender,
                                                         std::string instance) = 0;

    protected:
      /// Not virtual: the shared pointer given to Listen is made from the concrete factory, whose
      /// destructor its deleter calls.
      ~Factory() = default;
    };

    virtual ~ServiceBase() = default;
    virtual void OnCreate() = 0;
    virtual void OnTerminate() = 0;
    virtual int SetCB(std::unique_ptr<ResponseCB> responseCb) = 0;
    virtual int UnsetCB() = 0;
    virtual void Send(Bundle request) = 0;

    const std::string &GetSender() const { return sender; }
    const std::string &GetInstance() const { return instance; }

  protected:
    ServiceBase(std::string senderAppId, std::string instanceId);

  private:
    std::string sender;
    std::string instance;
  };

  /// Throws InvalidIOException when the platform gives no stub.
  message();
  ~message();
  message(const message &) = delete;
  message &operator=(const message &) = delete;

  /// Starts accepting proxies. Throws InvalidIOException for the two codes that count as failure.
  void Listen(std::shared_ptr<ServiceBase::Factory> factory);

private:
  static void OnConnectedCB(const char *sender, const char *instance, void *userData);
  static void OnDisconnectedCB(const char *sender, const char *instance, void *userData);
  static int OnReceivedCB(const char *sender, const char *instance, rpc_port_h port,
                          void *userData);

  /// A service and the hash of its instance. With hundreds of proxies connected, comparing
  /// instances without a hash took a tenth of the application's time. In a vector, because a search
  /// reads all of them: in a list each would be a memory access of its own.
  struct Connected {
    std::size_t instanceHash;
    std::shared_ptr<ServiceBase> service;
  };

  std::shared_ptr<ServiceBase> findService(std::string_view instance) const;

  rpc_port_stub_h stub_handle = nullptr;
  std::shared_ptr<ServiceBase::Factory> service_factory;
  std::vector<Connected> services; // In the order in which they connected.
};

/// A delegate in a parcel: id, sequence id, once.
rpc_port_parcel_h operator<<(rpc_port_parcel_h parcel, const message::CallbackBase &callback);
rpc_port_parcel_h operator>>(rpc_port_parcel_h parcel, message::CallbackBase &callback);

} // namespace rpc_port::message::stub

#endif
