// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_COMMON_EXCEPTIONS_H
#define NORIX_COMMON_EXCEPTIONS_H

namespace norix {

/// Logs the exception that is being handled. To be called in the catch (...) block of a function
/// that the platform calls: no exception may leave such a function. After an exception has passed
/// through Ecore, a timer is called in every turn of the loop and can be ended neither by its
/// result nor by ecore_timer_del, no job runs any more, or the loop hangs when it is begun again.
void logStoppedException();

} // namespace norix

#endif
