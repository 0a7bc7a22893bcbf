// SPDX-License-Identifier: Apache-2.0
#include "Child.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace {

[[noreturn]] void runChild(int standardError, const Environment &environment,
                           const std::function<int()> &function) {
  unsetenv("DLOG_FILTER");
  unsetenv("DLOG_FILE");
  for (const auto &[name, value] : environment) {
    setenv(name.c_str(), value.c_str(), 1);
  }
  dup2(standardError, STDERR_FILENO);
  close(standardError);
  _exit(function());
}

std::vector<std::string> readMessages(int socket) {
  std::vector<std::string> messages;
  std::array<char, 1 << 16> buffer{};
  ssize_t size = 0;
  while ((size = recv(socket, buffer.data(), buffer.size(), 0)) > 0
         || (size < 0 && errno == EINTR)) {
    if (size > 0) {
      messages.emplace_back(buffer.data(), static_cast<std::size_t>(size));
    }
  }
  return messages;
}

int statusOf(pid_t pid) {
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace

std::string Outcome::all() const {
  std::string text;
  for (const std::string &write : writes) {
    text += write;
  }
  return text;
}

Outcome inChild(const Environment &environment, const std::function<int()> &function) {
  int ends[2];
  // A socket that keeps what each write wrote apart.
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }

  Outcome outcome;
  outcome.pid = fork();
  if (outcome.pid == 0) {
    close(ends[0]);
    runChild(ends[1], environment, function);
  }
  close(ends[1]);
  outcome.writes = readMessages(ends[0]);
  close(ends[0]);
  outcome.status = statusOf(outcome.pid);
  return outcome;
}

std::string withoutTimeAndPid(const std::string &line) {
  static const std::regex kHeader(
      R"((^|\n)\d\d-\d\d \d\d:\d\d:\d\d\.\d\d\d ([A-Z]/[^(]*)\( *\d+\))");
  return std::regex_replace(line, kHeader, "$1$2");
}

TemporaryFolder::TemporaryFolder() {
  std::string path = (std::filesystem::temp_directory_path() / "dlog_test_XXXXXX").string();
  if (mkdtemp(path.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), path);
  }
  _path = path;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(_path, ignored);
}

std::string contentOf(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
