// SPDX-License-Identifier: Apache-2.0
#include "soak/Footprint.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace soak {
namespace {

namespace fs = std::filesystem;

long readMemory(const std::string &process) {
  std::ifstream status(process + "/status");
  std::string word;
  long memory = 0;
  while (status >> word) {
    if (word == "RssAnon:" && status >> memory) {
      return memory;
    }
  }
  throw std::runtime_error("no RssAnon in " + process + "/status");
}

} // namespace

Footprint Footprint::of(pid_t process) {
  const std::string folder = "/proc/" + std::to_string(process);
  const fs::directory_iterator descriptors(folder + "/fd");
  return {std::distance(begin(descriptors), end(descriptors)), readMemory(folder)};
}

std::vector<std::string> filesBelow(const std::string &folder) {
  std::vector<std::string> files;
  for (const auto &entry : fs::recursive_directory_iterator(folder)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

} // namespace soak
