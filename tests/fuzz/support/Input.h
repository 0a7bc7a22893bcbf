// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FUZZ_INPUT_H
#define NORIX_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace fuzz {

// The fuzzer's bytes, taken from the front. Numbers that are not there are zero, so that every
// input means something and a seed may be as short as it is plain.
class Input {
public:
  Input(const std::uint8_t *data, std::size_t size)
      : _left(reinterpret_cast<const char *>(data), size) {}

  bool empty() const { return _left.empty(); }

  std::uint8_t byte() {
    const std::string_view taken = bytes(1);
    return taken.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
  }

  std::size_t below(std::size_t limit) { return byte() % limit; }

  // Two bytes, the lower one first.
  std::size_t number() {
    const std::size_t low = byte();
    return low + 256 * std::size_t{byte()};
  }

  // That many bytes, or what there is.
  std::string_view bytes(std::size_t size) {
    const std::string_view taken = _left.substr(0, std::min(size, _left.size()));
    _left.remove_prefix(taken.size());
    return taken;
  }

  // Bytes behind their own length.
  std::string_view text() { return bytes(byte()); }
  std::string_view longText() { return bytes(number()); }

  std::string_view rest() { return bytes(_left.size()); }

private:
  std::string_view _left;
};

} // namespace fuzz

#endif
