// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_LAUNCHER_RUNNING_MARK_H
#define PLATFORM_APPLICATION_LAUNCHER_RUNNING_MARK_H

#include <string>

namespace platform::application {

/**
 * @brief The lock that a running application's process holds on a file of its id.
 * @details The kernel releases it with the process, however that ends. The file lies in
 *          `$XDG_RUNTIME_DIR/app-running/`, or in `<temporary directory>/app-running-<uid>/`
 * without that variable; its time is that of the application's last launch.
 */
class RunningMark {
public:
  enum class Taken { Yes, HeldAlready, Impossible };

  RunningMark() = default;
  ~RunningMark();
  RunningMark(const RunningMark &) = delete;
  RunningMark &operator=(const RunningMark &) = delete;

  /// Marks the application as running, beside other processes of it.
  Taken share(const std::string &appId);
  /**
   * @brief Marks the application as running if no process of it is.
   * @details For one launcher of several at the same time. What inherits descriptor() holds the
   * mark on.
   */
  Taken takeAlone(const std::string &appId);
  int descriptor() const { return _descriptor; }

  /// @return Whether a process of the application runs; false also where that cannot be seen.
  static bool isHeld(const std::string &appId);
  /// @return How many seconds ago the application was last launched.
  static double secondsSinceLaunch(const std::string &appId);

private:
  Taken take(const std::string &appId, short type);

  int _descriptor = -1;
};

} // namespace platform::application

#endif
