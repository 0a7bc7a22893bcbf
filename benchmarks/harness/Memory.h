// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_HARNESS_MEMORY_H
#define NORIX_BENCHMARKS_HARNESS_MEMORY_H

#include <nlohmann/json.hpp>
#include <string>
#include <sys/types.h>

namespace benchmarks {

/** @brief What a process holds of the machine's memory, in KiB. */
struct Memory {
  long resident = 0;
  /** Written to by this process alone. */
  long privateDirty = 0;
};

Memory memoryOf(pid_t process);
/** @brief The same of the mappings of one file alone, such as "libnorix.so". */
Memory memoryOf(pid_t process, const std::string &file);

nlohmann::json toJson(const Memory &memory);

} // namespace benchmarks

#endif
