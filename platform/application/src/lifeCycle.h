// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_LIFE_CYCLE_H
#define PLATFORM_APPLICATION_LIFE_CYCLE_H

#include <app_control.h>
#include <functional>

namespace platform::application {

/**
 * @brief The stations of an application's life, whatever kind of application it is.
 * @details An application that create() lets live is launched, left when its loop has ended, and
 *          terminated. One that asks for its end within create() is terminated only.
 */
struct LifeCycle {
  std::function<bool()> create;
  std::function<void(app_control_h)> launch;
  std::function<void()> leave;
  std::function<void()> terminate;
};

/**
 * @brief Runs an application from its creation to its end. The result is one of #app_error_e.
 * @details An exception that leaves a callback passes through; Ecore has been shut down by then.
 */
int runLifeCycle(const LifeCycle &application);

/** @brief Ends the running application's loop, or keeps it from starting. */
void endLifeCycle();

} // namespace platform::application

#endif
