// SPDX-License-Identifier: Apache-2.0
#include "support/Process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char **environ;

namespace support {
namespace {

constexpr int kCannotStart = 127;

[[noreturn]] void fail(const std::string &what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

struct Pipe {
  FileDescriptor read;
  FileDescriptor write;
};

Pipe makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    fail("pipe");
  }
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

std::vector<std::string> environmentWith(const Process::Environment &additions) {
  std::vector<std::string> merged;
  for (char **entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (additions.count(text.substr(0, text.find('='))) == 0) {
      merged.push_back(text);
    }
  }
  for (const auto &[name, value] : additions) {
    merged.emplace_back(name).append("=").append(value);
  }
  return merged;
}

std::vector<char *> pointersTo(std::vector<std::string> &texts) {
  std::vector<char *> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string &text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

bool waitReadable(int descriptor, double seconds) {
  constexpr double kMilliseconds = 1000.0;
  pollfd watched{descriptor, POLLIN, 0};
  int ready = 0;
  do {
    ready = poll(&watched, 1, static_cast<int>(seconds * kMilliseconds));
  } while (ready < 0 && errno == EINTR);
  return ready > 0;
}

} // namespace

Process Process::withVariables(const std::vector<std::string> &command,
                               std::vector<std::string> variables) {
  Process process;
  process.start(command, std::move(variables));
  return process;
}

Process::Process(const std::vector<std::string> &command, const Environment &additions) {
  start(command, environmentWith(additions));
}

void Process::start(std::vector<std::string> arguments, std::vector<std::string> environment) {
  _name = arguments.at(0);
  _errors = FileDescriptor(memfd_create("errors", MFD_CLOEXEC));
  Pipe input = makePipe();
  Pipe output = makePipe();
  const std::vector<char *> argv = pointersTo(arguments);
  const std::vector<char *> envp = pointersTo(environment);

  // Ecore watches children too, and fails when one ends while Ecore shuts down.
  std::signal(SIGCHLD, SIG_DFL);
  _pid = fork();
  if (_pid == 0) {
    std::signal(SIGPIPE, SIG_DFL);    // Ecore ignores it, and a program inherits that.
    prctl(PR_SET_PDEATHSIG, SIGKILL); // The test runner may kill a test that hangs.
    dup2(input.read.get(), STDIN_FILENO);
    dup2(output.write.get(), STDOUT_FILENO);
    dup2(_errors.get(), STDERR_FILENO);
    execvpe(argv[0], argv.data(), envp.data());
    _exit(kCannotStart);
  }
  if (_pid < 0) {
    fail("fork");
  }

  _ended = FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, _pid, 0)));
  _input = std::move(input.write);
  _output = std::move(output.read);
}

Process::Process(Process &&other) noexcept
    : _name(std::move(other._name)), _input(std::move(other._input)),
      _output(std::move(other._output)), _errors(std::move(other._errors)),
      _ended(std::move(other._ended)), _pid(std::exchange(other._pid, -1)),
      _unread(std::move(other._unread)) {}

Process::~Process() {
  if (_pid < 0) {
    return;
  }
  kill(_pid, SIGKILL);
  waitpid(_pid, nullptr, 0);
}

void Process::writeLine(const std::string &line) {
  const std::string text = line + "\n";
  const auto before = std::signal(SIGPIPE, SIG_IGN); // A process that has ended is an error here.
  const ssize_t written = write(_input.get(), text.data(), text.size());
  std::signal(SIGPIPE, before);
  if (written != static_cast<ssize_t>(text.size())) {
    fail("cannot write to " + _name);
  }
}

void Process::closeInput() {
  _input.close();
}

bool Process::readMore(double seconds) {
  if (!waitReadable(_output.get(), seconds)) {
    throw std::runtime_error("nothing more from " + _name + "; it wrote to standard error:\n"
                             + errors());
  }
  std::array<char, 4096> chunk{};
  const ssize_t count = read(_output.get(), chunk.data(), chunk.size());
  if (count < 0) {
    fail("cannot read from " + _name);
  }
  _unread.append(chunk.data(), static_cast<size_t>(count));
  return count > 0;
}

std::string Process::readLine(double seconds) {
  size_t end = 0;
  while ((end = _unread.find('\n')) == std::string::npos) {
    if (!readMore(seconds)) {
      throw std::runtime_error(_name + " closed its output; it wrote to standard error:\n"
                               + errors());
    }
  }
  std::string line = _unread.substr(0, end);
  _unread.erase(0, end + 1);
  return line;
}

void Process::awaitLine(const std::string &line) {
  while (("\n" + _unread).find("\n" + line + "\n") == std::string::npos) {
    if (!readMore(kBound)) {
      throw std::runtime_error(_name + " ended without the line '" + line + "'; it wrote:\n"
                               + _unread + errors());
    }
  }
}

std::string Process::readAll(double seconds) {
  while (readMore(seconds)) {
  }
  return std::exchange(_unread, {});
}

std::string Process::errors() const {
  struct stat status = {};
  fstat(_errors.get(), &status);
  std::string text(static_cast<size_t>(status.st_size), '\0');
  const ssize_t count = pread(_errors.get(), text.data(), text.size(), 0);
  text.resize(count < 0 ? 0 : static_cast<size_t>(count));
  return text;
}

bool Process::isRunning() const {
  return !waitReadable(_ended.get(), 0);
}

long Process::openFiles() const {
  const std::filesystem::directory_iterator files("/proc/" + std::to_string(_pid) + "/fd");
  return std::distance(begin(files), end(files));
}

void Process::signal(int number) const {
  kill(_pid, number);
}

void Process::stop() const {
  signal(SIGSTOP);
  awaitStop();
}

void Process::awaitStop() const {
  int status = 0;
  if (waitpid(_pid, &status, WUNTRACED) != _pid || !WIFSTOPPED(status)) {
    throw std::runtime_error(_name + " has ended instead of stopping");
  }
}

bool Process::ends(double seconds) const {
  if (_ended.get() >= 0) {
    return waitReadable(_ended.get(), seconds);
  }
  // Under valgrind, which has no descriptors of processes: ask again and again.
  for (int tries = static_cast<int>(seconds * 100); tries > 0; --tries) {
    siginfo_t ended = {};
    if (waitid(P_PID, static_cast<id_t>(_pid), &ended, WEXITED | WNOHANG | WNOWAIT) == 0
        && ended.si_pid == _pid) {
      return true;
    }
    poll(nullptr, 0, 10);
  }
  return false;
}

int Process::wait(double seconds) {
  if (!ends(seconds)) {
    throw std::runtime_error(_name + " does not end; it wrote to standard error:\n" + errors());
  }
  return awaitEnd(std::exchange(_pid, -1));
}

Outcome Process::finish() {
  closeInput();
  Outcome outcome;
  outcome.pid = _pid;
  outcome.out = readAll();
  outcome.status = wait();
  outcome.err = errors();
  return outcome;
}

int awaitEnd(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) {
      fail("waitpid");
    }
  }
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace support
