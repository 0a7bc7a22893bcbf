// SPDX-License-Identifier: Apache-2.0
#include "probe/json.h"

#include "assistant/trace/utf8.h"
#include "probe/Record.h"

#include <array>
#include <charconv>
#include <cstring>
#include <string_view>

namespace norix::probe {
namespace {

using assistant::trace::characterLength;

// In the order of EventKind.
constexpr std::array<std::string_view, 13> kEventNames = {"hello",
                                                          "call",
                                                          "received",
                                                          "callback-entered",
                                                          "callback-left",
                                                          "callback-held",
                                                          "loop-held",
                                                          "lent-bundle-freed",
                                                          "lent-bundle-used",
                                                          "log",
                                                          "signal",
                                                          "exit",
                                                          "dropped"};

// In the order of Field.
constexpr std::array<std::string_view, 34> kFieldNames = {
    "version",  "pid",       "app",
    "program",  "realtime",  "function",
    "result",   "action",    "registers",
    "handle",   "text",      "length",
    "utf8",     "onLoop",    "inside",
    "request",  "requestId", "type",
    "params",   "kind",      "deferred",
    "held",     "exception", "what",
    "signal",   "name",      "priority",
    "tag",      "file",      "line",
    "status",   "count",     "completionTimeout",
    "allowList"};

class Writer {
public:
  explicit Writer(char *at) : _start(at), _at(at) {}

  std::size_t length() const { return static_cast<std::size_t>(_at - _start); }

  void raw(std::string_view text) {
    std::memcpy(_at, text.data(), text.size());
    _at += text.size();
  }
  void key(std::string_view name) {
    raw(",\"");
    raw(name);
    raw("\":");
  }
  template <typename Number>
  void number(Number value, int base = 10) {
    constexpr std::size_t kLongestNumber = 24;
    _at = std::to_chars(_at, _at + kLongestNumber, value, base).ptr;
  }
  void text(std::string_view value);

private:
  void escape(unsigned char byte);

  char *_start;
  char *_at;
};

void Writer::text(std::string_view value) {
  raw("\"");
  while (!value.empty()) {
    const auto first = static_cast<unsigned char>(value.front());
    // Bytes that are no UTF-8 are written as the character of their number.
    const std::size_t length = characterLength(value);
    if (length == 0 || first < 0x20 || first == '"' || first == '\\' || first == 0x7f) {
      escape(first);
      value.remove_prefix(1);
    } else {
      raw(value.substr(0, length));
      value.remove_prefix(length);
    }
  }
  raw("\"");
}

void Writer::escape(unsigned char byte) {
  constexpr const char *kDigits = "0123456789abcdef";
  if (byte == '"' || byte == '\\') {
    raw(byte == '"' ? "\\\"" : "\\\\");
    return;
  }
  raw("\\u00");
  *_at++ = kDigits[byte >> 4U];
  *_at++ = kDigits[byte & 0xfU];
}

template <typename Value>
Value valueAt(const unsigned char *bytes) {
  Value value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

void writeValue(Writer &writer, const Record::FieldHeader &header, const unsigned char *value) {
  switch (header.type) {
  case ValueType::Number:
    writer.number(valueAt<std::int64_t>(value));
    break;
  case ValueType::Boolean:
    writer.raw(valueAt<bool>(value) ? "true" : "false");
    break;
  case ValueType::Decimal:
    writer.raw("\"");
    writer.number(valueAt<std::uint64_t>(value));
    writer.raw("\"");
    break;
  case ValueType::Pointer:
    writer.raw("\"0x");
    writer.number(valueAt<std::uintptr_t>(value), 16);
    writer.raw("\"");
    break;
  case ValueType::Text:
    writer.text({reinterpret_cast<const char *>(value), header.size});
    break;
  case ValueType::ConstantText:
    writer.text(cut(valueAt<const char *>(value)));
    break;
  }
}

} // namespace

std::size_t formatRecord(const void *record, std::size_t size, std::uint64_t serial, char *line) {
  const auto *const bytes = static_cast<const unsigned char *>(record);
  const auto header = valueAt<Record::Header>(bytes);
  Writer writer(line);
  writer.raw("{\"event\":\"");
  writer.raw(kEventNames[static_cast<std::size_t>(header.kind)]);
  writer.raw("\",\"n\":");
  writer.number(serial);
  writer.key("t");
  writer.number(header.time);
  writer.key("thread");
  writer.number(header.thread);

  for (std::size_t at = sizeof header; at < size;) {
    const auto field = valueAt<Record::FieldHeader>(bytes + at);
    at += sizeof field;
    writer.key(kFieldNames[static_cast<std::size_t>(field.field)]);
    writeValue(writer, field, bytes + at);
    at += field.size;
  }
  writer.raw("}\n");
  return writer.length();
}

} // namespace norix::probe
