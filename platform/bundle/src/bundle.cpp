// SPDX-License-Identifier: Apache-2.0
#include <bundle.h>

#include "container.h"
#include "result.h"

#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

using platform::bundles::Entry;
using platform::bundles::finish;
using platform::bundles::give;

namespace {

// Calls add(key) if the key is new and the bundle has room for it and its slots.
template <typename Add>
int addEntry(bundle *b, std::string_view key, std::size_t slots, Add add) {
  if (key.empty()) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  if (b->find(key) != nullptr) {
    return BUNDLE_ERROR_KEY_EXISTS;
  }
  if (!b->hasRoomFor(key, slots)) {
    return BUNDLE_ERROR_OUT_OF_MEMORY;
  }
  try {
    add(key);
    return BUNDLE_ERROR_NONE;
  } catch (const std::bad_alloc &) {
    return BUNDLE_ERROR_OUT_OF_MEMORY;
  }
}

int findEntry(bundle *b, const char *key, Entry *&entry) {
  if (b == nullptr || key == nullptr) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  entry = b->find(key);
  return entry != nullptr ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_KEY_NOT_AVAILABLE;
}

int findTyped(bundle *b, const char *key, int type, Entry *&entry) {
  Entry *found = nullptr;
  const int result = findEntry(b, key, found);
  if (result != BUNDLE_ERROR_NONE) {
    return result;
  }
  if (found->type != type) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  entry = found;
  return BUNDLE_ERROR_NONE;
}

std::unique_ptr<bundle> copyOf(const bundle &from) {
  auto copy = std::make_unique<bundle>();
  for (Entry *entry = from.first(); entry != nullptr; entry = entry->next) {
    copy->addCopy(*entry);
  }
  return copy;
}

} // namespace

bundle *bundle_create(void) {
  auto *b = new (std::nothrow) bundle_s;
  finish(b != nullptr ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_OUT_OF_MEMORY);
  return b;
}

int bundle_free(bundle *b) {
  if (b == nullptr) {
    return finish(BUNDLE_ERROR_INVALID_PARAMETER);
  }
  delete b;
  return finish(BUNDLE_ERROR_NONE);
}

bundle *bundle_dup(bundle *b_from) {
  if (b_from == nullptr) {
    finish(BUNDLE_ERROR_INVALID_PARAMETER);
    return nullptr;
  }

  try {
    std::unique_ptr<bundle> copy = copyOf(*b_from);
    finish(BUNDLE_ERROR_NONE);
    return copy.release();
  } catch (const std::bad_alloc &) {
    finish(BUNDLE_ERROR_OUT_OF_MEMORY);
    return nullptr;
  }
}

int bundle_add_str(bundle *b, const char *key, const char *str) {
  if (b == nullptr || key == nullptr || str == nullptr) {
    return finish(BUNDLE_ERROR_INVALID_PARAMETER);
  }
  return finish(addEntry(b, key, 0, [b, str](std::string_view name) {
    b->add(BUNDLE_TYPE_STR, name, str, std::strlen(str) + 1);
  }));
}

int bundle_add_byte(bundle *b, const char *key, const void *byte, const size_t size) {
  if (b == nullptr || key == nullptr || byte == nullptr || size == 0) {
    return finish(BUNDLE_ERROR_INVALID_PARAMETER);
  }
  return finish(addEntry(b, key, 0, [b, byte, size](std::string_view name) {
    b->add(BUNDLE_TYPE_BYTE, name, byte, size);
  }));
}

int bundle_add_str_array(bundle *b, const char *key, const char **str_array, const int len) {
  if (b == nullptr || key == nullptr || len <= 0) {
    return finish(BUNDLE_ERROR_INVALID_PARAMETER);
  }
  const auto length = static_cast<std::size_t>(len);
  return finish(addEntry(b, key, length, [b, str_array, length](std::string_view name) {
    b->add(platform::bundles::makeStrArray(name, str_array, length));
  }));
}

int bundle_add_byte_array(bundle *b, const char *key, const unsigned int len) {
  if (b == nullptr || key == nullptr || len == 0) {
    return finish(BUNDLE_ERROR_INVALID_PARAMETER);
  }
  return finish(addEntry(b, key, len, [b, len](std::string_view name) {
    b->add(platform::bundles::makeByteArray(name, len));
  }));
}

