// SPDX-License-Identifier: Apache-2.0
#include "probe/constantTexts.h"

#include "probe/real.h"

#include <link.h>

namespace norix::probe {

std::array<ConstantMemory, 2> constantMemory{};

namespace {

// The segments before the first one that can be written to: headers, code, constants.
ConstantMemory constantMemoryOf(const dl_phdr_info &object) {
  ConstantMemory memory;
  for (int at = 0; at < object.dlpi_phnum; ++at) {
    const auto &segment = object.dlpi_phdr[at];
    if (segment.p_type != PT_LOAD) {
      continue;
    }
    if ((segment.p_flags & PF_W) != 0) {
      break;
    }
    if (memory.begin == 0) {
      memory.begin = object.dlpi_addr + segment.p_vaddr;
    }
    memory.size = object.dlpi_addr + segment.p_vaddr + segment.p_memsz - memory.begin;
  }
  return memory;
}

// The program comes first.
int addObject(dl_phdr_info *object, std::size_t /*size*/, void *data) {
  auto &isFirst = *static_cast<bool *>(data);
  if (isFirst) {
    constantMemory[0] = constantMemoryOf(*object);
    isFirst = false;
  } else if (object->dlpi_addr == norixLibraryBase()) {
    constantMemory[1] = constantMemoryOf(*object);
  }
  return 0;
}

// Before anything of the program runs: what is there now is never unloaded.
__attribute__((constructor)) void findConstantMemory() {
  bool isFirst = true;
  dl_iterate_phdr(addObject, &isFirst);
}

} // namespace

} // namespace norix::probe
