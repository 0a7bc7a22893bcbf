// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_BASE_DESCRIPTORS_STANDARD_STREAMS_H
#define PLATFORM_BASE_DESCRIPTORS_STANDARD_STREAMS_H

namespace platform {

/// Opens a placeholder in the place of each of the descriptors 0, 1 and 2 that is closed. The next
/// file, pipe or socket of the process would get the number otherwise, and what is meant for
/// standard output or the log would be written into it. A placeholder behaves as a closed
/// descriptor does: to read from it or to write to it fails with EBADF. Leaves errno alone; any
/// thread may call it.
void occupyStandardStreams() noexcept;

/// Moves a descriptor that has the number of a standard stream to another number, close-on-exec.
/// Others, and -1, are returned as they are. Returns -1 with errno, and the descriptor closed, when
/// there is no other number.
int aboveStandardStreams(int descriptor) noexcept;

} // namespace platform

#endif
