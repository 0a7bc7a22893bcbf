// SPDX-License-Identifier: Apache-2.0
#include "harness/CpuTime.h"

#include <cctype>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace benchmarks {

namespace {

constexpr double kNanosecondsPerSecond = 1e9;

/** The process's parent, from the fourth field; the second is a name in parentheses. */
pid_t parentOf(const std::filesystem::path &process) {
  std::string text;
  std::getline(std::ifstream(process / "stat"), text);
  const std::size_t behindName = text.rfind(')');
  constexpr std::size_t kToParent = 4;
  return behindName == std::string::npos ? 0 : std::atoi(text.c_str() + behindName + kToParent);
}

std::vector<pid_t> startedProcesses() {
  std::vector<pid_t> found;
  for (const auto &entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (std::isdigit(static_cast<unsigned char>(name.front())) != 0
        && parentOf(entry.path()) == getpid()) {
      found.push_back(std::stoi(name));
    }
  }
  return found;
}

} // namespace

CpuTime::CpuTime() : _clocks{CLOCK_PROCESS_CPUTIME_ID} {
  for (const pid_t process : startedProcesses()) {
    clockid_t clock{};
    if (clock_getcpuclockid(process, &clock) == 0) {
      _clocks.push_back(clock);
    }
  }
}

double CpuTime::now() const {
  double sum = 0.0;
  for (const clockid_t clock : _clocks) {
    timespec time{};
    (void)clock_gettime(clock, &time);
    sum += static_cast<double>(time.tv_sec) * kNanosecondsPerSecond
           + static_cast<double>(time.tv_nsec);
  }
  return sum;
}

} // namespace benchmarks
