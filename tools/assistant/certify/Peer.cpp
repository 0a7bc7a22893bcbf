// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Peer.h"

#include <Ecore.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::certify {
namespace {

constexpr char kDone = 'y';
constexpr char kFailed = 'n';

} // namespace

Peer::Peer(const Step &step) {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::runtime_error(std::string("cannot make a pair of sockets: ") + std::strerror(errno));
  }
  _channel = launch::Descriptor(ends[0]);
  launch::Descriptor other(ends[1]);
  _process = fork();
  if (_process < 0) {
    throw std::runtime_error(std::string("cannot start a process: ") + std::strerror(errno));
  }
  if (_process == 0) {
    _channel = launch::Descriptor();
    serve(step, other.get());
  }
}

Peer::~Peer() {
  kill();
}

void Peer::serve(const Step &step, int channel) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  ecore_fork_reset();
  int number = 0;
  for (char told = 0; read(channel, &told, 1) == 1; ++number) {
    char result = kDone;
    try {
      step(number);
    } catch (const std::exception &) {
      result = kFailed;
    }
    if (write(channel, &result, 1) != 1) {
      break;
    }
  }
  _exit(0);
}

bool Peer::next() {
  char result = kFailed;
  return write(_channel.get(), &kDone, 1) == 1 && read(_channel.get(), &result, 1) == 1
         && result == kDone;
}

void Peer::kill() {
  const pid_t process = std::exchange(_process, -1);
  if (process > 0) {
    ::kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
  }
}

} // namespace norix::assistant::certify
