// SPDX-License-Identifier: Apache-2.0
//
// A bundle as text, as an application stores it. The checksum keeps a fuzzer from getting far: what
// lies behind it is bundle_wire's. Here, no damage may go unnoticed.
#include "support/bundles.h"
#include "support/check.h"

#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using fuzz::BundlePtr;
using fuzz::check;

bundle *decode(const std::string &text) {
  return bundle_decode(reinterpret_cast<const bundle_raw *>(text.data()),
                       static_cast<int>(text.size()));
}

std::string encode(bundle *b) {
  bundle_raw *text = nullptr;
  int length = 0;
  check(bundle_encode(b, &text, &length) == BUNDLE_ERROR_NONE, "every bundle can be encoded");
  std::string copy(reinterpret_cast<const char *>(text), static_cast<std::size_t>(length) - 1);
  std::free(text);
  return copy;
}

// One wrong byte, in a place that the text itself chooses.
void checkDamage(std::string text) {
  const std::size_t place = static_cast<unsigned char>(text.back()) * text.size() / 256;
  text[place] = static_cast<char>(text[place] ^ 1);
  const BundlePtr damaged(decode(text));
  check(damaged == nullptr, "a damaged text is refused");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  std::string text(reinterpret_cast<const char *>(data), size);
  text.shrink_to_fit();
  const BundlePtr decoded(decode(text));
  if (!decoded) {
    return 0;
  }

  fuzz::walk(decoded.get());
  const std::string again = encode(decoded.get());
  check(again == std::string_view(text).substr(0, again.size()), "a bundle has one text");
  check(text.size() - again.size() <= 1, "only the NUL may follow it");
  checkDamage(again);
  return 0;
}
