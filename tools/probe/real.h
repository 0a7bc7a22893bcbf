// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_REAL_H
#define NORIX_PROBE_REAL_H

#include <atomic>
#include <cstdint>

namespace norix::probe {

/// The functions that the probe stands in front of, as the application would have called them.

/// Finds a function behind the probe: in the libraries loaded after it or, for one that the
/// application opened with dlopen(), in the library of that name. Ends the process with a message
/// when there is none, as the dynamic linker would.
void *findReal(const char *function, const char *library);

/// A real function, looked up when it is first called.
template <typename Function>
class Real {
public:
  constexpr Real(const char *function, const char *library)
      : _function(function), _library(library) {}

  Function *get() {
    Function *found = _found.load(std::memory_order_relaxed);
    if (found == nullptr) {
      found = reinterpret_cast<Function *>(findReal(_function, _library));
      _found.store(found, std::memory_order_relaxed);
    }
    return found;
  }

  template <typename... Arguments>
  decltype(auto) operator()(Arguments... arguments) {
    return get()(arguments...);
  }

private:
  const char *_function;
  const char *_library;
  std::atomic<Function *> _found{nullptr};
};

/// Whether an address is in the code of libnorix.so. Also true when the library is not to be found,
/// because it was linked statically: its calls must never be taken for the application's.
bool isInLibrary(const void *address);

/// Where libnorix.so is loaded, if it is behind the probe; 0 otherwise.
std::uintptr_t norixLibraryBase();

inline constexpr const char *kNorixLibrary = "libnorix.so.1";
inline constexpr const char *kBundleLibrary = "libbundle.so.0";
inline constexpr const char *kDlogLibrary = "libdlog.so.0";

} // namespace norix::probe

/// Defines real::NAME, the function behind the probe's function of that name.
#define NORIX_PROBE_REAL(name, library)                                                            \
  namespace real {                                                                                 \
  norix::probe::Real<decltype(::name)> name(#name, library);                                       \
  }

/// What the application sees instead of the real function.
#define NORIX_PROBE_EXPORT extern "C" __attribute__((visibility("default")))

#endif
