// SPDX-License-Identifier: Apache-2.0
#include "fakes/Platform.h"

#include "fakes/Heap.h"

#include <memory>

namespace fake {

namespace {

std::unique_ptr<Platform> &current() {
  static auto platform = std::make_unique<Platform>();
  return platform;
}

} // namespace

Platform &platform() {
  return *current();
}

void resetPlatform() {
  const OutsideLibrary outside;
  Heap::instance().forgetAll();
  current() = std::make_unique<Platform>();
}

void PlatformCall::record(const char *function, const std::vector<std::string> &arguments) {
  std::string list;
  for (const std::string &argument : arguments) {
    list += (list.empty() ? "" : ", ") + argument;
  }
  platform().journal.add(function, list);
  _failure = platform().faults.next(function);
  if (auto hook = platform().during.extract(function)) {
    hook.mapped()();
  }
}

} // namespace fake
