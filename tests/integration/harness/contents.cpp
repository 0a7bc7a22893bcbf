// SPDX-License-Identifier: Apache-2.0
#include "integration/harness/contents.h"

#include <stdexcept>

namespace integration {
namespace {

void append(const char *key, const int type, const bundle_keyval_t *entry, void *userData) {
  if (type != BUNDLE_TYPE_STR && type != BUNDLE_TYPE_BYTE) {
    throw std::runtime_error(std::string("an entry of another type: ") + key);
  }
  void *value = nullptr;
  size_t size = 0;
  bundle_keyval_get_basic_val(const_cast<bundle_keyval_t *>(entry), &value, &size);
  const size_t length = type == BUNDLE_TYPE_STR ? size - 1 : size;
  static_cast<Contents *>(userData)->emplace_back(
      key, std::string(static_cast<const char *>(value), length));
}

} // namespace

Contents contentsOf(bundle *content) {
  Contents contents;
  bundle_foreach(content, append, &contents);
  return contents;
}

std::string bytesOf(std::uint64_t requestId) {
  return {reinterpret_cast<const char *>(&requestId), sizeof requestId};
}

} // namespace integration
