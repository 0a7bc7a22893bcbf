// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_TURN_H
#define NORIX_ASSISTANT_CLI_TURN_H

#include <functional>
#include <memory>
#include <string>

namespace norix::assistant::cli {

/// The right to be the one process that talks to an application under a sender id.
///
/// The library keeps one delegate per sender id: a second SetCB takes the first one's place, and
/// its answer away. So the commands of one application and one sender id take turns, with a lock on
/// a file beside the application's socket. The file is there while somebody has a turn or waits for
/// one; the kernel releases the lock of a process that ends.
class Turn {
public:
  /// Waits for the turn; the waiting is bounded by whoever watches the process.
  /// @param waiting  called when others come first
  Turn(const std::string &appId, const std::string &senderId, const std::function<void()> &waiting);
  /// Takes the turn if nobody has it; null otherwise.
  static std::unique_ptr<Turn> attempt(const std::string &appId, const std::string &senderId);
  ~Turn();
  Turn(const Turn &) = delete;
  Turn &operator=(const Turn &) = delete;

  /// Gives the turn to the next one. May be called twice, and from another thread at the end.
  void release();

private:
  Turn(const std::string &appId, const std::string &senderId);
  bool open();

  std::string _path;
  int _file = -1;
};

} // namespace norix::assistant::cli

#endif
