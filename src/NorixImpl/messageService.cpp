// SPDX-License-Identifier: Apache-2.0
#include "NorixImpl/messageService.h"

#include "NorixImpl/NorixImpl.h"
#include "common/log.h"
#include "norix.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <utility>

namespace norix {

namespace {

// What the proxy finds in the answer to SetCB and UnsetCB.
constexpr int kDone = 0;
constexpr int kRefused = -1;

// Null for a list that cannot be opened. That is found out before a stream is made: hardly any
// device has the list, every request asks for it, and a stream costs as much as all the rest.
std::unique_ptr<std::istream> openList(const std::string &path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) {
    return nullptr;
  }
  close(descriptor);
  auto stream = std::make_unique<std::ifstream>(path);
  return stream->is_open() ? std::move(stream) : nullptr;
}

} // namespace

std::unique_ptr<messageService::ServiceBase>
messageService::Factory::CreateService(std::string sender, std::string instance) {
  NORIX_LOG_FORMAT("Call stub CreateService Sender:%s", sender.c_str());
  return std::make_unique<messageService>(std::move(sender), std::move(instance));
}

messageService::messageService(std::string senderAppId, std::string instanceId)
    : ServiceBase(std::move(senderAppId), std::move(instanceId)) {}

void messageService::OnCreate() {
  NORIX_LOG("Call stub OnCreate");
}

// The sender's delegate stays: NorixImpl keeps it until the sender replaces or drops it.
void messageService::OnTerminate() {
  NORIX_LOG("Call stub OnTerminate");
}

int messageService::SetCB(std::unique_ptr<ResponseCB> responseCb) {
  NORIX_LOG("Call stub SetCB");
  if (!isPermittedSender()) {
    return kRefused;
  }
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return kRefused;
  }
  norixImpl->_responseCbMap.erase(GetSender());
  norixImpl->_responseCbMap.emplace(GetSender(), std::move(responseCb));
  return kDone;
}

int messageService::UnsetCB() {
  NORIX_LOG("Call stub UnsetCB");
  if (!isPermittedSender()) {
    return kRefused;
  }
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return kRefused;
  }
  norixImpl->_responseCbMap.erase(GetSender());
  return kDone;
}

void messageService::Send(Bundle request) {
  NORIX_LOG("Call stub Send");
  if (!isPermittedSender()) {
    NORIX_LOG("source app is not allowed to send app sdk requests");
    return;
  }
  NORIX_LOG_FORMAT("Call stub Sender %s", GetSender().c_str());
  NorixImpl *const norixImpl = NorixImpl::getInstance();
  if (norixImpl == nullptr) {
    NORIX_LOG("NorixImpl instance is null");
    return;
  }
  norixImpl->executeRequest(GetSender().c_str(), request.GetHandle());
}

bool messageService::isPermittedSender() {
  if (_allowedAppIds.empty()) {
    const std::string path =
        std::string(NORIX_PROXY_ALLOW_APPID_LIST_PATH) + NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME;
    NORIX_LOG_FORMAT("res_path : %s", path.c_str());
    const std::unique_ptr<std::istream> list = openList(path);
    if (list == nullptr) {
      NORIX_LOG("allow_list.dat file not present, allowing all apps");
      return true;
    }
    // Exactly as it stands: a line that ends in '\r' names no application, an empty one is an id.
    for (std::string line; std::getline(*list, line);) {
      _allowedAppIds.insert(line);
    }
  }
  // The platform's ids are C texts, so the sender counts up to its first NUL.
  const char *const senderAppId = GetSender().c_str();
  if (_allowedAppIds.count(senderAppId) != 0) {
    return true;
  }
  NORIX_LOG_FORMAT("%s is not permitted app id", senderAppId);
  return false;
}

} // namespace norix
