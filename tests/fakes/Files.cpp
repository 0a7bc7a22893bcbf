// SPDX-License-Identifier: Apache-2.0
//
// <unistd.h>: the library reads real files, and a read can be made to fail, with the given errno
// when that is positive.
#include "fakes/Platform.h"

#include <unistd.h>

#include <cerrno>

extern "C" {

ssize_t __real_read(int file, void *buffer, size_t size);

ssize_t __wrap_read(int file, void *buffer, size_t size) {
  if (fake::runningLibrary()) {
    const fake::PlatformCall call("read", size);
    if (call.failure()) {
      errno = *call.failure() > 0 ? *call.failure() : EIO;
      return -1;
    }
  }
  return __real_read(file, buffer, size);
}
}
