// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_LAUNCHER_LAUNCH_H
#define PLATFORM_APPLICATION_LAUNCHER_LAUNCH_H

#include <string>

namespace platform::application {

/// The outcome of an attempt to start an application.
enum class Launch {
  Started,
  Running, ///< A process of it runs, or is being started.
  Unknown, ///< $NORIX_DESKTOP_APPS has no such application.
  Failed   ///< Its manifest or its program cannot be used; the log says why.
};

/// What the application's first app_control callback is for.
enum class LaunchReason {
  Default, ///< Nothing particular: it is called at once.
  Request  ///< A launch request that the launcher is about to send.
};

/**
 * @brief Starts an application from $NORIX_DESKTOP_APPS, in one process however many ask.
 * @details It returns when the program runs, which is not when it listens. The process is no child
 *          of this one; it has the application's id, this process's environment and standard
 *          error, and none of its other descriptors.
 */
Launch launch(const std::string &appId, LaunchReason reason);

/// @return Whether a process of the application was launched so recently that it may yet listen.
bool isStarting(const std::string &appId);

/// @return Whether a launcher started this process. Asked before takeLaunchReason().
bool wasLaunched();

/// @return Why this process was started. The answer is given once: children are not to inherit it.
LaunchReason takeLaunchReason();

} // namespace platform::application

#endif
