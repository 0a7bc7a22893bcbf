// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_RPC_PORT_SUPPORT_PROGRAM_H
#define TESTS_RPC_PORT_SUPPORT_PROGRAM_H

#include "support/Process.h"

#include <optional>
#include <string>
#include <vector>

namespace rpc_test {

/// The other side in a process of its own: programs/peer.cpp. "stub" listens as org.example.peer
/// and sends each text back on the port it came from and on the callback port. "proxy" connects to
/// this process, sends "hello" and waits.
class Program {
public:
  static constexpr const char *kAppId = "org.example.peer";

  /// Starts it, and waits until it says on its standard output that it is ready.
  /// @param launcher A command that starts it, such as unshare with its options; may be empty.
  explicit Program(const std::string &role, std::vector<std::string> launcher = {});

  bool isReady() const { return _isReady; }
  void kill() { _process.reset(); }
  void stop(int signal) { _process->signal(signal); }

private:
  std::optional<support::Process> _process;
  bool _isReady = false;
};

} // namespace rpc_test

#endif
