// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_COMMON_LOG_H
#define NORIX_COMMON_LOG_H

#include <dlog.h>

namespace norix {

// The file name without its folders; cut at compile time.
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

// One line of the platform log, of the function that it stands in. Every line has the priority
// DLOG_ERROR, whatever it says: devices drop the lower ones, and the lines are what support works
// with. The two macros differ only in that ISO C++17 knows no empty variadic argument.
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
// The blank at its end is part of it: log filters in the field match the line as it is.
#define NORIX_LOG_VERSION "v1.0-beta.1.4_tz6.5_211014 : "

#endif
