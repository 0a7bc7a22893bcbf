// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_VALUES_H
#define NORIX_FAKES_VALUES_H

#include <bundle.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <variant>
#include <vector>

namespace fake {

/// One entry of a bundle: a string or bytes have one value, arrays any number.
struct Entry {
  std::string key;
  int type;
  std::vector<std::string> values;
};

/// What a bundle holds, in the order of insertion.
using Contents = std::vector<Entry>;

Entry text(std::string key, std::string value);
Entry bytes(std::string key, std::string value);
/// The eight bytes of a request id in host byte order.
Entry id(std::string key, uint64_t value);
Entry texts(std::string key, std::vector<std::string> values);
Entry byteArrays(std::string key, std::vector<std::string> values);

bool operator==(const Entry &one, const Entry &other);
void PrintTo(const Entry &entry, std::ostream *out);

/// What a bundle of the library holds now. A bundle that is not alive is a misuse.
Contents contentsOf(bundle *handle);

/// One field of a parcel.
struct Int32 {
  int value;
};
struct Bool {
  bool value;
};
struct Text {
  std::string value;
};
struct BundleOf {
  Contents contents;
};
using Field = std::variant<Int32, Bool, Text, BundleOf>;

/// The fields of a parcel, in order.
using Parcel = std::vector<Field>;

bool operator==(const Int32 &one, const Int32 &other);
bool operator==(const Bool &one, const Bool &other);
bool operator==(const Text &one, const Text &other);
bool operator==(const BundleOf &one, const BundleOf &other);
void PrintTo(const Int32 &field, std::ostream *out);
void PrintTo(const Bool &field, std::ostream *out);
void PrintTo(const Text &field, std::ostream *out);
void PrintTo(const BundleOf &field, std::ostream *out);

} // namespace fake

#endif
