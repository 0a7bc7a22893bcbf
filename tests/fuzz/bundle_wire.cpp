// SPDX-License-Identifier: Apache-2.0
//
// A bundle as it travels in a parcel. What can be read is walked, copied, and written again in
// every form there is; each time the same bytes have to come out.
#include "support/bundles.h"
#include "support/check.h"

#include <bundle_wire.h>
#include <tizen_error.h>

#include <cstdlib>
#include <string_view>

namespace {

using fuzz::BundlePtr;
using fuzz::check;
using fuzz::wireForm;

void checkCopy(bundle *b, std::string_view wire) {
  const BundlePtr copy(bundle_dup(b));
  check(copy != nullptr && wireForm(copy.get()) == wire, "a copy is the same bundle");
}

void checkText(bundle *b, std::string_view wire) {
  bundle_raw *text = nullptr;
  int length = 0;
  check(bundle_encode(b, &text, &length) == BUNDLE_ERROR_NONE, "every bundle can be encoded");
  const BundlePtr decoded(bundle_decode(text, length));
  check(decoded != nullptr && wireForm(decoded.get()) == wire, "decoding undoes encoding");
  std::free(text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const BundlePtr read(platform::bundle_wire::read(data, size));
  if (!read) {
    check(get_last_result() == BUNDLE_ERROR_INVALID_PARAMETER, "a refusal has its reason");
    return 0;
  }

  fuzz::walk(read.get());
  const std::string_view wire(reinterpret_cast<const char *>(data), size);
  check(wireForm(read.get()) == wire, "a bundle has one wire form");
  checkCopy(read.get(), wire);
  checkText(read.get(), wire);
  return 0;
}
