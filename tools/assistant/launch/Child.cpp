// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/Child.h"

#include "assistant/launch/sockets.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norix::assistant::launch {
namespace {

constexpr int kCannotExecute = 127;

// In the child, between fork and exec.
[[noreturn]] void become(const Target &target, const StartOptions &options, pid_t parent,
                         int report) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) {
    _exit(kCannotExecute); // It ended before it could be waited for.
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (options.mergesOutput) {
    dup2(STDERR_FILENO, STDOUT_FILENO);
  }
  for (const auto &[name, value] : options.environment) {
    setenv(name.c_str(), value.c_str(), 1);
  }

  std::vector<std::string> arguments = options.arguments;
  arguments.insert(arguments.begin(), target.program.string());
  std::vector<char *> raw;
  raw.reserve(arguments.size() + 1);
  for (std::string &argument : arguments) {
    raw.push_back(argument.data());
  }
  raw.push_back(nullptr);
  execv(target.program.c_str(), raw.data());
  const int error = errno;
  (void)!write(report, &error, sizeof error);
  _exit(kCannotExecute);
}

} // namespace

pid_t start(const Target &target, const StartOptions &options) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw LaunchError(std::string("cannot make a pipe: ") + std::strerror(errno));
  }
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) {
    throw LaunchError(std::string("cannot start a process: ") + std::strerror(errno));
  }
  if (child == 0) {
    become(target, options, parent, writing.get());
  }

  writing = Descriptor();
  int error = 0;
  if (read(reading.get(), &error, sizeof error) == sizeof error) {
    waitpid(child, nullptr, 0);
    throw LaunchError("'" + target.program.string() + "' does not start: " + std::strerror(error));
  }
  return child;
}

} // namespace norix::assistant::launch
