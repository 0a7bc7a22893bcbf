// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BUNDLE_RESULT_H
#define PLATFORM_BUNDLE_RESULT_H

#include <bundle.h>

namespace platform {

/** Makes a result the thread's last one and hands it on. */
inline int finish(int result) {
  set_last_result(result);
  return result;
}

/** Sets an output that the caller may not have asked for. */
template <typename Output, typename Value>
void give(Output *output, Value value) {
  if (output != nullptr) {
    *output = static_cast<Output>(value);
  }
}

} // namespace platform

#endif
