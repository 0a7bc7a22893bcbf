// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_COMMON_EXCEPTIONS_H
#define NORIX_COMMON_EXCEPTIONS_H

namespace norix {

// Logs the exception that is being handled: called in the catch (...) block of a function that the
// platform calls. An exception must not leave such a function. Ecore never ends a timer that one
// has passed through, whatever its callback returns afterwards and whether it is deleted or not,
// and calls it in every turn of the loop; it runs no job any more after a job was left so; and a
// loop that was left from a descriptor's handler hangs when it is begun again.
void logStoppedException();

} // namespace norix

#endif
