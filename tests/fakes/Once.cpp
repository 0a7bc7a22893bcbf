// SPDX-License-Identifier: Apache-2.0
#include "fakes/Once.h"

#include "fakes/Platform.h"

namespace fake {

Once::~Once() {
  for (pthread_once_t *flag : _flags) {
    *flag = PTHREAD_ONCE_INIT;
  }
}

} // namespace fake

extern "C" {

int __real_pthread_once(pthread_once_t *flag, void (*routine)());

int __wrap_pthread_once(pthread_once_t *flag, void (*routine)()) {
  if (fake::runningLibrary()) {
    const fake::OutsideLibrary outside;
    fake::platform().once.used(flag);
  }
  return __real_pthread_once(flag, routine);
}
}
