// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_UNIT_CPP_MAINLOOP_H
#define NORIX_TESTS_UNIT_CPP_MAINLOOP_H

#include <cstddef>

namespace fake {

// The way from other threads to the main loop: calls wait until the test runs them.

// Until there is one.
void waitForCallOfThreads();
// Runs the calls that wait, and says how many there were.
std::size_t runCallsOfThreads();
// As a main loop that ends before it got to them.
void dropCallsOfThreads();

} // namespace fake

#endif
