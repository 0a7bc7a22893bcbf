// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_CONNECTION_H
#define NORIX_PROBE_CONNECTION_H

#include <cstddef>
#include <sys/stat.h>

namespace norix::probe {

/// A non-blocking Unix stream socket to the reader of the events.
///
/// The application may close any descriptor, and open a file that gets its number: every use checks
/// that the descriptor is still the socket that was opened here.
class Connection {
public:
  bool isOpen() const { return _descriptor >= 0; }

  /// @return whether the reader took the connection
  bool open(const char *path);

  /// Sends as much as the socket takes at once.
  /// @return how many bytes; 0 when it takes none now, or the connection is lost and closed
  std::size_t send(const char *bytes, std::size_t size);

  /// Closes the descriptor if it is still this socket.
  void close();

private:
  bool isStillOurs() const;

  int _descriptor = -1;
  dev_t _device = 0;
  ino_t _inode = 0;
};

} // namespace norix::probe

#endif
