// SPDX-License-Identifier: Apache-2.0
#include "support/inChild.h"

#include "support/Process.h"

#include <array>
#include <cerrno>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace support {
namespace {

[[noreturn]] void runChild(int standardError, const std::function<int()> &function) {
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

} // namespace

Outcome inChild(const std::function<int()> &function) {
  std::array<int, 2> ends{};
  // A socket that keeps the bytes of each write apart.
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "socketpair");
  }
  FileDescriptor reading(ends[0]);
  FileDescriptor writing(ends[1]);

  Outcome outcome;
  outcome.pid = fork();
  if (outcome.pid == 0) {
    reading.close();
    runChild(writing.get(), function);
  }
  writing.close();
  outcome.writes = readMessages(reading.get());
  for (const std::string &write : outcome.writes) {
    outcome.err += write;
  }
  outcome.status = awaitEnd(outcome.pid);
  return outcome;
}

} // namespace support
