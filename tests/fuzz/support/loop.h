// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_LOOP_H
#define NORIX_FUZZ_LOOP_H

namespace fuzz {

// Ecore, initialised for the rest of the process.
void startLoop();

// Lets the main loop look at its sockets so many times.
void turnLoop(int times);

} // namespace fuzz

#endif