int bundle_set_byte_array_element(bundle *b, const char *key, const unsigned int idx,
                                  const void *byte, const size_t size) {
  if (byte == nullptr || size == 0 || size > UINT_MAX) {
    return finish(BUNDLE_ERROR_INVALID_PARAMETER);
  }
  Entry *entry = nullptr;
  const int result = findTyped(b, key, BUNDLE_TYPE_BYTE_ARRAY, entry);
  if (result != BUNDLE_ERROR_NONE) {
    return finish(result);
  }
  if (idx >= entry->size) {
    return finish(BUNDLE_ERROR_INVALID_PARAMETER);
  }
  return finish(platform::bundles::setElement(*entry, idx, byte, size)
                    ? BUNDLE_ERROR_NONE
                    : BUNDLE_ERROR_OUT_OF_MEMORY);
}

int bundle_get_str(bundle *b, const char *key, char **str) {
  if (str == nullptr) {
    return finish(BUNDLE_ERROR_INVALID_PARAMETER);
  }
  Entry *entry = nullptr;
  const int result = findTyped(b, key, BUNDLE_TYPE_STR, entry);
  *str = entry != nullptr ? reinterpret_cast<char *>(entry->value()) : nullptr;
  return finish(result);
}

int bundle_get_byte(bundle *b, const char *key, void **byte, size_t *size) {
  Entry *entry = nullptr;
  const int result = byte != nullptr ? findTyped(b, key, BUNDLE_TYPE_BYTE, entry)
                                     : static_cast<int>(BUNDLE_ERROR_INVALID_PARAMETER);
  give(byte, entry != nullptr ? entry->value() : nullptr);
  give(size, entry != nullptr ? entry->size : 0);
  return finish(result);
}

const char **bundle_get_str_array(bundle *b, const char *key, int *len) {
  Entry *entry = nullptr;
  finish(findTyped(b, key, BUNDLE_TYPE_STR_ARRAY, entry));
  give(len, entry != nullptr ? entry->size : 0);
  return entry != nullptr ? const_cast<const char **>(reinterpret_cast<char **>(entry->slots()))
                          : nullptr;
}

int bundle_get_byte_array(bundle *b, const char *key, void ***byte_array, unsigned int *len,
                          unsigned int **array_element_size) {
  Entry *entry = nullptr;
  const int result = byte_array != nullptr ? findTyped(b, key, BUNDLE_TYPE_BYTE_ARRAY, entry)
                                           : static_cast<int>(BUNDLE_ERROR_INVALID_PARAMETER);
  give(byte_array, entry != nullptr ? entry->slots() : nullptr);
  give(len, entry != nullptr ? entry->size : 0);
  give(array_element_size, entry != nullptr ? entry->narrowSlotSizes() : nullptr);
  return finish(result);
}

const char *bundle_get_val(bundle *b, const char *key) {
  char *text = nullptr;
  bundle_get_str(b, key, &text);
  return text;
}

int bundle_get_type(bundle *b, const char *key) {
  Entry *entry = nullptr;
  finish(findEntry(b, key, entry));
  return entry != nullptr ? entry->type : static_cast<int>(BUNDLE_TYPE_NONE);
}

int bundle_get_count(bundle *b) {
  finish(b != nullptr ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_INVALID_PARAMETER);
  return b != nullptr ? static_cast<int>(b->count()) : 0;
}

int bundle_del(bundle *b, const char *key) {
  Entry *entry = nullptr;
  const int result = findEntry(b, key, entry);
  if (entry != nullptr) {
    b->remove(entry);
  }
  return finish(result);
}

void bundle_foreach(bundle *b, bundle_iterator_t iter, void *user_data) {
  if (b == nullptr || iter == nullptr) {
    finish(BUNDLE_ERROR_INVALID_PARAMETER);
    return;
  }

  Entry *next = nullptr;
  for (Entry *entry = b->first(); entry != nullptr; entry = next) {
    next = entry->next; // now: the iterator may delete the entry
    iter(entry->key().data(), entry->type, entry, user_data);
  }
  finish(BUNDLE_ERROR_NONE);
}
