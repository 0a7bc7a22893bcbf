// SPDX-License-Identifier: Apache-2.0
#include "NorixImpl/messageService.h"

#include "NorixImpl/NorixImpl.h"
#include "common/exceptions.h"
#include "common/log.h"
#include "norix.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <string_view>
#include <utility>

namespace norix {

namespace {

// The results of SetCB and UnsetCB, which are sent to the proxy.
constexpr int kDone = 0;
constexpr int kRefused = -1;

// Owner of a file descriptor.
class Descriptor {
public:
  explicit Descriptor(int number) : _number(number) {}
  Descriptor(const Descriptor &) = delete;
  Descriptor &operator=(const Descriptor &) = delete;
  ~Descriptor() {
    if (_number >= 0) {
      close(_number);
    }
  }

  int number() const { return _number; }

private:
  int _number;
};

std::string allowListPath() {
  const std::string_view folder = NORIX_PROXY_ALLOW_APPID_LIST_PATH;
  const std::string_view name = NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME;
  std::string path;
  path.reserve(folder.size() + name.size());
  return path.append(folder).append(name);
}

// Adds the lines of a file, split at '\n' only, up to its end or to a read error. A last line
// without '\n' counts at the end of the file, but not before a read error.
void readLines(const Descriptor &file, std::unordered_set<std::string> &lines) {
  std::array<char, 1024> block;
  std::string line;
  ssize_t size = 0;
  while ((size = TEMP_FAILURE_RETRY(read(file.number(), block.data(), block.size()))) > 0) {
    for (const char byte : std::string_view(block.data(), static_cast<std::size_t>(size))) {
      if (byte != '\n') {
        line.append(&byte, 1); // And not push_back(), which would be one more import.
        continue;
      }
      lines.insert(line);
      line.clear();
    }
  }
  if (size == 0 && !line.empty()) {
    lines.insert(line);
  }
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

// SetCB, UnsetCB and Send must not throw: they are called from the platform's event dispatch.
int messageService::SetCB(std::unique_ptr<ResponseCB> responseCb) try {
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
  norixImpl->_responseCbMap[GetSender()] = std::move(responseCb);
  return kDone;
} catch (...) {
  logStoppedException();
  return kRefused;
}

int messageService::UnsetCB() try {
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
} catch (...) {
  logStoppedException();
  return kRefused;
}

void messageService::Send(Bundle request) try {
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
} catch (...) {
  // Also one that the application's callback has thrown: the request counts as handed over.
  logStoppedException();
}

bool messageService::isPermittedSender() {
  if (_allowedAppIds.empty()) {
    const std::string path = allowListPath();
    NORIX_LOG_FORMAT("res_path : %s", path.c_str());
    // A descriptor and not a stream: the list is looked for at every request, most devices have
    // none, and a stream costs more than the rest of the check.
    const Descriptor list(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (list.number() < 0) {
      NORIX_LOG("allow_list.dat file not present, allowing all apps");
      return true;
    }
    // Each line exactly as it is: "id\r" is another id than "id", and an empty line is the empty
    // id.
    readLines(list, _allowedAppIds);
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
