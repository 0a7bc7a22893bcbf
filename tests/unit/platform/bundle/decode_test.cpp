// SPDX-License-Identifier: Apache-2.0
#include "support/Wire.h"

#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>

namespace {

std::string encoded(bundle *b) {
  bundle_raw *raw = nullptr;
  int length = 0;
  EXPECT_EQ(bundle_encode(b, &raw, &length), BUNDLE_ERROR_NONE);
  std::string text = reinterpret_cast<char *>(raw);
  std::free(raw);
  return text;
}

// Decodes from a block of exactly that size: memory checkers see any byte read beyond.
BundlePtr decode(const std::string &bytes) {
  const Bytes block(bytes.begin(), bytes.end());
  return BundlePtr(bundle_decode(block.data(), static_cast<int>(block.size())));
}

// Encodes any bytes as bundle_encode() encodes a wire form.
std::string encodedBytes(const Bytes &bytes) {
  std::uint64_t sum = 0xcbf29ce484222325U;
  std::string text;
  char digits[17];
  for (const unsigned char byte : bytes) {
    sum = (sum ^ byte) * 0x100000001b3U;
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(sum));
  return digits + text;
}

// The text of a bundle with one value of each type.
class Decoding : public testing::Test {
protected:
  Decoding() {
    const BundlePtr b = makeBundle();
    addOneOfEach(b.get());
    _text = encoded(b.get());
  }

  std::string _text;
};

TEST_F(Decoding, GivesTheBundle) {
  set_last_result(BUNDLE_ERROR_KEY_EXISTS);

  const BundlePtr b = decode(_text);

  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_NONE);
  expectOneOfEach(b.get());
}

TEST_F(Decoding, TakesTheNulAsWell) {
  const BundlePtr b = decode(_text + '\0');

  expectOneOfEach(b.get());
}

TEST_F(Decoding, GivesAnEmptyBundle) {
  const BundlePtr empty = makeBundle();

  const BundlePtr b = decode(encoded(empty.get()));

  ASSERT_NE(b, nullptr);
  EXPECT_EQ(bundle_get_count(b.get()), 0);
}

TEST_F(Decoding, NeedsAText) {
  EXPECT_EQ(bundle_decode(nullptr, 10), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

TEST_F(Decoding, NeedsASizeAboveZero) {
  const auto *raw = reinterpret_cast<const bundle_raw *>(_text.c_str());

  for (const int size : {0, -1, INT_MIN}) {
    EXPECT_EQ(bundle_decode(raw, size), nullptr);
    EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
  }
}

TEST_F(Decoding, RefusesATextCutAtAnyLength) {
  for (std::size_t length = 1; length < _text.size(); ++length) {
    EXPECT_EQ(decode(_text.substr(0, length)), nullptr) << length;
    EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(decode(_text.substr(0, length) + '\0'), nullptr) << length;
  }
}

TEST_F(Decoding, RefusesAnyChangedByte) {
  for (char &byte : _text) {
    const char before = byte;
    for (int value = 0; value <= UCHAR_MAX; ++value) {
      byte = static_cast<char>(value);
      if (byte != before) {
        ASSERT_EQ(decode(_text), nullptr);
      }
    }
    byte = before;
  }
}

TEST_F(Decoding, RefusesCapitalDigits) {
  for (char &digit : _text) {
    digit = static_cast<char>(std::toupper(digit));
  }

  EXPECT_EQ(decode(_text), nullptr);
}

TEST_F(Decoding, RefusesMoreBehindTheText) {
  EXPECT_EQ(decode(_text + "00"), nullptr);
  EXPECT_EQ(decode(_text + std::string(2, '\0')), nullptr);
  EXPECT_EQ(decode(_text + std::string("\0x", 2)), nullptr);
  EXPECT_EQ(decode(_text + "\n"), nullptr);
}

TEST_F(Decoding, RefusesACheckSumAlone) {
  EXPECT_EQ(decode("cbf29ce484222325"), nullptr);
}

TEST_F(Decoding, RefusesBytesThatAreNoBundleUnderTheirRightCheckSum) {
  const Bytes good = Wire().number(1).entry(2, "key", 1).raw("x").bytes();
  const Bytes repeated =
      Wire().number(2).entry(2, "key", 1).raw("x").entry(2, "key", 1).raw("x").bytes();

  EXPECT_NE(decode(encodedBytes(good)), nullptr);
  EXPECT_EQ(decode(encodedBytes(repeated)), nullptr);
  EXPECT_EQ(get_last_result(), BUNDLE_ERROR_INVALID_PARAMETER);
}

} // namespace
