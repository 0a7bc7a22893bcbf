// SPDX-License-Identifier: Apache-2.0
#include "integration/tool/Terminal.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace integration {
namespace {

[[noreturn]] void become(std::vector<std::string> command,
                         const support::Process::Environment &additions) {
  std::signal(SIGINT, SIG_DFL);
  setenv("TERM", "xterm", 1);
  for (const auto &[name, value] : additions) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  std::vector<char *> arguments;
  for (std::string &argument : command) {
    arguments.push_back(argument.data());
  }
  arguments.push_back(nullptr);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

} // namespace

Terminal::Terminal(const std::vector<std::string> &command,
                   const support::Process::Environment &additions) {
  int terminal = -1;
  winsize size = {40, 160, 0, 0};
  _pid = forkpty(&terminal, nullptr, nullptr, &size);
  if (_pid == 0) {
    become(command, additions);
  }
  if (_pid < 0) {
    throw std::runtime_error("there is no terminal to be had");
  }
  _terminal = support::FileDescriptor(terminal);
}

Terminal::~Terminal() {
  kill(_pid, SIGKILL);
  waitpid(_pid, nullptr, 0);
}

void Terminal::type(const std::string &keys) const {
  if (write(_terminal.get(), keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
    throw std::runtime_error("cannot type");
  }
}

bool Terminal::readMore() {
  pollfd watched{_terminal.get(), POLLIN, 0};
  if (poll(&watched, 1, static_cast<int>(support::kBound * 1000)) <= 0) {
    throw std::runtime_error("nothing more on the terminal; it shows:\n" + _unread);
  }
  std::array<char, 4096> chunk{};
  const ssize_t count = read(_terminal.get(), chunk.data(), chunk.size());
  _unread.append(chunk.data(), count < 0 ? 0 : static_cast<size_t>(count));
  return count > 0; // The end of a terminal is an error.
}

std::string Terminal::readUntil(const std::string &text) {
  while (_unread.find(text) == std::string::npos) {
    if (!readMore()) {
      throw std::runtime_error("no '" + text + "' on the terminal; it shows:\n" + _unread);
    }
  }
  const size_t end = _unread.find(text) + text.size();
  std::string read = _unread.substr(0, end);
  _unread.erase(0, end);
  return read;
}

std::string Terminal::readAll() {
  while (readMore()) {
  }
  return std::exchange(_unread, {});
}

} // namespace integration
