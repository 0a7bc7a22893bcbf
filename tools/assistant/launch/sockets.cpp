// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/sockets.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace norix::assistant::launch {
namespace {

// The path of a socket has room for 107 bytes.
constexpr std::size_t kLongestName = 48;
constexpr int kBacklog = 64;

std::string folderPath() {
  const char *const runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && *runtime == '/') {
    return std::string(runtime) + "/norix-assistant";
  }
  const char *const temporary = std::getenv("TMPDIR");
  const std::string base = temporary != nullptr && *temporary == '/' ? temporary : "/tmp";
  return base + "/norix-assistant-" + std::to_string(geteuid());
}

// FNV-1a: tells two long ids apart that begin alike.
std::string hashOf(const std::string &text) {
  std::uint32_t hash = 2166136261U;
  for (const char byte : text) {
    hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
  }
  return std::to_string(hash);
}

std::optional<sockaddr_un> addressOf(const std::string &path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    return std::nullopt;
  }
  std::memcpy(address.sun_path, path.c_str(), path.size());
  return address;
}

std::string ownFolder() {
  std::string path = folderPath();
  struct stat status = {};
  const bool isThere = lstat(path.c_str(), &status) == 0;
  const bool isOwn = S_ISDIR(status.st_mode) && status.st_uid == geteuid();
  if (isThere && (!isOwn || (status.st_mode & 077) != 0)) {
    throw std::runtime_error("'" + path + "' is not a folder of this user alone; remove it");
  }
  return path;
}

Descriptor makeSocket() {
  return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

} // namespace

Descriptor::~Descriptor() {
  if (_number >= 0) {
    close(_number);
  }
}

void makeRuntimeFolder() {
  const std::string path = folderPath();
  if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
    throw std::runtime_error("cannot make '" + path + "': " + std::strerror(errno)
                             + "; set XDG_RUNTIME_DIR to a folder of your own");
  }
}

std::string runtimePath(const std::string &appId, const std::string &suffix) {
  const bool isShort = appId.size() <= kLongestName;
  const std::string name =
      isShort ? appId : appId.substr(0, kLongestName - 12) + "-" + hashOf(appId);
  return ownFolder() + "/" + name + suffix;
}

Descriptor listenAt(const std::string &path) {
  const std::optional<sockaddr_un> address = addressOf(path);
  if (!address || connectTo(path)) {
    return Descriptor();
  }
  makeRuntimeFolder();
  unlink(path.c_str());
  Descriptor listening = makeSocket();
  const auto *const raw = reinterpret_cast<const sockaddr *>(&*address);
  if (!listening || bind(listening.get(), raw, sizeof *address) != 0
      || listen(listening.get(), kBacklog) != 0) {
    return Descriptor();
  }
  return listening;
}

Descriptor connectTo(const std::string &path) {
  const std::optional<sockaddr_un> address = addressOf(path);
  Descriptor connection = makeSocket();
  const auto *const raw = reinterpret_cast<const sockaddr *>(&*address);
  if (!address || !connection || connect(connection.get(), raw, sizeof *address) != 0) {
    return Descriptor();
  }
  return connection;
}

Descriptor acceptFrom(const Descriptor &listening) {
  Descriptor connection(accept4(listening.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (!connection || getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0
      || peer.uid != geteuid()) {
    return Descriptor();
  }
  return connection;
}

int peerOf(const Descriptor &connection) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  const bool isKnown = getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
  return isKnown ? peer.pid : 0;
}

} // namespace norix::assistant::launch
