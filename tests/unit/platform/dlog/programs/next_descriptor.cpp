// SPDX-License-Identifier: Apache-2.0
//
// Ends with the number of the first descriptor that it opens, before it has logged anything.
#include <dlog.h>
#include <fcntl.h>

int main() {
  const int descriptor = open("/dev/null", O_RDWR | O_CLOEXEC);
  dlog_print(DLOG_INFO, "TAG", "x");
  return descriptor;
}
