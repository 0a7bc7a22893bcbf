// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_ONCE_H
#define NORIX_FAKES_ONCE_H

#include <pthread.h>

#include <set>

namespace fake {

/// The once-flags that the library's singletons used. They are reset with the platform, so that
/// each test meets the singletons as a new process does. What runs is the real pthread_once.
class Once {
public:
  Once() = default;
  ~Once();
  Once(const Once &) = delete;
  Once &operator=(const Once &) = delete;

  void used(pthread_once_t *flag) { _flags.insert(flag); }

private:
  std::set<pthread_once_t *> _flags;
};

} // namespace fake

#endif
