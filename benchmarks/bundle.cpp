// SPDX-License-Identifier: Apache-2.0
//
// How long a peer's bundle holds up the main loop: messages of 64 MiB, each of another shape that
// is costly to read and to free.
#include "harness/CpuTime.h"
#include "harness/Samples.h"
#include "harness/program.h"

#include <CLI/CLI.hpp>
#include <bundle_wire.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

using benchmarks::Samples;
using Bytes = std::vector<unsigned char>;

constexpr std::size_t kMessage = std::size_t{64} << 20;
constexpr double kMedian = 0.5;

struct Shape {
  const char *name;
  Bytes (*make)();
};

void putNumber(Bytes &bytes, std::size_t value) {
  const auto number = static_cast<std::uint32_t>(value);
  unsigned char raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  bytes.insert(bytes.end(), raw, raw + sizeof raw);
}

void putEntry(Bytes &bytes, int type, const std::string &key, std::size_t size) {
  putNumber(bytes, static_cast<std::size_t>(type));
  putNumber(bytes, key.size() + 1);
  putNumber(bytes, size);
  bytes.insert(bytes.end(), key.c_str(), key.c_str() + key.size() + 1);
}

/** Keys in no order, so that each has another place in the index. */
std::string keyOf(std::size_t i) {
  constexpr std::uint32_t kStride = 2654435761U; // odd: the products are all different
  return std::to_string(static_cast<std::uint32_t>(i) * kStride);
}

Bytes emptyMessage(std::size_t keys) {
  Bytes bytes;
  bytes.reserve(kMessage);
  putNumber(bytes, keys);
  return bytes;
}

Bytes withValues(std::size_t valueSize) {
  Bytes bytes = emptyMessage(platform::bundles::kMaxKeys);
  for (std::size_t i = 0; i < platform::bundles::kMaxKeys; ++i) {
    putEntry(bytes, BUNDLE_TYPE_BYTE, keyOf(i), valueSize);
    bytes.resize(bytes.size() + valueSize, 'x');
  }
  return bytes;
}

Bytes withElements(int type, std::size_t elementSize) {
  Bytes bytes = emptyMessage(1);
  putEntry(bytes, type, "key", platform::bundles::kMaxSlots);
  for (std::size_t i = 0; i < platform::bundles::kMaxSlots; ++i) {
    putNumber(bytes, elementSize);
    bytes.resize(bytes.size() + elementSize - 1, 'x');
    bytes.push_back('\0'); // the end of a text, and a byte like others elsewhere
  }
  return bytes;
}

constexpr std::size_t kEntry = 12 + 11; // the header and a key of ten digits
constexpr std::size_t kLargeValue = kMessage / platform::bundles::kMaxKeys - kEntry;
constexpr std::size_t kLargeElement =
    kMessage / platform::bundles::kMaxSlots - sizeof(std::uint32_t) - 1;

Bytes oneText() {
  Bytes bytes = emptyMessage(1);
  const std::size_t size = kMessage - 64;
  putEntry(bytes, BUNDLE_TYPE_STR, "key", size);
  bytes.resize(bytes.size() + size - 1, 'x');
  bytes.push_back('\0');
  return bytes;
}

/** Millions of entries: more than a bundle has. */
Bytes tooManyKeys() {
  Bytes bytes = emptyMessage(kMessage / 24);
  for (std::size_t i = 0; i < kMessage / 24; ++i) {
    putEntry(bytes, BUNDLE_TYPE_BYTE, keyOf(i), 1);
    bytes.push_back('x');
  }
  return bytes;
}

const Shape kShapes[] = {
    {"one text", oneText},
    {"all keys, small values", [] { return withValues(1); }},
    {"all keys, large values", [] { return withValues(kLargeValue); }},
    {"all slots, small elements", [] { return withElements(BUNDLE_TYPE_BYTE_ARRAY, 1); }},
    {"all slots, large elements",
     [] { return withElements(BUNDLE_TYPE_BYTE_ARRAY, kLargeElement); }},
    {"all slots, large texts", [] { return withElements(BUNDLE_TYPE_STR_ARRAY, kLargeElement); }},
    {"too many keys, refused", tooManyKeys},
};

nlohmann::json measure(const Shape &shape, int rounds) {
  const Bytes message = shape.make();
  const benchmarks::CpuTime cpuTime; // other programs on the machine do not count
  Samples samples;
  bool isRead = false;
  for (int i = 0; i < rounds; ++i) {
    const double start = cpuTime.now();
    bundle *const b = platform::bundle_wire::read(message.data(), message.size());
    isRead = b != nullptr && bundle_free(b) == BUNDLE_ERROR_NONE;
    samples.addNanoseconds(cpuTime.now() - start);
  }
  return {{"name", shape.name},
          {"bytes", message.size()},
          {"read", isRead},
          {"p50", samples.quantile(kMedian)}};
}

int run(int argc, char **argv) {
  int rounds = 11;
  CLI::App commandLine("Reads and frees bundles of up to 64 MiB; writes JSON, in nanoseconds "
                       "of CPU time.");
  commandLine.add_option("--rounds", rounds, "How often each is read")->check(CLI::PositiveNumber);
  CLI11_PARSE(commandLine, argc, argv);

  nlohmann::json shapes;
  for (const Shape &shape : kShapes) {
    shapes.push_back(measure(shape, rounds));
  }
  std::cout << nlohmann::json{{"benchmark", "bundle"}, {"shapes", shapes}}.dump(2) << "\n";
  return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char **argv) {
  return benchmarks::runProgram("bundle", run, argc, argv);
}
