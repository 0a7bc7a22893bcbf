// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_REPORTER_H
#define NORIX_PROBE_REPORTER_H

#include "probe/Record.h"

namespace norix::probe {

/// The way of events out of the application: a ring that any thread fills, and a thread of the
/// probe's own that turns them into JSON lines and sends them to $NORIX_PROBE_SOCKET.
///
/// Nothing here waits for the reader. While it does not read, or is not there, events wait in the
/// ring; those that find no room are counted, and the count is the next event that is sent.

/// Whether anybody asked for events. Without the variable the probe only passes calls on.
bool isReporting();

/// Hands an event over. Safe in a signal handler once one event was reported.
void report(const Record &record);

/// Sends what waits, for a process that is about to end. Takes a fraction of a second at most.
void flush();

/// Sends the event of a callback that holds the loop; called by the sending thread now and then.
void watchCallback();

} // namespace norix::probe

#endif
