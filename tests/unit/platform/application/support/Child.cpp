// SPDX-License-Identifier: Apache-2.0
#include "Child.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace {

constexpr int kMillisecondsToWait = 30000;

void check(int errorNumber, const char *call) {
  if (errorNumber != 0) {
    throw std::system_error(errorNumber, std::generic_category(), call);
  }
}

std::vector<char *> pointersTo(const std::vector<std::string> &texts) {
  std::vector<char *> pointers;
  pointers.reserve(texts.size() + 1);
  for (const std::string &text : texts) {
    pointers.push_back(const_cast<char *>(text.c_str())); // posix_spawn() leaves them alone.
  }
  pointers.push_back(nullptr);
  return pointers;
}

struct Pipe {
  Pipe() { check(pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno, "pipe2"); }

  std::array<int, 2> ends{};
};

// Reads once; the descriptor becomes -1 at the end of the stream.
void readInto(std::string &text, int &descriptor) {
  std::array<char, 4096> buffer{};
  const ssize_t count = read(descriptor, buffer.data(), buffer.size());
  if (count > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
    return;
  }
  close(descriptor);
  descriptor = -1;
}

} // namespace

Child::Child(const std::string &program, const std::vector<std::string> &arguments,
             const std::vector<std::string> &environment) {
  const Pipe out;
  const Pipe err;
  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());

  posix_spawn_file_actions_t actions;
  check(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
  posix_spawn_file_actions_adddup2(&actions, out.ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.ends[1], STDERR_FILENO);
  const int result = posix_spawn(&_pid, program.c_str(), &actions, nullptr,
                                 pointersTo(words).data(), pointersTo(environment).data());
  posix_spawn_file_actions_destroy(&actions);

  close(out.ends[1]);
  close(err.ends[1]);
  _out = out.ends[0];
  _err = err.ends[0];
  check(result, "posix_spawn");
}

Child::~Child() {
  for (const int descriptor : {_out, _err}) {
    if (descriptor >= 0) {
      close(descriptor);
    }
  }
  if (_pid > 0) {
    kill(_pid, SIGKILL);
    waitpid(_pid, nullptr, 0);
  }
}

void Child::awaitLine(const std::string &line) {
  while (("\n" + _outcome.out).find("\n" + line + "\n") == std::string::npos) {
    if (!readMore()) {
      throw std::runtime_error("the program ended without the line '" + line + "'; it wrote:\n"
                               + _outcome.out + _outcome.err);
    }
  }
}

void Child::send(int signal) const {
  check(kill(_pid, signal) == 0 ? 0 : errno, "kill");
}

Outcome Child::wait() {
  while (readMore()) {
  }
  int status = 0;
  check(waitpid(_pid, &status, 0) == _pid ? 0 : errno, "waitpid");
  _pid = -1;
  _outcome.status = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  return _outcome;
}

bool Child::readMore() {
  if (_out < 0 && _err < 0) {
    return false;
  }
  std::array<pollfd, 2> streams{{{_out, POLLIN, 0}, {_err, POLLIN, 0}}};
  if (poll(streams.data(), streams.size(), kMillisecondsToWait) <= 0) {
    throw std::runtime_error("the program neither wrote nor ended; it wrote:\n" + _outcome.out
                             + _outcome.err);
  }
  if (streams[0].revents != 0) {
    readInto(_outcome.out, _out);
  }
  if (streams[1].revents != 0) {
    readInto(_outcome.err, _err);
  }
  return true;
}
