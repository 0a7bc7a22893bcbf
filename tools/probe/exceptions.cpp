// SPDX-License-Identifier: Apache-2.0
//
// Exceptions, as they are thrown: the only moment at which type and text are known without
// catching.
#include "probe/exceptions.h"

#include "probe/Record.h"
#include "probe/callbacks.h"
#include "probe/real.h"

#include <array>
#include <cstring>
#include <exception>
#include <typeinfo>

namespace norix::probe {
namespace {

constexpr const char *kRuntime = "libstdc++.so.6";

thread_local const char *lastType = nullptr;
thread_local std::array<char, 256> lastWhat{};

void rememberThrown(void *thrown, const std::type_info *type) {
  lastType = type->name();
  lastWhat[0] = '\0';
  // What a catch clause of std::exception & does: it may move the pointer to the base.
  void *object = thrown;
  if (typeid(std::exception).__do_catch(type, &object, 1)) {
    const char *const what = static_cast<const std::exception *>(object)->what();
    std::strncpy(lastWhat.data(), what != nullptr ? what : "", lastWhat.size() - 1);
  }
}

} // namespace

LastException lastException() {
  return {lastType, lastWhat[0] != '\0' ? lastWhat.data() : nullptr};
}

} // namespace norix::probe

using Throw = void(void *, std::type_info *, void (*)(void *));

NORIX_PROBE_EXPORT __attribute__((noreturn)) void __cxa_throw(void *thrown, std::type_info *type,
                                                              void (*destroy)(void *)) {
  static norix::probe::Real<Throw> real("__cxa_throw", norix::probe::kRuntime);
  const norix::probe::RunningCallback running = norix::probe::runningCallback();
  if (running.action != nullptr && running.thread == norix::probe::threadId()) {
    norix::probe::rememberThrown(thrown, type);
  }
  real(thrown, type, destroy);
  __builtin_unreachable();
}
