// SPDX-License-Identifier: Apache-2.0
//
// What a bundle leaves behind in the memory of its process.
#include "support/Wire.h"

#include <addressSanitizer.h>
#include <fstream>
#include <malloc.h>
#include <unistd.h>

namespace {

constexpr long kMiB = 1 << 20;

long residentBytes() {
  std::ifstream file("/proc/self/statm");
  long total = 0;
  long resident = 0;
  file >> total >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

// The most keys with small values, 32 MiB in all.
Bytes manyValues() {
  Wire wire;
  wire.number(platform::bundles::kMaxKeys);
  for (std::size_t i = 0; i < platform::bundles::kMaxKeys; ++i) {
    wire.entry(2, std::to_string(i), 1000).raw(std::string(1000, 'x'));
  }
  return wire.bytes();
}

// The most slots with small elements, 25 MiB in all.
Bytes manyElements() {
  Wire wire;
  wire.number(1).entry(0x102, "key", platform::bundles::kMaxSlots);
  for (std::size_t i = 0; i < platform::bundles::kMaxSlots; ++i) {
    wire.number(100).raw(std::string(100, 'x'));
  }
  return wire.bytes();
}

class ALargeBundle : public testing::TestWithParam<Bytes (*)()> {};

TEST_P(ALargeBundle, GivesItsMemoryBackToTheSystemWhenItIsFreed) {
  if (platform::kAddressSanitizer) {
    GTEST_SKIP() << "AddressSanitizer keeps what is freed";
  }
  const Bytes bytes = GetParam()();
  malloc_trim(0);
  const long before = residentBytes();

  BundlePtr b(platform::bundle_wire::read(bytes.data(), bytes.size()));
  const long during = residentBytes();
  const std::string later(1000, 'x'); // lies above the values in the heap, which ends there now
  b.reset();

  EXPECT_GT(during - before, 20 * kMiB);
  EXPECT_LT(residentBytes() - before, 4 * kMiB);
}

INSTANTIATE_TEST_SUITE_P(Of, ALargeBundle, testing::Values(manyValues, manyElements),
                         [](const auto &row) {
                           return row.param == manyValues ? "Values" : "Elements";
                         });

} // namespace
