// SPDX-License-Identifier: Apache-2.0
#include "requests/Leftovers.h"

#include <app_common.h>
#include <bundle.h>

#include <set>

// The sanitizer's, and only there with it.
extern "C" __attribute__((weak)) void __lsan_ignore_object(const void *object);

// Visible, for the linker finds calls of these functions in the shared libraries, too.
#pragma GCC visibility push(default)
extern "C" {
bundle *__real_bundle_create(void);
bundle *__wrap_bundle_create(void);
int __real_bundle_free(bundle *b);
int __wrap_bundle_free(bundle *b);
int __real_app_get_id(char **id);
int __wrap_app_get_id(char **id);
}
#pragma GCC visibility pop

namespace {

std::set<bundle *> &made() {
  static auto *const bundles = new std::set<bundle *>;
  return *bundles;
}

} // namespace

namespace fuzz {

void releaseLeftovers() {
  for (bundle *left : made()) {
    __real_bundle_free(left);
  }
  made().clear();
}

} // namespace fuzz

// The linker puts these in the place of the library's calls.
bundle *__wrap_bundle_create(void) {
  bundle *const created = __real_bundle_create();
  made().insert(created);
  return created;
}

int __wrap_bundle_free(bundle *b) {
  made().erase(b);
  return __real_bundle_free(b);
}

int __wrap_app_get_id(char **id) {
  const int result = __real_app_get_id(id);
  if (result == APP_ERROR_NONE && __lsan_ignore_object != nullptr) {
    __lsan_ignore_object(*id);
  }
  return result;
}
