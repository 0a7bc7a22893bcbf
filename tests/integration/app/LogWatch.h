// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_LOGWATCH_H
#define NORIX_TESTS_INTEGRATION_LOGWATCH_H

#include <functional>
#include <string>

namespace integration {

// Sees every line that this process logs, at the moment it is logged: this program has a dlog_print
// of its own, which passes the line on to the platform. Some steps of the library show in the log
// alone.
class LogWatch {
public:
  // Calls the function once, when the next line with this text is logged.
  static void once(std::string text, std::function<void()> seen);
};

} // namespace integration

#endif
