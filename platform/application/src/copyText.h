// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_COPY_TEXT_H
#define PLATFORM_APPLICATION_COPY_TEXT_H

#include <cstring>
#include <new>
#include <string>

namespace platform::application {

/** @brief A copy that C code releases with free(). Throws std::bad_alloc. */
inline char *copyText(const char *text) {
  char *copy = strdup(text);
  if (copy == nullptr) {
    throw std::bad_alloc();
  }
  return copy;
}

inline char *copyText(const std::string &text) {
  return copyText(text.c_str());
}

} // namespace platform::application

#endif
