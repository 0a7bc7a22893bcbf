// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Listener.h"

#include "assistant/launch/sockets.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace norix::assistant::cli {
namespace {

namespace fs = std::filesystem;

using launch::Descriptor;

constexpr const char *kPortName = "message";

std::string absolutePathIn(const char *variable) {
  const char *value = std::getenv(variable);
  return value != nullptr && *value == '/' ? value : "";
}

// Through a descriptor of its folder, the path of a socket may be of any length.
sockaddr_un addressIn(int folder) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  (void)std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder,
                      kPortName);
  return address;
}

// EAGAIN says that somebody listens and does not accept.
bool connects(int socket, const sockaddr_un &address) {
  return connect(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0
         || errno == EAGAIN;
}

} // namespace

fs::path portsFolder() {
  if (const std::string runtime = absolutePathIn("XDG_RUNTIME_DIR"); !runtime.empty()) {
    return runtime + "/rpc-port";
  }
  const std::string temporary = absolutePathIn("TMPDIR");
  return (temporary.empty() ? "/tmp" : temporary) + "/rpc-port-" + std::to_string(geteuid());
}

std::optional<Listener> findListener(const std::string &appId) {
  const Descriptor folder(
      open((portsFolder() / appId).c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  const Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  struct stat status = {};
  const bool isMine =
      folder.get() >= 0 && fstat(folder.get(), &status) == 0 && status.st_uid == geteuid();
  if (!isMine || !connects(socket.get(), addressIn(folder.get()))) {
    return std::nullopt;
  }
  // The peer is who called listen(); it need not have accepted. The file came with the listening.
  const bool isThere = fstatat(folder.get(), kPortName, &status, AT_SYMLINK_NOFOLLOW) == 0;
  return Listener{appId, launch::peerOf(socket), isThere ? status.st_mtime : 0};
}

std::vector<Listener> findListeners() {
  std::vector<Listener> found;
  std::error_code unreadable;
  for (const auto &entry : fs::directory_iterator(portsFolder(), unreadable)) {
    if (const auto listener = findListener(entry.path().filename().string())) {
      found.push_back(*listener);
    }
  }
  std::sort(found.begin(), found.end(),
            [](const Listener &a, const Listener &b) { return a.appId < b.appId; });
  return found;
}

} // namespace norix::assistant::cli
