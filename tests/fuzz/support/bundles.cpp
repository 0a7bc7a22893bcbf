// SPDX-License-Identifier: Apache-2.0
#include "support/bundles.h"

#include "support/check.h"

#include <bundle_wire.h>

#include <cstring>

namespace fuzz {

namespace {

struct Walk {
  bundle *walked;
  int entries;
};

// A compiler must not find out that nobody wants the bytes.
void touch(const void *bytes, std::size_t size) {
  static volatile unsigned char sum;
  for (std::size_t i = 0; i < size; ++i) {
    sum = static_cast<unsigned char>(sum + static_cast<const unsigned char *>(bytes)[i]);
  }
}

void walkText(bundle *b, const char *key, const void *value, std::size_t size) {
  char *text = nullptr;
  check(bundle_get_str(b, key, &text) == BUNDLE_ERROR_NONE && text == value,
        "bundle_get_str finds what bundle_foreach shows");
  check(std::strlen(text) + 1 == size, "a text ends at the NUL that its size counts");
  check(bundle_get_val(b, key) == text, "bundle_get_val finds it too");
}

void walkBytes(bundle *b, const char *key, const void *value, std::size_t size) {
  void *bytes = nullptr;
  std::size_t found = 0;
  check(bundle_get_byte(b, key, &bytes, &found) == BUNDLE_ERROR_NONE && bytes == value
            && found == size,
        "bundle_get_byte finds what bundle_foreach shows");
  // Applications read numbers of eight bytes without asking for the size.
  touch(bytes, sizeof(std::uint64_t));
}

void walkBasic(bundle *b, const char *key, int type, bundle_keyval_t *entry) {
  void *value = nullptr;
  std::size_t size = 0;
  check(bundle_keyval_get_basic_val(entry, &value, &size) == BUNDLE_ERROR_NONE,
        "an entry that is no array has a basic value");
  touch(value, size);
  if (type == BUNDLE_TYPE_STR) {
    walkText(b, key, value, size);
  } else {
    walkBytes(b, key, value, size);
  }
}

unsigned int lengthOf(bundle *b, const char *key, int type) {
  if (type == BUNDLE_TYPE_STR_ARRAY) {
    int length = 0;
    (void)bundle_get_str_array(b, key, &length);
    return static_cast<unsigned int>(length);
  }
  void **slots = nullptr;
  unsigned int length = 0;
  unsigned int *sizes = nullptr;
  (void)bundle_get_byte_array(b, key, &slots, &length, &sizes);
  for (unsigned int i = 0; i < length; ++i) {
    touch(slots[i], sizes[i]);
  }
  return length;
}

void walkArray(bundle *b, const char *key, int type, bundle_keyval_t *entry) {
  void **slots = nullptr;
  unsigned int length = 0;
  std::size_t *sizes = nullptr;
  check(bundle_keyval_get_array_val(entry, &slots, &length, &sizes) == BUNDLE_ERROR_NONE,
        "an array has an array's value");
  for (unsigned int i = 0; i < length; ++i) {
    touch(slots[i], sizes[i]);
  }
  check(length > 0 && lengthOf(b, key, type) == length, "an array's getter finds the same slots");
}

void walkEntry(const char *key, const int type, const bundle_keyval_t *entry, void *data) {
  Walk &walk = *static_cast<Walk *>(data);
  ++walk.entries;
  auto *value = const_cast<bundle_keyval_t *>(entry); // The getters take it so and change nothing.
  check(*key != '\0' && bundle_get_type(walk.walked, key) == type
            && bundle_keyval_get_type(value) == type,
        "every entry has a key and is found by it");
  if (bundle_keyval_type_is_array(value) == 1) {
    walkArray(walk.walked, key, type, value);
  } else {
    walkBasic(walk.walked, key, type, value);
  }
}

} // namespace

void walk(bundle *b) {
  Walk walk{b, 0};
  bundle_foreach(b, walkEntry, &walk);
  check(walk.entries == bundle_get_count(b), "bundle_get_count counts what bundle_foreach shows");
}

std::string wireForm(bundle *b) {
  std::string wire(platform::bundle_wire::size(b), '\0');
  platform::bundle_wire::write(b, reinterpret_cast<unsigned char *>(wire.data()));
  return wire;
}

} // namespace fuzz
