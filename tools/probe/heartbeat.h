// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_HEARTBEAT_H
#define NORIX_PROBE_HEARTBEAT_H

#include <cstdint>

namespace norix::probe {

/// Notices a main loop that stands still outside the callbacks: in a timer, a job, an event handler
/// of the application, or because nobody runs it. A timer of the probe's notes ten times a second
/// that the loop turns, and the sending thread looks at the note.

/// To be called on the main loop's thread, while the library is initialised.
void startHeartbeat();
void stopHeartbeat();

/// Notes that the loop turns, at this time. Also for a callback that returns: it reports itself
/// when it was long.
void beat(std::uint64_t time);

/// Sends the event of a loop that is held; called by the sending thread now and then.
void watchLoop();

} // namespace norix::probe

#endif
