// SPDX-License-Identifier: Apache-2.0
#include "probe/Record.h"

#include "assistant/trace/utf8.h"

#include <cstring>
#include <ctime>
#include <unistd.h>

namespace norix::probe {
namespace {

constexpr std::uint64_t kNanoseconds = 1000000000;

thread_local int cachedThreadId = 0;

} // namespace

std::string_view cut(std::string_view text) {
  return assistant::trace::beginningOf(text, Record::kLongestText);
}

std::uint64_t now() {
  timespec time = {};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * kNanoseconds
         + static_cast<std::uint64_t>(time.tv_nsec);
}

int threadId() {
  if (cachedThreadId == 0) {
    cachedThreadId = gettid();
  }
  return cachedThreadId;
}

void forgetThreadId() {
  cachedThreadId = 0;
}

Record::Record(EventKind kind) {
  const Header header = {now(), threadId(), kind};
  std::memcpy(_bytes.data(), &header, sizeof header);
  _size = sizeof header;
}

Record &Record::text(Field field, const char *value) {
  return value != nullptr ? text(field, std::string_view(value)) : *this;
}

Record &Record::text(Field field, std::string_view value) {
  const std::string_view kept = cut(value);
  add(field, ValueType::Text, kept.data(), kept.size());
  return *this;
}

} // namespace norix::probe
