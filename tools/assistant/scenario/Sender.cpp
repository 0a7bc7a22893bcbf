// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Sender.h"

#include "assistant/scenario/SenderProcess.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norix::assistant::scenario {
namespace {

[[noreturn]] void become(const SenderSetup &setup, const std::string &appId, Frames frames) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  setenv("AUL_APPID", setup.appId.c_str(), 1);
  setenv("DLOG_FILTER", "*:S", 0);
  try {
    SenderProcess(appId, std::move(frames)).run();
  } catch (const std::exception &) {
    _exit(EXIT_FAILURE); // The other side sees the end of the connection.
  }
  _exit(EXIT_SUCCESS);
}

} // namespace

void Sender::start() {
  if (isRunning()) {
    return;
  }
  auto [here, there] = Frames::pair();
  const pid_t process = fork();
  if (process < 0) {
    throw std::runtime_error("cannot start a process for the sender '" + _setup.name + "'");
  }
  if (process == 0) {
    here = Frames();
    become(_setup, _appId, std::move(there));
  }
  _frames = std::move(here);
  _process = process;
}

std::vector<Frames::Json> Sender::receive() {
  return isRunning() ? _frames.receive() : std::vector<Frames::Json>();
}

void Sender::kill() {
  if (!isRunning()) {
    return;
  }
  ::kill(_process, SIGKILL);
  waitpid(_process, nullptr, 0);
  _process = 0;
  _isStopped = false;
  _frames = Frames();
}

void Sender::stop() {
  if (isRunning() && !_isStopped) {
    ::kill(_process, SIGSTOP);
    waitpid(_process, nullptr, WUNTRACED);
    _isStopped = true;
  }
}

void Sender::resume() {
  if (_isStopped) {
    ::kill(_process, SIGCONT);
    _isStopped = false;
  }
}

} // namespace norix::assistant::scenario
