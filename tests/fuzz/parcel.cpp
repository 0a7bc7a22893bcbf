// SPDX-License-Identifier: Apache-2.0
//
// A parcel as it came from a peer, read with typed reads that the input chooses:
//   count, that many reads (one byte each), the parcel
// What each read finds is written into a second parcel, which thereby repeats the first one.
#include "support/Input.h"
#include "support/bundles.h"
#include "support/check.h"

#include <rpc-port-parcel.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

using fuzz::check;

// What a parcel without a tag has before its fields.
constexpr std::size_t kHeaderSize = 24;

class Parcel {
public:
  Parcel() { check(rpc_port_parcel_create(&_handle) == 0, "an empty parcel can be made"); }
  explicit Parcel(rpc_port_parcel_h handle) : _handle(handle) {}
  Parcel(const Parcel &) = delete;
  Parcel &operator=(const Parcel &) = delete;
  ~Parcel() { rpc_port_parcel_destroy(_handle); }

  rpc_port_parcel_h get() const { return _handle; }

  std::string_view raw() const {
    void *bytes = nullptr;
    unsigned int size = 0;
    check(rpc_port_parcel_get_raw(_handle, &bytes, &size) == 0, "a parcel can be had as bytes");
    return {static_cast<const char *>(bytes), size};
  }

private:
  rpc_port_parcel_h _handle = nullptr;
};

template <typename Value>
using ReadFunction = int (*)(rpc_port_parcel_h, Value *);
template <typename Value>
using WriteFunction = int (*)(rpc_port_parcel_h, Value);

template <typename Value>
void copyValue(const Parcel &from, const Parcel &to, ReadFunction<Value> read,
               WriteFunction<Value> write) {
  Value before;
  std::memset(&before, 1, sizeof before); // A bool, too, can be 1 in memory.
  Value value = before;
  if (read(from.get(), &value) == 0) {
    check(write(to.get(), value) == 0, "what was read can be written");
  } else {
    check(std::memcmp(&value, &before, sizeof value) == 0, "a read that fails changes nothing");
  }
}

void copyString(const Parcel &from, const Parcel &to) {
  char *text = nullptr;
  if (rpc_port_parcel_read_string(from.get(), &text) != 0) {
    check(text == nullptr, "a read that fails changes nothing");
    return;
  }
  check(rpc_port_parcel_write_string(to.get(), text) == 0, "what was read can be written");
  std::free(text);
}

void copyBundle(const Parcel &from, const Parcel &to) {
  bundle *read = nullptr;
  const int result = rpc_port_parcel_read_bundle(from.get(), &read);
  const fuzz::BundlePtr owned(read);
  check((result == 0) == (read != nullptr), "there is a bundle, or an error");
  if (read != nullptr) {
    fuzz::walk(read);
    check(rpc_port_parcel_write_bundle(to.get(), read) == 0, "what was read can be written");
  }
}

void copyBytes(const Parcel &from, const Parcel &to, unsigned int size) {
  std::vector<unsigned char> bytes(size);
  if (rpc_port_parcel_burst_read(from.get(), bytes.data(), size) == 0) {
    check(rpc_port_parcel_burst_write(to.get(), bytes.data(), size) == 0,
          "what was read can be written");
  }
}

// Of an application's own type: a number and a text.
struct OwnType {
  static void from(rpc_port_parcel_h h, void *data) {
    auto *const self = static_cast<OwnType *>(data);
    self->hasNumber = rpc_port_parcel_read_int32(h, &self->number) == 0;
    self->hasText = rpc_port_parcel_read_string(h, &self->text) == 0;
  }
  static void to(rpc_port_parcel_h h, void *data) {
    auto *const self = static_cast<OwnType *>(data);
    if (self->hasNumber) {
      rpc_port_parcel_write_int32(h, self->number);
    }
    if (self->hasText) {
      rpc_port_parcel_write_string(h, self->text);
    }
  }

  int number = 0;
  char *text = nullptr;
  bool hasNumber = false;
  bool hasText = false;
};

void copyOwnType(const Parcel &from, const Parcel &to) {
  rpc_port_parcelable_t type{OwnType::to, OwnType::from};
  OwnType value;
  check(rpc_port_parcel_read(from.get(), &type, &value) == 0, "a type reads itself");
  check(rpc_port_parcel_write(to.get(), &type, &value) == 0, "a type writes itself");
  std::free(value.text);
}

void copyField(const Parcel &from, const Parcel &to, unsigned int kind) {
  switch (kind % 16) {
  case 0:
    return copyValue<char>(from, to, rpc_port_parcel_read_byte, rpc_port_parcel_write_byte);
  case 1:
    return copyValue<short>(from, to, rpc_port_parcel_read_int16, rpc_port_parcel_write_int16);
  case 2:
    return copyValue<int>(from, to, rpc_port_parcel_read_int32, rpc_port_parcel_write_int32);
  case 3:
    return copyValue<long long>(from, to, rpc_port_parcel_read_int64, rpc_port_parcel_write_int64);
  case 4:
    return copyValue<float>(from, to, rpc_port_parcel_read_float, rpc_port_parcel_write_float);
  case 5:
    return copyValue<double>(from, to, rpc_port_parcel_read_double, rpc_port_parcel_write_double);
  case 6:
    return copyValue<bool>(from, to, rpc_port_parcel_read_bool, rpc_port_parcel_write_bool);
  case 7:
    return copyValue<int>(from, to, rpc_port_parcel_read_array_count,
                          rpc_port_parcel_write_array_count);
  case 8:
    return copyString(from, to);
  case 9:
    return copyBundle(from, to);
  case 10:
    return copyOwnType(from, to);
  default:
    return copyBytes(from, to, kind / 16);
  }
}

// The size of the header with its tag.
std::size_t walkHeader(const Parcel &parcel) {
  rpc_port_parcel_header_h header = nullptr;
  check(rpc_port_parcel_get_header(parcel.get(), &header) == 0, "a parcel has a header");
  char *tag = nullptr;
  int number = 0;
  timespec time{};
  check(rpc_port_parcel_header_get_tag(header, &tag) == 0, "a header has a tag");
  check(rpc_port_parcel_header_get_seq_num(header, &number) == 0, "a header has a number");
  check(rpc_port_parcel_header_get_timestamp(header, &time) == 0, "a header has a time");
  check(time.tv_nsec >= 0 && time.tv_nsec < 1000000000, "a time is one");
  check(rpc_port_parcel_header_set_tag(header, tag) == 0, "a tag can be set to itself");
  const std::size_t size = kHeaderSize + std::strlen(tag);
  std::free(tag);
  return size;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string_view reads = input.text();
  const std::string_view raw = input.rest();

  rpc_port_parcel_h handle = nullptr;
  const auto rawSize = static_cast<unsigned int>(raw.size());
  if (rpc_port_parcel_create_from_raw(&handle, raw.data(), rawSize) != 0) {
    check(handle == nullptr, "what is no parcel leaves the handle alone");
    return 0;
  }
  const Parcel parcel(handle);
  check(parcel.raw() == raw, "a parcel is the bytes that it came from");
  const std::size_t headerSize = walkHeader(parcel);

  const Parcel copy;
  for (const char kind : reads) {
    copyField(parcel, copy, static_cast<unsigned char>(kind));
  }

  const std::string_view read = copy.raw().substr(kHeaderSize);
  check(raw.substr(headerSize, read.size()) == read, "reads take what they find, and no more");
  return 0;
}
