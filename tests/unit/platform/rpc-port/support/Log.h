// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_RPC_PORT_SUPPORT_LOG_H
#define TESTS_RPC_PORT_SUPPORT_LOG_H

#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <utility>

namespace rpc_test {

/// Captures standard error, where the log goes, in a file, as long as it lives.
class Log {
public:
  explicit Log(std::string path) : _path(std::move(path)), _before(dup(STDERR_FILENO)) {
    const int file = open(_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(file, STDERR_FILENO);
    close(file);
  }
  ~Log() {
    dup2(_before, STDERR_FILENO);
    close(_before);
  }
  Log(const Log &) = delete;
  Log &operator=(const Log &) = delete;

  std::string text() const {
    std::ostringstream text;
    text << std::ifstream(_path).rdbuf();
    return text.str();
  }

private:
  std::string _path;
  int _before;
};

} // namespace rpc_test

#endif
