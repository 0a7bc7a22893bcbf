// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/Background.h"

#include "assistant/trace/visible.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <poll.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace norix::assistant::launch {
namespace {

constexpr int kTimeToListen = 30000;
constexpr int kTimeToStop = 10000;
constexpr int kSignalStatus = 128;

// The standard streams of a process without a terminal.
void redirect(const std::string &log) {
  const Descriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
  const Descriptor file(
      open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600));
  dup2(nothing.get(), STDIN_FILENO);
  dup2(file ? file.get() : nothing.get(), STDOUT_FILENO);
  dup2(file ? file.get() : nothing.get(), STDERR_FILENO);
}

// The process that stays with the application. It says on the pipe when the application listens.
[[noreturn]] void superviseInBackground(const Target &target, const LaunchOptions &options,
                                        const std::string &log, int announce, pid_t starter) {
  setsid();
  if (options.endsWithStarter) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    // It may be gone already.
    if (getppid() != starter) {
      _exit(0);
    }
  }
  int status = 0;
  redirect(log);
  try {
    Supervisor supervisor(target, options);
    supervisor.onListening([announce](pid_t application) {
      (void)!write(announce, &application, sizeof application);
      close(announce);
    });
    const Ending ending = supervisor.run();
    const bool isByItself = WIFEXITED(ending.status);
    const int code = isByItself ? WEXITSTATUS(ending.status) : WTERMSIG(ending.status);
    std::cerr << "norix-assistant: '" << target.id << "' ended with status "
              << (isByItself ? code : -code) << std::endl;
    status = isByItself ? code : kSignalStatus + code;
  } catch (const std::exception &error) {
    std::cerr << "norix-assistant: cannot launch: " << trace::visible(error.what()) << std::endl;
  }
  _exit(status);
}

std::string contentOf(const std::string &path) {
  std::ifstream file(path);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

} // namespace

LeftRunning launchInBackground(const Target &target, const LaunchOptions &options) {
  if (connectTo(watchPath(target.id))) {
    throw LaunchError("'" + target.id + "' was launched already and still runs; end it with "
                          + "norix-assistant launch --stop " + target.id,
                      "started-twice");
  }
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw LaunchError(std::string("cannot make a pipe: ") + std::strerror(errno));
  }
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  LeftRunning left;
  makeRuntimeFolder();
  left.log = runtimePath(target.id, ".log");
  const pid_t starter = getpid();
  const pid_t supervisor = fork();
  if (supervisor < 0) {
    throw LaunchError(std::string("cannot start a process: ") + std::strerror(errno));
  }
  if (supervisor == 0) {
    superviseInBackground(target, options, left.log, writing.get(), starter);
  }

  writing = Descriptor();
  pollfd polled = {reading.get(), POLLIN, 0};
  const bool isTold = poll(&polled, 1, kTimeToListen) == 1;
  if (isTold && read(reading.get(), &left.application, sizeof left.application) > 0) {
    left.supervisor = supervisor;
    return left;
  }
  kill(supervisor, SIGTERM);
  waitpid(supervisor, nullptr, 0);
  throw LaunchError("'" + target.id + "' "
                    + (isTold ? "ended before it listened" : "did not listen within 30 seconds")
                    + "; its output was:\n" + contentOf(left.log));
}

bool stopLaunched(const std::string &appId) {
  const Descriptor watch = connectTo(watchPath(appId));
  const int supervisor = watch ? peerOf(watch) : 0;
  if (supervisor <= 0) {
    return false;
  }
  kill(supervisor, SIGTERM);
  // The connection ends with the supervisor; the lines on it are of no interest.
  std::array<char, 4096> ignored;
  pollfd polled = {watch.get(), POLLIN, 0};
  while (poll(&polled, 1, kTimeToStop) == 1
         && read(watch.get(), ignored.data(), ignored.size()) > 0) {
  }
  return true;
}

} // namespace norix::assistant::launch
