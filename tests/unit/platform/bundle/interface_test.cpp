// SPDX-License-Identifier: Apache-2.0
//
// What an application was compiled against on a device: the values and the signatures.
#include <bundle.h>

#include <gtest/gtest.h>
#include <type_traits>

namespace {

template <typename Signature, typename Function>
constexpr bool has(Function * /*function*/) {
  return std::is_same_v<Signature, Function>;
}

static_assert(std::is_same_v<bundle_raw, unsigned char>);
static_assert(std::is_same_v<bundle_iterator_t,
                             void (*)(const char *, const int, const bundle_keyval_t *, void *)>);
static_assert(has<bundle *()>(bundle_create));
static_assert(has<int(bundle *)>(bundle_free));
static_assert(has<bundle *(bundle *)>(bundle_dup));
static_assert(has<int(bundle *, const char *, const char *)>(bundle_add_str));
static_assert(has<int(bundle *, const char *, const void *, size_t)>(bundle_add_byte));
static_assert(has<int(bundle *, const char *, const char **, int)>(bundle_add_str_array));
static_assert(has<int(bundle *, const char *, unsigned int)>(bundle_add_byte_array));
static_assert(has<int(bundle *, const char *, unsigned int, const void *, size_t)>(
    bundle_set_byte_array_element));
static_assert(has<int(bundle *, const char *, char **)>(bundle_get_str));
static_assert(has<int(bundle *, const char *, void **, size_t *)>(bundle_get_byte));
static_assert(has<const char **(bundle *, const char *, int *)>(bundle_get_str_array));
static_assert(has<int(bundle *, const char *, void ***, unsigned int *, unsigned int **)>(
    bundle_get_byte_array));
static_assert(has<const char *(bundle *, const char *)>(bundle_get_val));
static_assert(has<int(bundle *, const char *)>(bundle_get_type));
static_assert(has<int(bundle *)>(bundle_get_count));
static_assert(has<int(bundle *, const char *)>(bundle_del));
static_assert(has<void(bundle *, bundle_iterator_t, void *)>(bundle_foreach));
static_assert(has<int(bundle_keyval_t *)>(bundle_keyval_get_type));
static_assert(has<int(bundle_keyval_t *)>(bundle_keyval_type_is_array));
static_assert(has<int(bundle_keyval_t *, void **, size_t *)>(bundle_keyval_get_basic_val));
static_assert(
    has<int(bundle_keyval_t *, void ***, unsigned int *, size_t **)>(bundle_keyval_get_array_val));
static_assert(has<int(bundle *, bundle_raw **, int *)>(bundle_encode));
static_assert(has<bundle *(const bundle_raw *, int)>(bundle_decode));

TEST(TheTypes, HaveTheValuesThatApplicationsKnow) {
  EXPECT_EQ(BUNDLE_TYPE_ARRAY, 0x0100);
  EXPECT_EQ(BUNDLE_TYPE_PRIMITIVE, 0x0200);
  EXPECT_EQ(BUNDLE_TYPE_MEASURABLE, 0x0400);
  EXPECT_EQ(BUNDLE_TYPE_NONE, -1);
  EXPECT_EQ(BUNDLE_TYPE_ANY, 0);
  EXPECT_EQ(BUNDLE_TYPE_STR, 0x401);
  EXPECT_EQ(BUNDLE_TYPE_STR_ARRAY, 0x501);
  EXPECT_EQ(BUNDLE_TYPE_BYTE, 2);
  EXPECT_EQ(BUNDLE_TYPE_BYTE_ARRAY, 0x102);
}

TEST(TheResults, HaveTheValuesThatApplicationsKnow) {
  EXPECT_EQ(BUNDLE_ERROR_NONE, 0);
  EXPECT_EQ(BUNDLE_ERROR_OUT_OF_MEMORY, -12);
  EXPECT_EQ(BUNDLE_ERROR_INVALID_PARAMETER, -22);
  EXPECT_EQ(BUNDLE_ERROR_KEY_NOT_AVAILABLE, -126);
  EXPECT_EQ(BUNDLE_ERROR_KEY_EXISTS, -18350079);
}

} // namespace
