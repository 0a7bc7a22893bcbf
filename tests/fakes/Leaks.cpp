// SPDX-License-Identifier: Apache-2.0
#include "fakes/Leaks.h"

#include "fakes/Heap.h"
#include "fakes/Platform.h"

namespace fake {

void Leaks::expectLeft(DeliberateLeak leak, std::size_t times) {
  const Left left = leftBy(leak);
  _expected.bundles += left.bundles * times;
  _expected.stubs += left.stubs * times;
  _expected.timers += left.timers * times;
  _expected.platformTexts += left.platformTexts * times;
  _expected.libraryBlocks += left.libraryBlocks * times;
}

std::vector<std::string> Leaks::complaints() const {
  std::vector<std::string> found;
  const auto compare = [&found](const std::string &what, std::size_t left, std::size_t expected) {
    if (left != expected) {
      found.push_back(std::to_string(left) + " " + what + " left, expected "
                      + std::to_string(expected));
    }
  };
  compare("bundles", platform().bundles.alive(), _expected.bundles);
  compare("stubs", platform().ports.stubsAlive(), _expected.stubs);
  compare("parcels", platform().ports.parcelsAlive(), 0);
  compare("app infos", platform().application.infosAlive(), 0);
  compare("timers", platform().clock.alive().size(), _expected.timers);
  compare("texts of the platform", Heap::instance().blocksOf(Heap::Owner::PlatformText).size(),
          _expected.platformTexts);
  compare("heap blocks of the library", Heap::instance().blocksOf(Heap::Owner::Library).size(),
          _expected.libraryBlocks);
  return found;
}

} // namespace fake
