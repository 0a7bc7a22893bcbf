// SPDX-License-Identifier: Apache-2.0
#include "socket/spareDescriptors.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/resource.h>

namespace platform::rpc_port {

namespace {

/// The kernel's own bound, unless an administrator has raised it.
constexpr rlim_t kMostDescriptors = 1 << 20;

} // namespace

/// Counts free numbers from the limit downwards: the kernel assigns the lowest free number, so the
/// free ones are usually at the top.
bool hasSpareDescriptors(int count) {
  rlimit limit = {};
  (void)getrlimit(RLIMIT_NOFILE, &limit);
  const int top = static_cast<int>(std::min(limit.rlim_cur, kMostDescriptors));
  for (int number = top - 1; number >= 0 && count > 0; --number) {
    count -= fcntl(number, F_GETFD) < 0 ? 1 : 0;
  }
  return count <= 0;
}

} // namespace platform::rpc_port
