// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_NAMED_H
#define NORIX_TESTS_INTEGRATION_NAMED_H

#include <ostream>

namespace integration {

// A parameter of a test that is called by its name instead of its value: test names stay short, and
// the same from run to run.
template <typename Value>
struct Named {
  const char *name;
  Value value;
};

template <typename Value>
std::ostream &operator<<(std::ostream &out, const Named<Value> &named) {
  return out << named.name;
}

} // namespace integration

#endif
