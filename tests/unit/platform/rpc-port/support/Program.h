// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_RPC_PORT_SUPPORT_PROGRAM_H
#define TESTS_RPC_PORT_SUPPORT_PROGRAM_H

#include <string>
#include <sys/types.h>
#include <vector>

namespace rpc_test {

/**
 * @brief The other side in a process of its own: programs/peer.cpp.
 * @details "stub" listens as org.example.peer and sends each text back on the port it came from and
 *          on the callback port. "proxy" connects to this process, sends "hello" and waits.
 */
class Program {
public:
  static constexpr const char *kAppId = "org.example.peer";

  /// Starts it, and waits until it says on its standard output that it is ready.
  /// @param launcher A command that starts it, such as unshare with its options; may be empty.
  explicit Program(const std::string &role, std::vector<std::string> launcher = {});
  ~Program();
  Program(const Program &) = delete;
  Program &operator=(const Program &) = delete;

  bool isReady() const { return _isReady; }
  void kill();
  void stop(int signal);

private:
  pid_t _process = -1;
  bool _isReady = false;
};

} // namespace rpc_test

#endif
