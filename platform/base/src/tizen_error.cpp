// SPDX-License-Identifier: Apache-2.0
#include <tizen_error.h>

#include <cstring>

namespace {

// Nearly every call of every interface sets it. With the initial-exec model that is one store
// instead of a call into the dynamic linker, which reserves enough space for four bytes of
// libraries that are loaded later.
[[gnu::tls_model("initial-exec")]] thread_local int lastResult = TIZEN_ERROR_NONE;

const char *ownMessage(int err) {
  switch (err) {
  case TIZEN_ERROR_NONE:
    return "Successful";
  case TIZEN_ERROR_KEY_NOT_AVAILABLE:
    return "Required key not available";
  case TIZEN_ERROR_UNKNOWN:
    return "Unknown error";
  case TIZEN_ERROR_NOT_SUPPORTED:
    return "Not supported";
  default:
    return nullptr;
  }
}

// The C library's static, untranslated text, or null.
const char *errnoMessage(int err) {
  constexpr int kLargestErrno = 4095; // the kernel's limit; -err cannot overflow
  return err < 0 && err >= -kLargestErrno ? strerrordesc_np(-err) : nullptr;
}

} // namespace

int get_last_result(void) {
  return lastResult;
}

void set_last_result(int err) {
  lastResult = err;
}

char *get_error_message(int err) {
  const char *text = ownMessage(err);
  if (text == nullptr) {
    text = errnoMessage(err);
  }
  if (text == nullptr) {
    text = "Undefined error number";
  }
  return const_cast<char *>(text); // the platform's signature; callers do not change it
}
