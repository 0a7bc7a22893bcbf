// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BUNDLE_RESULT_H
#define PLATFORM_BUNDLE_RESULT_H

#include <bundle.h>

namespace platform::bundles {

/// Sets the thread's last result, and returns it.
inline int finish(int result) {
  set_last_result(result);
  return result;
}

/// Sets an output, unless the caller passed null for it.
template <typename Output, typename Value>
void give(Output *output, Value value) {
  if (output != nullptr) {
    *output = static_cast<Output>(value);
  }
}

} // namespace platform::bundles

#endif
