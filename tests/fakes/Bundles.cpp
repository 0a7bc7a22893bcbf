// SPDX-License-Identifier: Apache-2.0
#include "fakes/Bundles.h"

#include "fakes/Platform.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

bundle_keyval_s *bundle_s::find(const std::string &key) {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [&](const bundle_keyval_s &entry) { return entry.key == key; });
  return found == entries.end() ? nullptr : &*found;
}

namespace {

// A copy that ends where its page ends.
std::shared_ptr<char> atPageEnd(const char *text, size_t size) {
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void *const pages =
      mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) {
    throw std::bad_alloc();
  }
  char *const end = static_cast<char *>(pages) + page;
  (void)mprotect(end, page, PROT_NONE);
  std::memcpy(end - size, text, size);
  return {end - size, [pages, page](char *) { (void)munmap(pages, 2 * page); }};
}

} // namespace

char *bundle_keyval_s::Value::text() {
  if (size + 1 >= sizeof(int)) {
    return storage.data();
  }
  if (guarded == nullptr) {
    guarded = atPageEnd(storage.c_str(), size + 1);
  }
  return guarded.get();
}

namespace fake {

namespace {

constexpr size_t kReadable = 8;

bundle_keyval_s::Value stored(const std::string &bytes) {
  bundle_keyval_s::Value value{bytes, bytes.size(), nullptr};
  value.storage.resize(std::max(bytes.size(), kReadable), '\0');
  return value;
}

} // namespace

bundle *Bundles::create() {
  auto created = std::make_unique<bundle>();
  bundle *handle = created.get();
  handle->number = ++_created;
  _alive.emplace(handle, std::move(created));
  return handle;
}

bundle *Bundles::create(const Contents &contents) {
  bundle *handle = create();
  for (const Entry &entry : contents) {
    bundle_keyval_s keyval{entry.key, entry.type, {}};
    for (const std::string &value : entry.values) {
      keyval.values.push_back(stored(value));
    }
    handle->entries.push_back(std::move(keyval));
  }
  return handle;
}

bool Bundles::release(bundle *handle) {
  const auto found = _alive.find(handle);
  if (found == _alive.end()) {
    return false;
  }
  found->second->entries.clear();
  _freed.push_back(std::move(found->second));
  _alive.erase(found);
  return true;
}

bundle *Bundles::find(bundle *handle) const {
  return _alive.count(handle) != 0 ? handle : nullptr;
}

Contents contentsOf(bundle *handle) {
  const bundle *alive = platform().bundles.find(handle);
  if (alive == nullptr) {
    platform().misuses.emplace_back("the contents of a bundle that is not alive were asked for");
    return {};
  }
  Contents contents;
  for (const bundle_keyval_s &keyval : alive->entries) {
    Entry entry{keyval.key, keyval.type, {}};
    for (const bundle_keyval_s::Value &value : keyval.values) {
      entry.values.push_back(value.storage.substr(0, value.size));
    }
    contents.push_back(std::move(entry));
  }
  return contents;
}

namespace {

// The bundle behind a handle that the library uses; null, and a misuse, when it is not alive.
bundle *used(const char *function, bundle *handle) {
  bundle *alive = platform().bundles.find(handle);
  if (alive == nullptr && handle != nullptr) {
    platform().misuses.push_back(std::string(function) + " with a bundle that is not alive");
  }
  return alive;
}

int add(const char *function, bundle *handle, const char *key, int type, std::string value) {
  bundle *alive = used(function, handle);
  if (alive == nullptr || key == nullptr || *key == '\0') {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  if (alive->find(key) != nullptr) {
    return BUNDLE_ERROR_KEY_EXISTS;
  }
  alive->entries.push_back({key, type, {stored(value)}});
  return BUNDLE_ERROR_NONE;
}

int get(const char *function, bundle *handle, const char *key, int type,
        bundle_keyval_s::Value **value) {
  *value = nullptr;
  bundle *alive = used(function, handle);
  if (alive == nullptr || key == nullptr) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  bundle_keyval_s *found = alive->find(key);
  if (found == nullptr) {
    return BUNDLE_ERROR_KEY_NOT_AVAILABLE;
  }
  if (found->type != type) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  *value = &found->values.front();
  return BUNDLE_ERROR_NONE;
}

} // namespace
} // namespace fake

using fake::platform;
using fake::PlatformCall;

extern "C" {

bundle *bundle_create(void) {
  const PlatformCall call("bundle_create");
  return call.failure() ? nullptr : platform().bundles.create();
}

int bundle_free(bundle *b) {
  const PlatformCall call("bundle_free", b);
  if (fake::used("bundle_free", b) == nullptr) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  (void)platform().bundles.release(b);
  return BUNDLE_ERROR_NONE;
}

bundle *bundle_dup(bundle *b_from) {
  const PlatformCall call("bundle_dup", b_from);
  if (call.failure() || fake::used("bundle_dup", b_from) == nullptr) {
    return nullptr;
  }
  return platform().bundles.create(fake::contentsOf(b_from));
}

int bundle_add_str(bundle *b, const char *key, const char *str) {
  const PlatformCall call("bundle_add_str", b, key, str);
  if (call.failure()) {
    return *call.failure();
  }
  if (str == nullptr) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  return fake::add("bundle_add_str", b, key, BUNDLE_TYPE_STR, str);
}

int bundle_add_byte(bundle *b, const char *key, const void *byte, const size_t size) {
  const PlatformCall call("bundle_add_byte", b, key, size);
  if (call.failure()) {
    return *call.failure();
  }
  if (byte == nullptr || size == 0) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  return fake::add("bundle_add_byte", b, key, BUNDLE_TYPE_BYTE,
                   std::string(static_cast<const char *>(byte), size));
}

int bundle_get_str(bundle *b, const char *key, char **str) {
  const PlatformCall call("bundle_get_str", b, key);
  bundle_keyval_s::Value *value = nullptr;
  const int result = call.failure() ? *call.failure()
                                    : fake::get("bundle_get_str", b, key, BUNDLE_TYPE_STR, &value);
  *str = value == nullptr ? nullptr : value->text();
  return result;
}

int bundle_get_byte(bundle *b, const char *key, void **byte, size_t *size) {
  const PlatformCall call("bundle_get_byte", b, key);
  bundle_keyval_s::Value *value = nullptr;
  const int result = call.failure()
                         ? *call.failure()
                         : fake::get("bundle_get_byte", b, key, BUNDLE_TYPE_BYTE, &value);
  *byte = value == nullptr ? nullptr : value->storage.data();
  if (size != nullptr && value != nullptr) {
    *size = value->size;
  }
  return result;
}

void bundle_foreach(bundle *b, bundle_iterator_t iter, void *user_data) {
  const PlatformCall call("bundle_foreach", b);
  bundle *alive = fake::used("bundle_foreach", b);
  platform().bundles.lastIterator = iter;
  if (call.failure() || alive == nullptr) {
    return;
  }
  for (bundle_keyval_s &entry : alive->entries) {
    const fake::InsideLibrary inside;
    iter(entry.key.c_str(), entry.type, &entry, user_data);
  }
}

int bundle_keyval_get_type(bundle_keyval_t *kv) {
  const PlatformCall call("bundle_keyval_get_type", kv == nullptr ? nullptr : kv->key.c_str());
  if (call.failure()) {
    return *call.failure();
  }
  return kv == nullptr ? -1 : kv->type;
}

int bundle_keyval_type_is_array(bundle_keyval_t *kv) {
  const PlatformCall call("bundle_keyval_type_is_array", kv == nullptr ? nullptr : kv->key.c_str());
  if (call.failure()) {
    return *call.failure();
  }
  return kv == nullptr ? -1 : (kv->type & BUNDLE_TYPE_ARRAY) != 0;
}

int bundle_keyval_get_basic_val(bundle_keyval_t *kv, void **val, size_t *size) {
  const PlatformCall call("bundle_keyval_get_basic_val", kv == nullptr ? nullptr : kv->key.c_str());
  if (call.failure()) {
    return *call.failure();
  }
  if (kv == nullptr) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  bundle_keyval_s::Value &value = kv->values.front();
  *val = value.storage.data();
  if (size != nullptr) {
    *size = kv->type == BUNDLE_TYPE_STR ? value.size + 1 : value.size;
  }
  return BUNDLE_ERROR_NONE;
}
}
