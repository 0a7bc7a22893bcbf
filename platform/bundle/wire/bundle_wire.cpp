// SPDX-License-Identifier: Apache-2.0
#include "bundle_wire.h"

#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

namespace platform::bundle_wire {
namespace {

using bundles::kMaxKeyBytes;
using bundles::kMaxKeys;
using bundles::kMaxSlots;

// The numbers before the key and the value of an entry.
struct EntryHeader {
  std::uint32_t type;
  std::uint32_t keySize;
  std::uint32_t size;
};
static_assert(sizeof(EntryHeader) == 12, "the wire form has no padding");

// Writes what fits, and counts everything.
class Writer {
public:
  Writer(unsigned char *out, std::size_t room) : _out(out), _room(room) {}

  void number(std::size_t value) {
    const std::uint32_t number = narrow(value);
    bytes(&number, sizeof number);
  }

  void header(int type, std::size_t keySize, std::size_t size) {
    const EntryHeader header{static_cast<std::uint32_t>(type), narrow(keySize), narrow(size)};
    bytes(&header, sizeof header);
  }

  void bytes(const void *from, std::size_t size) {
    const std::uint64_t end = _count + size;
    if (end <= _room) {
      std::memcpy(_out + _count, from, size);
    }
    _count = end;
  }

  std::size_t count() const { return _count <= kMaxSize ? static_cast<std::size_t>(_count) : 0; }

private:
  // A value that does not fit into 32 bits makes the wire form longer than kMaxSize anyway.
  static std::uint32_t narrow(std::size_t value) { return static_cast<std::uint32_t>(value); }

  unsigned char *_out;
  std::size_t _room;
  std::uint64_t _count = 0; // a std::size_t of 32 bits could overflow
};

void putArray(Writer &writer, std::string_view key, int type, bundle_keyval_t *kv) {
  void **slots = nullptr;
  unsigned int length = 0;
  std::size_t *sizes = nullptr;
  bundle_keyval_get_array_val(kv, &slots, &length, &sizes);
  writer.header(type, key.size() + 1, length);
  writer.bytes(key.data(), key.size() + 1);
  for (unsigned int i = 0; i < length; ++i) {
    writer.number(sizes[i]);
    if (sizes[i] > 0) {
      writer.bytes(slots[i], sizes[i]);
    }
  }
}

void putBasic(Writer &writer, std::string_view key, int type, bundle_keyval_t *kv) {
  void *value = nullptr;
  std::size_t size = 0;
  bundle_keyval_get_basic_val(kv, &value, &size);
  writer.header(type, key.size() + 1, size);
  writer.bytes(key.data(), key.size() + 1);
  writer.bytes(value, size);
}

// The bundle_iterator_t that writes one entry.
void putEntry(const char *key, const int type, const bundle_keyval_t *kv, void *userData) {
  Writer &writer = *static_cast<Writer *>(userData);
  auto *value = const_cast<bundle_keyval_t *>(kv); // the getters do not change it
  if ((type & BUNDLE_TYPE_ARRAY) != 0) {
    putArray(writer, key, type, value);
  } else {
    putBasic(writer, key, type, value);
  }
}

// Reads a wire form piece by piece. A function returns null or false if the piece is invalid.
class Reader {
public:
  Reader(const unsigned char *bytes, std::size_t length) : _next(bytes), _left(length) {}

  std::size_t left() const { return _left; }

  template <typename Value>
  bool take(Value &value) {
    const unsigned char *from = bytes(sizeof value);
    if (from == nullptr) {
      return false;
    }
    std::memcpy(&value, from, sizeof value);
    return true;
  }

  const unsigned char *bytes(std::size_t size) {
    if (size > _left) {
      return nullptr;
    }
    const unsigned char *from = _next;
    _next += size;
    _left -= size;
    return from;
  }

  // A text of that many bytes, of which the last one and no other is a NUL.
  const char *text(std::size_t size) {
    const unsigned char *from = bytes(size);
    if (from == nullptr || size == 0 || std::memchr(from, 0, size) != from + size - 1) {
      return nullptr;
    }
    return reinterpret_cast<const char *>(from);
  }

  // A key; null also when all keys so far exceed the limit of a bundle.
  const char *key(std::size_t size) {
    const char *const key = text(size);
    _keyBytes += size;
    return _keyBytes <= kMaxKeyBytes ? key : nullptr;
  }

