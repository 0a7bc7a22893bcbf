// SPDX-License-Identifier: Apache-2.0
#include "integration/app/ProcessCalls.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace integration {
namespace {

constexpr const char *kStay = "stay";

// Waits until the test has ended, without reading the input, which is the parent's.
[[noreturn]] void stayUntilTheTestEnds() {
  pollfd input = {STDIN_FILENO, 0, 0};
  (void)poll(&input, 1, -1);
  _exit(0);
}

// The child's code. It closes its end of the pipe when it runs.
[[noreturn]] void live(const std::string &ending, int running) {
  close(running);
  if (ending == kStay) {
    stayUntilTheTestEnds();
  }
  if (ending == "exit") {
    std::exit(0); // NOLINT(concurrency-mt-unsafe): what an application might do.
  }
  _exit(0);
}

// Forks a child that ends in this way, and waits until it has ended, or runs if it stays.
int forkChild(const std::string &ending) {
  std::array<int, 2> running{};
  if (pipe(running.data()) != 0) {
    return -1;
  }
  const pid_t child = fork();
  if (child == 0) {
    live(ending, running[1]);
  }
  close(running[1]);
  char none = 0;
  const bool runs = child > 0 && read(running[0], &none, 1) == 0;
  close(running[0]);
  if (runs && ending != kStay) {
    (void)waitpid(child, nullptr, 0);
  }
  return runs ? 0 : -1;
}

// The descriptors that an executed program inherits.
int countSocketsOfAProgram() {
  FILE *output = popen("ls -l /proc/self/fd", "re");
  if (output == nullptr) {
    throw std::runtime_error("cannot start a program");
  }
  std::array<char, 1024> line{};
  int lines = 0;
  int sockets = 0;
  while (std::fgets(line.data(), line.size(), output) != nullptr) {
    ++lines;
    sockets += std::strstr(line.data(), "socket:") != nullptr ? 1 : 0;
  }
  pclose(output);
  return lines > 0 ? sockets : -1;
}

// Sets how many descriptors the process may have from now on: only those it has, or as many as at
// first.
int limitDescriptors(bool toThoseItHas) {
  static const rlimit first = [] {
    rlimit limit = {};
    (void)getrlimit(RLIMIT_NOFILE, &limit);
    return limit;
  }();
  rlimit limit = first;
  if (toThoseItHas) {
    const int next = dup(STDIN_FILENO);
    close(next);
    limit.rlim_cur = static_cast<rlim_t>(next);
  }
  return setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace

std::optional<int> callProcess(const std::string &name, const nlohmann::json &command) {
  if (name == "fork") {
    return forkChild(command.at("ending"));
  }
  if (name == "countSocketsOfAProgram") {
    return countSocketsOfAProgram();
  }
  if (name == "limitDescriptors") {
    return limitDescriptors(command.at("toThoseItHas"));
  }
  if (name == "wallClock") {
    return static_cast<int>(std::time(nullptr) / 60);
  }
  return std::nullopt;
}

} // namespace integration
