// SPDX-License-Identifier: Apache-2.0
#include "common/exceptions.h"

#include "common/log.h"

#include <cxxabi.h>

#include <exception>

namespace norix {

void logStoppedException() {
  try {
    throw;
  } catch (const abi::__forced_unwind &) {
    // The end of the thread (pthread_exit, pthread_cancel), which nothing may stop.
    throw; // GCOVR_EXCL_LINE: it would end the tests.
  } catch (const std::exception &exception) {
    NORIX_LOG_FORMAT("stopped an exception: %s", exception.what());
  } catch (...) {
    NORIX_LOG("stopped an exception of another type than std::exception");
  }
}

} // namespace norix
