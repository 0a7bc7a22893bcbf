// SPDX-License-Identifier: Apache-2.0
#include "harness/Memory.h"

#include <cctype>
#include <fstream>
#include <sstream>

namespace benchmarks {

namespace {

/** A mapping's first line begins with its address, in lower-case hexadecimal. */
bool isMapping(const std::string &line) {
  return !line.empty() && std::isxdigit(static_cast<unsigned char>(line.front())) != 0
         && std::isupper(static_cast<unsigned char>(line.front())) == 0;
}

} // namespace

Memory memoryOf(pid_t process, const std::string &file) {
  std::ifstream map("/proc/" + std::to_string(process) + "/smaps");
  Memory sum;
  bool isMeant = false;
  for (std::string line; std::getline(map, line);) {
    if (isMapping(line)) {
      isMeant = line.find(file) != std::string::npos;
      continue;
    }
    std::string name;
    long kibibytes = 0;
    std::istringstream(line) >> name >> kibibytes;
    if (isMeant && name == "Rss:") {
      sum.resident += kibibytes;
    } else if (isMeant && name == "Private_Dirty:") {
      sum.privateDirty += kibibytes;
    }
  }
  return sum;
}

Memory memoryOf(pid_t process) {
  return memoryOf(process, ""); // Part of every name.
}

nlohmann::json toJson(const Memory &memory) {
  return {{"resident", memory.resident}, {"privateDirty", memory.privateDirty}};
}

} // namespace benchmarks
