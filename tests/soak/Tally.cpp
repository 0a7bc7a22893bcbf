// SPDX-License-Identifier: Apache-2.0
#include "soak/Tally.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

namespace soak {

Tally &Tally::in(const std::string &path) {
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  void *memory = MAP_FAILED;
  if (file >= 0 && ftruncate(file, sizeof(Tally)) == 0) {
    memory = mmap(nullptr, sizeof(Tally), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  }
  if (memory == MAP_FAILED) {
    throw std::runtime_error("cannot count in " + path + ": " + std::strerror(errno));
  }
  close(file);
  return *static_cast<Tally *>(memory);
}

} // namespace soak
