// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_NULLPLATFORM_NULLPLATFORM_H
#define NORIX_BENCHMARKS_NULLPLATFORM_NULLPLATFORM_H

/**
 * @brief The platform's functions, Ecore's timers among them, that do nothing and cost next to
 *        nothing.
 * @details They stand in the program itself, where the dynamic linker finds them before those of
 *          the platform's libraries: measured is the library as it ships.
 */
namespace benchmarks::null_platform {

/** @brief An assistant connects and registers its delegate. */
void connect();
/** @brief The assistant sends a request for this action, or for the state. */
void request(const char *actionId);
/** @brief The time of the timer that was added last has come. */
void fireTimer();
/** @brief The interval of the timer that was added last, in seconds. */
double timerInterval();
/** @brief How many parcels the library has sent. */
unsigned long sentParcels();
/** @brief How often the library has asked for the application's id. */
unsigned long idsAsked();
/** @brief Runs inside each question for the application's id; null for nothing. */
extern void (*whileIdIsAsked)();

} // namespace benchmarks::null_platform

#endif
