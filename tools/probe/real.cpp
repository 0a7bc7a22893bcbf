// SPDX-License-Identifier: Apache-2.0
#include "probe/real.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <link.h>
#include <utility>

namespace norix::probe {
namespace {

struct CodeRange {
  std::uintptr_t base = 0;
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
};

int findCode(dl_phdr_info *object, std::size_t /*size*/, void *data) {
  auto *const range = static_cast<CodeRange *>(data);
  if (object->dlpi_addr != range->base) {
    return 0;
  }
  for (int at = 0; at < object->dlpi_phnum; ++at) {
    const auto &segment = object->dlpi_phdr[at];
    if (segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0) {
      range->begin = object->dlpi_addr + segment.p_vaddr;
      range->end = range->begin + segment.p_memsz;
    }
  }
  return 1;
}

void *lookUp(const char *function, const char *library) {
  if (void *const next = dlsym(RTLD_NEXT, function)) {
    return next;
  }
  // Opened by the application for itself alone.
  void *const opened = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
  return opened != nullptr ? dlsym(opened, function) : nullptr;
}

CodeRange findLibrary() {
  CodeRange range;
  Dl_info info = {};
  void *const known = lookUp("norix_initialize", kNorixLibrary);
  if (known != nullptr && dladdr(known, &info) != 0) {
    range.base = reinterpret_cast<std::uintptr_t>(info.dli_fbase);
    dl_iterate_phdr(findCode, &range);
  }
  return range;
}

} // namespace

std::uintptr_t norixLibraryBase() {
  Dl_info info = {};
  void *const known = dlsym(RTLD_NEXT, "norix_initialize");
  return known != nullptr && dladdr(known, &info) != 0
             ? reinterpret_cast<std::uintptr_t>(info.dli_fbase)
             : 0;
}

void *findReal(const char *function, const char *library) {
  if (void *const found = lookUp(function, library)) {
    return found;
  }
  std::fprintf(stderr, "libnorix-probe: undefined symbol: %s; link the application with %s\n",
               function, library);
  std::abort();
}

bool isInLibrary(const void *address) {
  static const CodeRange library = findLibrary();
  const auto at = reinterpret_cast<std::uintptr_t>(address);
  return library.end == 0 || (at >= library.begin && at < library.end);
}

} // namespace norix::probe
