// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_NORIXIMPL_MESSAGESERVICE_H
#define NORIX_NORIXIMPL_MESSAGESERVICE_H

#include "message/message.h"

#include <memory>
#include <string>
#include <unordered_set>

namespace norix {

/// The service of a connected proxy: registers and drops its response delegate and passes its
/// requests on, if the allow list permits the sender.
class messageService : public rpc_port::message::stub::message::ServiceBase {
public:
  using Bundle = rpc_port::message::Bundle;
  using ResponseCB = rpc_port::message::stub::message::ResponseCB;

  class Factory final : public ServiceBase::Factory {
  public:
    std::unique_ptr<ServiceBase> CreateService(std::string sender, std::string instance) override;
  };

  messageService(std::string senderAppId, std::string instanceId);

  void OnCreate() override;
  void OnTerminate() override;
  int SetCB(std::unique_ptr<ResponseCB> responseCb) override;
  int UnsetCB() override;
  void Send(Bundle request) override;

  /// Whether the sender may use the library. Without the allow-list file, every sender may.
  bool isPermittedSender();

private:
  /// The lines of the allow-list file, unchanged. Read at each check until there is at least one
  /// line; later changes of the file count for new connections only.
  std::unordered_set<std::string> _allowedAppIds;
};

} // namespace norix

#endif
