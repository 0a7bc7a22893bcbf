// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_LEAKS_H
#define NORIX_FAKES_LEAKS_H

#include "fakes/deliberate_leaks.h"

#include <string>
#include <vector>

namespace fake {

/// Compares what the library left behind with what the test expects to be left.
class Leaks {
public:
  void expectLeft(DeliberateLeak leak, std::size_t times);

  /// One sentence per kind of thing of which not exactly the expected number is left.
  std::vector<std::string> complaints() const;

private:
  Left _expected = {0, 0, 0, 0, 0};
};

} // namespace fake

#endif
