// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_ECORE_INIT_H
#define PLATFORM_ECORE_INIT_H

namespace platform::ecore {

/**
 * @brief Initialises Ecore, on any machine; counted, as ecore_init() is.
 * @details ecore_init() alone aborts the process when it finds neither XDG_RUNTIME_DIR nor a home
 *          folder that can be written to, and writes some 170 lines to standard error when there is
 *          no system bus. The environment is unchanged when this returns. Main thread only.
 * @return Whether Ecore is initialised; if so, shutdown() has to follow.
 */
bool initialize();

/// Takes one initialize() back; the last one shuts Ecore down.
void shutdown();

} // namespace platform::ecore

#endif
