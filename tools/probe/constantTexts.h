// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_CONSTANTTEXTS_H
#define NORIX_PROBE_CONSTANTTEXTS_H

#include <array>
#include <cstdint>

namespace norix::probe {

/// Read-only memory that stays where it is until the process ends: of the program and of
/// libnorix.so, if they were there from the start. What is loaded later may be unloaded.
struct ConstantMemory {
  std::uintptr_t begin = 0;
  std::uintptr_t size = 0;
};

/// Found when the probe is loaded, and never changed after that.
extern std::array<ConstantMemory, 2> constantMemory;

/// Whether a text can be read at any later time. False for null.
inline bool staysAsItIs(const char *text) {
  const auto at = reinterpret_cast<std::uintptr_t>(text);
  return at - constantMemory[0].begin < constantMemory[0].size
         || at - constantMemory[1].begin < constantMemory[1].size;
}

} // namespace norix::probe

#endif
