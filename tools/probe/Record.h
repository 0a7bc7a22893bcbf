// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_RECORD_H
#define NORIX_PROBE_RECORD_H

#include "probe/Ring.h"
#include "probe/constantTexts.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace norix::probe {

/// What happened. The manual page norix-probe-events(5) describes each.
enum class EventKind : std::uint8_t {
  Hello,
  Call,
  Received,
  CallbackEntered,
  CallbackLeft,
  CallbackHeld,
  LoopHeld,
  LentBundleFreed,
  LentBundleUsed,
  Log,
  Signal,
  Exit,
  Dropped
};

/// The members of an event.
enum class Field : std::uint8_t {
  Version,
  Pid,
  App,
  Program,
  RealTime,
  Function,
  Result,
  Action,
  Registers,
  Handle,
  Text,
  Length,
  Utf8,
  OnLoop,
  Inside,
  Request,
  RequestId,
  Type,
  Params,
  Kind,
  Deferred,
  Held,
  Exception,
  What,
  Signal,
  Name,
  Priority,
  Tag,
  File,
  Line,
  Status,
  Count,
  CompletionTimeout,
  AllowList
};

/// How the value of a member is stored.
enum class ValueType : std::uint8_t { Number, Boolean, Text, ConstantText, Decimal, Pointer };

/// One event as bytes: cheap to make on the application's thread, turned into JSON by
/// formatRecord() on the probe's own. What does not fit is left out.
class Record {
public:
  /// Texts beyond this are cut, at a character's end.
  static constexpr std::size_t kLongestText = 1024;

  struct Header {
    std::uint64_t time;
    std::int32_t thread;
    EventKind kind;
  };
  struct FieldHeader {
    Field field;
    ValueType type;
    std::uint16_t size;
  };

  /// Stamps the event with the time and the calling thread.
  explicit Record(EventKind kind);

  Record &number(Field field, std::int64_t value);
  Record &boolean(Field field, bool value);
  /// An unsigned number beyond what JSON readers keep exact; written as a string of digits.
  Record &decimal(Field field, std::uint64_t value);
  Record &pointer(Field field, const void *value);
  /// Nothing for null.
  Record &text(Field field, const char *value);
  Record &text(Field field, std::string_view value);
  /// A text of the program's own, such as a format or __func__: where it stays as it is for good,
  /// its address is kept, and its copying left to the thread that sends. Nothing for null.
  Record &constant(Field field, const char *value);

  /// When it was made.
  std::uint64_t time() const {
    Header header;
    std::memcpy(&header, _bytes.data(), sizeof header);
    return header.time;
  }
  const void *data() const { return _bytes.data(); }
  std::size_t size() const { return _size; }

private:
  // Inlined, so that a value of known size is a few stores: several dozen are added per request.
  __attribute__((always_inline)) void add(Field field, ValueType type, const void *value,
                                          std::size_t size) {
    const FieldHeader header = {field, type, static_cast<std::uint16_t>(size)};
    if (_size + sizeof header + size > _bytes.size()) {
      return;
    }
    std::memcpy(&_bytes[_size], &header, sizeof header);
    std::memcpy(&_bytes[_size + sizeof header], value, size);
    _size += sizeof header + size;
  }

  // Not initialised: a record is made several times per request.
  std::array<unsigned char, Ring::kLongestRecord> _bytes;
  std::size_t _size = 0;
};

inline Record &Record::number(Field field, std::int64_t value) {
  add(field, ValueType::Number, &value, sizeof value);
  return *this;
}

inline Record &Record::boolean(Field field, bool value) {
  add(field, ValueType::Boolean, &value, sizeof value);
  return *this;
}

inline Record &Record::decimal(Field field, std::uint64_t value) {
  add(field, ValueType::Decimal, &value, sizeof value);
  return *this;
}

inline Record &Record::pointer(Field field, const void *value) {
  add(field, ValueType::Pointer, &value, sizeof value);
  return *this;
}

inline Record &Record::constant(Field field, const char *value) {
  if (!staysAsItIs(value)) {
    return text(field, value);
  }
  add(field, ValueType::ConstantText, &value, sizeof value);
  return *this;
}

/// As much of a text as a record holds, up to a character's end.
std::string_view cut(std::string_view text);

/// CLOCK_MONOTONIC in nanoseconds.
std::uint64_t now();

/// The calling thread's id, cached.
int threadId();
/// To be called in a child after fork().
void forgetThreadId();

} // namespace norix::probe

#endif
