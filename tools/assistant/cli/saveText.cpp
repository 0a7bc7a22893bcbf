// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/saveText.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace norix::assistant::cli {

void saveText(const std::string &file, const std::string &text) {
  std::ofstream stream(file, std::ios::trunc);
  stream << text << std::flush;
  if (!stream) {
    throw std::runtime_error("cannot write '" + file + "': " + std::strerror(errno));
  }
}

} // namespace norix::assistant::cli
