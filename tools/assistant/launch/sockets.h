// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_SOCKETS_H
#define NORIX_ASSISTANT_LAUNCH_SOCKETS_H

#include <string>
#include <utility>

namespace norix::assistant::launch {

/// Owner of a file descriptor.
class Descriptor {
public:
  explicit Descriptor(int number = -1) : _number(number) {}
  Descriptor(Descriptor &&other) noexcept : _number(std::exchange(other._number, -1)) {}
  Descriptor &operator=(Descriptor &&other) noexcept {
    std::swap(_number, other._number);
    return *this;
  }
  Descriptor(const Descriptor &) = delete;
  ~Descriptor();

  int get() const { return _number; }
  explicit operator bool() const { return _number >= 0; }

private:
  int _number;
};

/// A path for an application, short enough for a socket, in the user's own folder for what launched
/// applications and their watchers share: in $XDG_RUNTIME_DIR, else in the temporary folder. The
/// folder need not be there.
/// @throw std::runtime_error when the folder belongs to somebody else
std::string runtimePath(const std::string &appId, const std::string &suffix);

/// Makes that folder, mode 0700, when it is not there. Who only looks leaves nothing behind.
/// @throw std::runtime_error when it cannot be made
void makeRuntimeFolder();

/// A non-blocking Unix socket that listens at such a path, where a dead one is replaced. None when
/// another process listens there, or it cannot be made.
/// @throw std::runtime_error when the folder cannot be made
Descriptor listenAt(const std::string &path);

/// A non-blocking connection to a path. None when nobody listens.
Descriptor connectTo(const std::string &path);

/// Takes the next connection, of a process of this user. None when there is none.
Descriptor acceptFrom(const Descriptor &listening);

/// The process at the other end; 0 when it is not known.
int peerOf(const Descriptor &connection);

} // namespace norix::assistant::launch

#endif
