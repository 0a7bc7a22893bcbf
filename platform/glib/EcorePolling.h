// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_GLIB_ECORE_POLLING_H
#define PLATFORM_GLIB_ECORE_POLLING_H

namespace platform::glib {

/**
 * @brief Has Ecore's loop serve GLib's default main context too, as it does on a device.
 * @details Ecore waits through a function that waits for both: for Ecore's descriptors and timers
 *          and for the context's descriptors and timeouts. GLib's sources are dispatched by their
 *          priorities when the wait is over. Nothing is done, and nothing is paid, in a process
 * that has not loaded GLib, or whose Ecore waits through another function already. Ecore has to be
 * initialised.
 *
 *          GLib is C: an exception that leaves a source's callback ends the process.
 */
void startEcorePolling();

/// Takes that back.
void stopEcorePolling();

} // namespace platform::glib

#endif