  // Whether that many slots fit into the bytes left, and into a bundle with those so far.
  bool takeSlots(std::uint32_t slots) {
    _slots += slots;
    return slots <= _left / kMinSlotSize && _slots <= kMaxSlots;
  }

private:
  const unsigned char *_next;
  std::size_t _left;
  std::uint64_t _keyBytes = 0; // 64 bits: a claimed size cannot make them overflow
  std::uint64_t _slots = 0;
};

int addStrArray(bundle *b, const char *key, std::uint32_t length, Reader &reader) {
  std::vector<const char *> slots(length, nullptr);
  for (const char *&slot : slots) {
    std::uint32_t size = 0;
    if (!reader.take(size)) {
      return BUNDLE_ERROR_INVALID_PARAMETER;
    }
    slot = reader.text(size);
    if (size > 0 && slot == nullptr) {
      return BUNDLE_ERROR_INVALID_PARAMETER;
    }
  }
  return bundle_add_str_array(b, key, slots.data(), static_cast<int>(length));
}

int addByteArray(bundle *b, const char *key, std::uint32_t length, Reader &reader) {
  int result = bundle_add_byte_array(b, key, length);
  for (std::uint32_t i = 0; i < length && result == BUNDLE_ERROR_NONE; ++i) {
    std::uint32_t size = 0;
    if (!reader.take(size)) {
      return BUNDLE_ERROR_INVALID_PARAMETER;
    }
    if (size > 0) {
      result = bundle_set_byte_array_element(b, key, i, reader.bytes(size), size);
    }
  }
  return result;
}

int addArray(bundle *b, const char *key, const EntryHeader &header, Reader &reader) {
  if (!reader.takeSlots(header.size)) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
  return header.type == BUNDLE_TYPE_STR_ARRAY ? addStrArray(b, key, header.size, reader)
                                              : addByteArray(b, key, header.size, reader);
}

// Adds the next entry. The bundle itself refuses nulls and repeated keys.
int addEntry(bundle *b, Reader &reader) {
  EntryHeader header{};
  if (!reader.take(header)) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }

  const char *key = reader.key(header.keySize);
  switch (header.type) {
  case BUNDLE_TYPE_STR:
    return bundle_add_str(b, key, reader.text(header.size));
  case BUNDLE_TYPE_BYTE:
    return bundle_add_byte(b, key, reader.bytes(header.size), header.size);
  case BUNDLE_TYPE_STR_ARRAY:
  case BUNDLE_TYPE_BYTE_ARRAY:
    return addArray(b, key, header, reader);
  default:
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }
}

int addEntries(bundle *b, Reader &reader) {
  std::uint32_t count = 0;
  if (!reader.take(count) || count > kMaxKeys) {
    return BUNDLE_ERROR_INVALID_PARAMETER;
  }

  for (std::uint32_t i = 0; i < count; ++i) {
    const int result = addEntry(b, reader);
    if (result != BUNDLE_ERROR_NONE) {
      return result;
    }
  }
  return reader.left() == 0 ? BUNDLE_ERROR_NONE : BUNDLE_ERROR_INVALID_PARAMETER;
}

struct BundleDeleter {
  void operator()(bundle *b) const { bundle_free(b); }
};
using BundlePtr = std::unique_ptr<bundle, BundleDeleter>;

// Every other error of the bundle means that these bytes are not a wire form.
int reasonOf(int result) {
  return result == BUNDLE_ERROR_OUT_OF_MEMORY ? result : BUNDLE_ERROR_INVALID_PARAMETER;
}

} // namespace

std::size_t size(bundle *b) {
  return writeWithin(b, nullptr, 0);
}

void write(bundle *b, unsigned char *out) {
  writeWithin(b, out, kMaxSize);
}

std::size_t writeWithin(bundle *b, unsigned char *out, std::size_t room) {
  Writer writer(out, room);
  writer.number(static_cast<std::size_t>(bundle_get_count(b)));
  bundle_foreach(b, putEntry, &writer);
  return writer.count();
}

bundle *read(const unsigned char *bytes, std::size_t length) {
  if (bytes == nullptr || length > kMaxSize) {
    set_last_result(BUNDLE_ERROR_INVALID_PARAMETER);
    return nullptr;
  }

  BundlePtr b(bundle_create());
  int result = BUNDLE_ERROR_OUT_OF_MEMORY;
  try {
    Reader reader(bytes, length);
    result = b != nullptr ? addEntries(b.get(), reader) : result;
  } catch (const std::bad_alloc &) {
    result = BUNDLE_ERROR_OUT_OF_MEMORY;
  }
  if (result == BUNDLE_ERROR_NONE) {
    return b.release();
  }

  b.reset(); // before the last result is set: it sets it, too
  set_last_result(reasonOf(result));
  return nullptr;
}

} // namespace platform::bundle_wire
