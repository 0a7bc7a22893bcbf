// SPDX-License-Identifier: Apache-2.0
#include "fakes/Values.h"

#include "fakes/Describe.h"

#include <cstring>
#include <ostream>
#include <tuple>
#include <utility>

namespace fake {

Entry text(std::string key, std::string value) {
  return {std::move(key), BUNDLE_TYPE_STR, {std::move(value)}};
}

Entry bytes(std::string key, std::string value) {
  return {std::move(key), BUNDLE_TYPE_BYTE, {std::move(value)}};
}

Entry id(std::string key, uint64_t value) {
  std::string raw(sizeof value, '\0');
  std::memcpy(raw.data(), &value, sizeof value);
  return bytes(std::move(key), std::move(raw));
}

Entry texts(std::string key, std::vector<std::string> values) {
  return {std::move(key), BUNDLE_TYPE_STR_ARRAY, std::move(values)};
}

Entry byteArrays(std::string key, std::vector<std::string> values) {
  return {std::move(key), BUNDLE_TYPE_BYTE_ARRAY, std::move(values)};
}

bool operator==(const Entry &one, const Entry &other) {
  return std::tie(one.key, one.type, one.values) == std::tie(other.key, other.type, other.values);
}

void PrintTo(const Entry &entry, std::ostream *out) {
  *out << entry.key << "=";
  if (entry.type == BUNDLE_TYPE_BYTE && entry.values.front().size() == sizeof(uint64_t)) {
    uint64_t number = 0;
    std::memcpy(&number, entry.values.front().data(), sizeof number);
    *out << "id " << number;
    return;
  }
  *out << "type " << entry.type;
  for (const std::string &value : entry.values) {
    *out << " '" << describe(value.c_str()) << "'";
  }
}

bool operator==(const Int32 &one, const Int32 &other) {
  return one.value == other.value;
}
bool operator==(const Bool &one, const Bool &other) {
  return one.value == other.value;
}
bool operator==(const Text &one, const Text &other) {
  return one.value == other.value;
}
bool operator==(const BundleOf &one, const BundleOf &other) {
  return one.contents == other.contents;
}

void PrintTo(const Int32 &field, std::ostream *out) {
  *out << "int32 " << field.value;
}

void PrintTo(const Bool &field, std::ostream *out) {
  *out << "bool " << (field.value ? "true" : "false");
}

void PrintTo(const Text &field, std::ostream *out) {
  *out << "string '" << describe(field.value.c_str()) << "'";
}

void PrintTo(const BundleOf &field, std::ostream *out) {
  *out << "bundle {";
  const char *separator = "";
  for (const Entry &entry : field.contents) {
    *out << separator;
    PrintTo(entry, out);
    separator = ", ";
  }
  *out << "}";
}

} // namespace fake
