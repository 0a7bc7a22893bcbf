// SPDX-License-Identifier: Apache-2.0
#include "Program.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace rpc_test {

namespace {

constexpr int kReadyMilliseconds = 30000;

bool waitForByte(int descriptor) {
  pollfd entry = {descriptor, POLLIN, 0};
  char byte = 0;
  return poll(&entry, 1, kReadyMilliseconds) == 1 && read(descriptor, &byte, 1) == 1;
}

} // namespace

Program::Program(const std::string &role, std::vector<std::string> launcher) {
  std::array<int, 2> pipe{};
  if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
    return;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
  launcher.emplace_back(RPC_PORT_PEER);
  launcher.push_back(role);
  std::vector<char *> arguments;
  for (std::string &argument : launcher) {
    arguments.push_back(argument.data());
  }
  arguments.push_back(nullptr);
  const int result =
      posix_spawnp(&_process, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(pipe[1]);
  _isReady = result == 0 && waitForByte(pipe[0]);
  close(pipe[0]);
}

Program::~Program() {
  kill();
}

void Program::kill() {
  if (_process > 0) {
    ::kill(_process, SIGKILL);
    waitpid(_process, nullptr, 0);
    _process = -1;
  }
}

void Program::stop(int signal) {
  ::kill(_process, signal);
}

} // namespace rpc_test
