// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_COMMON_LOG_H
#define NORIX_COMMON_LOG_H

#include <dlog.h>

namespace norix {

/// The file name without its folders; cut at compile time.
constexpr const char *baseName(const char *path) {
  const char *name = path;
  for (const char *at = path; *at != '\0'; ++at) {
    if (*at == '/') {
      name = at + 1;
    }
  }
  return name;
}

} // namespace norix

/// Writes one line to the platform log, with the name of the calling function. Every line has the
/// priority DLOG_ERROR: devices drop lower priorities, and support needs the lines. There are two
/// macros because ISO C++17 does not allow empty variadic arguments.
#define NORIX_LOG(text)                                                                            \
  do {                                                                                             \
    constexpr const char *norixLogFile = norix::baseName(__FILE__);                                \
    dlog_print(DLOG_ERROR, NORIX_LOG_TAG, "%s %s %s(%d): " text, NORIX_LOG_VERSION, norixLogFile,  \
               __func__, __LINE__);                                                                \
  } while (false)

#define NORIX_LOG_FORMAT(format, ...)                                                              \
  do {                                                                                             \
    constexpr const char *norixLogFile = norix::baseName(__FILE__);                                \
    dlog_print(DLOG_ERROR, NORIX_LOG_TAG, "%s %s %s(%d): " format, NORIX_LOG_VERSION,              \
               norixLogFile, __func__, __LINE__, __VA_ARGS__);                                     \
  } while (false)

#define NORIX_LOG_TAG "NORIX-APPSDK"
/// The blank at the end is needed: log filters in use match it.
#define NORIX_LOG_VERSION "v1.0-beta.1.4_tz6.5_211014 : "

#endif
