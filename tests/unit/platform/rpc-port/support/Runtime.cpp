// SPDX-License-Identifier: Apache-2.0
#include "Runtime.h"

#include <Ecore.h>
#include <cstdlib>
#include <filesystem>
#include <iterator>

/// Asked by the leak checker, where there is one: EFL loses sight of some of its classes.
extern "C" __attribute__((visibility("default"))) const char *__lsan_default_suppressions() {
  return "leak:efl_class_new\n";
}

namespace rpc_test {

namespace {

constexpr double kBoundSeconds = 30.0;
constexpr double kTickSeconds = 0.005;
constexpr int kTurnsToSettle = 20;

/**
 * A bound for waiting. It ticks: an iteration of the loop first serves what is due and then blocks
 * until the next event, however long that takes. It goes with its scope, also when a handler's
 * exception ends that.
 */
class Bound {
public:
  Bound() : _timer(ecore_timer_add(kTickSeconds, &Bound::onTick, this)) {}
  ~Bound() { ecore_timer_del(_timer); }
  Bound(const Bound &) = delete;
  Bound &operator=(const Bound &) = delete;

  bool isReached() const { return _ticks * kTickSeconds >= kBoundSeconds; }

private:
  static Eina_Bool onTick(void *data) {
    ++static_cast<Bound *>(data)->_ticks;
    return ECORE_CALLBACK_RENEW;
  }

  Ecore_Timer *_timer;
  int _ticks = 0;
};

} // namespace

Runtime::Runtime() {
  setenv("XDG_RUNTIME_DIR", directory().c_str(), 1);
  setenv("AUL_APPID", kAppId, 1);
  ecore_app_no_system_modules();
  ecore_init();
}

Runtime::~Runtime() {
  ecore_shutdown();
}

std::string Runtime::socketPath(const std::string &port) const {
  return directory() + "/rpc-port/" + kAppId + "/" + port;
}

bool runUntil(const std::function<bool()> &condition) {
  const Bound bound;
  bool holds = condition();
  while (!holds && !bound.isReached()) {
    ecore_main_loop_iterate_may_block(1);
    holds = condition();
  }
  return holds;
}

void settle() {
  for (int turn = 0; turn < kTurnsToSettle; ++turn) {
    ecore_main_loop_iterate_may_block(0);
  }
}

std::size_t countDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

} // namespace rpc_test
