// SPDX-License-Identifier: Apache-2.0
#include "peers/Peer.h"

#include <stdexcept>

namespace benchmarks {

std::vector<std::string> serveCommand(const std::string &kind,
                                      const std::vector<std::string> &arguments) {
  std::vector<std::string> command{"/proc/self/exe", "--serve", kind};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

void checkAnswer(std::size_t expected, std::size_t actual) {
  if (expected != actual) {
    throw std::runtime_error("an answer of " + std::to_string(actual) + " bytes instead of "
                             + std::to_string(expected));
  }
}

} // namespace benchmarks
