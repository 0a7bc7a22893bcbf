// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_PLATFORM_BUNDLE_SUPPORT_BUNDLES_H
#define TESTS_PLATFORM_BUNDLE_SUPPORT_BUNDLES_H

#include <bundle.h>

#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

struct BundleDeleter {
  void operator()(bundle *b) const { bundle_free(b); }
};
using BundlePtr = std::unique_ptr<bundle, BundleDeleter>;

/// An empty bundle.
inline BundlePtr makeBundle() {
  return BundlePtr(bundle_create());
}

/// The keys in the order in which bundle_foreach() shows them.
inline std::vector<std::string> keysOf(bundle *b) {
  std::vector<std::string> keys;
  const auto collect = [](const char *key, const int, const bundle_keyval_t *, void *data) {
    static_cast<std::vector<std::string> *>(data)->emplace_back(key);
  };
  bundle_foreach(b, collect, &keys);
  return keys;
}

/// Adds one value of each type, arrays with empty slots, texts empty and not.
inline void addOneOfEach(bundle *b) {
  const char *texts[] = {"one", nullptr, ""};
  bundle_add_str(b, "text", "xyz");
  bundle_add_str(b, "empty", "");
  bundle_add_byte(b, "bytes", "\0\1\2", 3);
  bundle_add_str_array(b, "texts", texts, 3);
  bundle_add_byte_array(b, "parts", 3);
  bundle_set_byte_array_element(b, "parts", 1, "ab", 2);
  bundle_set_byte_array_element(b, "parts", 2, "c", 1);
}

/// Expects that a bundle holds exactly what addOneOfEach() adds.
inline void expectOneOfEach(bundle *b) {
  const std::vector<std::string> keys{"text", "empty", "bytes", "texts", "parts"};
  ASSERT_EQ(keysOf(b), keys);

  std::size_t size = 0;
  void *bytes = nullptr;
  EXPECT_STREQ(bundle_get_val(b, "text"), "xyz");
  EXPECT_STREQ(bundle_get_val(b, "empty"), "");
  ASSERT_EQ(bundle_get_byte(b, "bytes", &bytes, &size), BUNDLE_ERROR_NONE);
  EXPECT_EQ(std::string(static_cast<char *>(bytes), size), std::string("\0\1\2", 3));

  int length = 0;
  const char **texts = bundle_get_str_array(b, "texts", &length);
  ASSERT_EQ(length, 3);
  EXPECT_STREQ(texts[0], "one");
  EXPECT_EQ(texts[1], nullptr);
  EXPECT_STREQ(texts[2], "");

  void **parts = nullptr;
  unsigned int count = 0;
  unsigned int *sizes = nullptr;
  ASSERT_EQ(bundle_get_byte_array(b, "parts", &parts, &count, &sizes), BUNDLE_ERROR_NONE);
  ASSERT_EQ(count, 3U);
  EXPECT_EQ(parts[0], nullptr);
  EXPECT_EQ(std::string(static_cast<char *>(parts[1]), sizes[1]), "ab");
  EXPECT_EQ(std::string(static_cast<char *>(parts[2]), sizes[2]), "c");
  EXPECT_EQ(sizes[0], 0U);
}

/// Expects that a call returned a result, and set it as the last result.
inline void expectResult(int result, int expected) {
  EXPECT_EQ(result, expected);
  EXPECT_EQ(get_last_result(), expected);
}

#endif
