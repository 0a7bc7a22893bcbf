// SPDX-License-Identifier: Apache-2.0
//
// Eight bytes can be read at every value, and those beyond it are zero. Under AddressSanitizer
// these tests show that the bytes belong to the value.
#include "support/Bundles.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace {

using Eight = std::array<unsigned char, 8>;

Eight eightBytesAt(const void *value) {
  Eight bytes{};
  std::memcpy(bytes.data(), value, bytes.size());
  return bytes;
}

Eight padded(const std::string &value) {
  Eight bytes{};
  std::memcpy(bytes.data(), value.data(), std::min(value.size(), bytes.size()));
  return bytes;
}

// Fills the memory of the next bundle with something other than zeros.
void soilMemory() {
  const BundlePtr b = makeBundle();
  const std::string text(480, 'x');
  bundle_add_str(b.get(), "key", text.c_str());
}

// The values of 1 to 16 bytes.
class AValueOf : public testing::TestWithParam<std::size_t> {
protected:
  AValueOf() { soilMemory(); }

  const std::string _value = std::string(GetParam(), 'v');
  const BundlePtr _b = makeBundle();
};

INSTANTIATE_TEST_SUITE_P(Bytes, AValueOf, testing::Range<std::size_t>(1, 17));

TEST_P(AValueOf, HasEightReadableBytesAsBytes) {
  void *bytes = nullptr;

  bundle_add_byte(_b.get(), "key", _value.data(), _value.size());
  bundle_get_byte(_b.get(), "key", &bytes, nullptr);

  EXPECT_EQ(eightBytesAt(bytes), padded(_value));
}

TEST_P(AValueOf, HasEightReadableBytesAsAText) {
  const std::string text = _value.substr(1);

  bundle_add_str(_b.get(), "key", text.c_str());

  EXPECT_EQ(eightBytesAt(bundle_get_val(_b.get(), "key")), padded(text));
}

TEST_P(AValueOf, HasEightReadableBytesInAnArrayOfTexts) {
  const std::string text = _value.substr(1);
  const char *texts[] = {text.c_str(), text.c_str()};

  bundle_add_str_array(_b.get(), "key", texts, 2);
  const char **held = bundle_get_str_array(_b.get(), "key", nullptr);

  EXPECT_EQ(eightBytesAt(held[0]), padded(text));
  EXPECT_EQ(eightBytesAt(held[1]), padded(text));
}

TEST_P(AValueOf, HasEightReadableBytesInAnArrayOfBytes) {
  void **slots = nullptr;

  bundle_add_byte_array(_b.get(), "key", 1);
  bundle_set_byte_array_element(_b.get(), "key", 0, _value.data(), _value.size());
  bundle_get_byte_array(_b.get(), "key", &slots, nullptr, nullptr);

  EXPECT_EQ(eightBytesAt(slots[0]), padded(_value));
}

TEST_P(AValueOf, HasEightReadableBytesInACopy) {
  void *bytes = nullptr;
  bundle_add_byte(_b.get(), "key", _value.data(), _value.size());

  const BundlePtr copy(bundle_dup(_b.get()));
  bundle_get_byte(copy.get(), "key", &bytes, nullptr);

  EXPECT_EQ(eightBytesAt(bytes), padded(_value));
}

TEST_P(AValueOf, IsAlignedForAnEightByteNumber) {
  void *bytes = nullptr;
  const std::string key(GetParam(), 'k');

  bundle_add_byte(_b.get(), key.c_str(), _value.data(), _value.size());
  bundle_get_byte(_b.get(), key.c_str(), &bytes, nullptr);

  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % 8, 0U);
}

} // namespace
