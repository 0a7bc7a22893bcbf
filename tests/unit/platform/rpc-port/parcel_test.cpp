// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <gmock/gmock.h>
#include <memory>
#include <rpc-port-parcel.h>
#include <string>
#include <vector>

namespace rpc_test {
namespace {

using testing::ElementsAre;

constexpr std::size_t kHeaderSize = 24;

/// Releases a parcel.
struct DestroyParcel {
  void operator()(void *parcel) const { rpc_port_parcel_destroy(parcel); }
};
using Parcel = std::unique_ptr<void, DestroyParcel>;

Parcel makeParcel() {
  rpc_port_parcel_h parcel = nullptr;
  rpc_port_parcel_create(&parcel);
  return Parcel(parcel);
}

std::vector<unsigned char> rawOf(const Parcel &parcel) {
  void *raw = nullptr;
  unsigned int size = 0;
  rpc_port_parcel_get_raw(parcel.get(), &raw, &size);
  const auto *bytes = static_cast<const unsigned char *>(raw);
  return {bytes, bytes + size};
}

Parcel fromRaw(const std::vector<unsigned char> &raw) {
  rpc_port_parcel_h parcel = nullptr;
  rpc_port_parcel_create_from_raw(&parcel, raw.data(), static_cast<unsigned int>(raw.size()));
  return Parcel(parcel);
}

/// A parcel as it travels, with these bytes for its fields.
Parcel withFields(const std::vector<unsigned char> &fields) {
  std::vector<unsigned char> raw(kHeaderSize, 0);
  raw.insert(raw.end(), fields.begin(), fields.end());
  return fromRaw(raw);
}

/// A text whose release is seen to.
struct Text {
  ~Text() { std::free(characters); }
  char *characters = nullptr;
};

TEST(AParcel, GivesBackEveryTypeInTheOrderOfWriting) {
  const Parcel parcel = makeParcel();
  rpc_port_parcel_write_byte(parcel.get(), 'x');
  rpc_port_parcel_write_int16(parcel.get(), -2);
  rpc_port_parcel_write_int32(parcel.get(), -3);
  rpc_port_parcel_write_int64(parcel.get(), -4);
  rpc_port_parcel_write_float(parcel.get(), 0.5F);
  rpc_port_parcel_write_double(parcel.get(), 0.25);
  rpc_port_parcel_write_bool(parcel.get(), true);
  rpc_port_parcel_write_array_count(parcel.get(), 7);
  rpc_port_parcel_write_string(parcel.get(), "text");

  char byte = 0;
  short int16 = 0;
  int int32 = 0;
  long long int64 = 0;
  float singlePrecision = 0;
  double doublePrecision = 0;
  bool flag = false;
  int count = 0;
  Text text;
  rpc_port_parcel_read_byte(parcel.get(), &byte);
  rpc_port_parcel_read_int16(parcel.get(), &int16);
  rpc_port_parcel_read_int32(parcel.get(), &int32);
  rpc_port_parcel_read_int64(parcel.get(), &int64);
  rpc_port_parcel_read_float(parcel.get(), &singlePrecision);
  rpc_port_parcel_read_double(parcel.get(), &doublePrecision);
  rpc_port_parcel_read_bool(parcel.get(), &flag);
  rpc_port_parcel_read_array_count(parcel.get(), &count);
  rpc_port_parcel_read_string(parcel.get(), &text.characters);

  EXPECT_EQ(byte, 'x');
  EXPECT_EQ(int16, -2);
  EXPECT_EQ(int32, -3);
  EXPECT_EQ(int64, -4);
  EXPECT_EQ(singlePrecision, 0.5F);
  EXPECT_EQ(doublePrecision, 0.25);
  EXPECT_TRUE(flag);
  EXPECT_EQ(count, 7);
  EXPECT_STREQ(text.characters, "text");
}

TEST(AParcel, LaysItsFieldsOutWithoutPadding) {
  const Parcel parcel = makeParcel();
  rpc_port_parcel_write_bool(parcel.get(), true);
  rpc_port_parcel_write_int32(parcel.get(), 2);
  rpc_port_parcel_write_string(parcel.get(), "ab");

  std::vector<unsigned char> raw = rawOf(parcel);

  raw.erase(raw.begin(), raw.begin() + kHeaderSize);
  EXPECT_THAT(raw, ElementsAre(1, 2, 0, 0, 0, 3, 0, 0, 0, 'a', 'b', 0));
}

TEST(AParcel, CarriesABundle) {
  bundle *written = bundle_create();
  bundle_add_str(written, "key", "value");
  const Parcel parcel = makeParcel();
  rpc_port_parcel_write_int32(parcel.get(), 4);
  ASSERT_EQ(rpc_port_parcel_write_bundle(parcel.get(), written), RPC_PORT_ERROR_NONE);
  rpc_port_parcel_write_int32(parcel.get(), 5);
  bundle_free(written);

  int before = 0;
  int after = 0;
  bundle *read = nullptr;
  rpc_port_parcel_read_int32(parcel.get(), &before);
  const int result = rpc_port_parcel_read_bundle(parcel.get(), &read);
  rpc_port_parcel_read_int32(parcel.get(), &after);

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_STREQ(bundle_get_val(read, "key"), "value");
  EXPECT_EQ(before, 4);
  EXPECT_EQ(after, 5);
  bundle_free(read);
}

TEST(AParcel, CarriesABundleThatIsLongerThanAUsualMessage) {
  const std::string value(100000, 'v');
  bundle *written = bundle_create();
  bundle_add_str(written, "key", value.c_str());
  const Parcel parcel = makeParcel();
  rpc_port_parcel_write_bundle(parcel.get(), written);
  bundle_free(written);

  bundle *read = nullptr;
  rpc_port_parcel_read_bundle(parcel.get(), &read);

  EXPECT_EQ(bundle_get_val(read, "key"), value);
  bundle_free(read);
}

TEST(AParcel, CarriesRawBytes) {
  const std::vector<unsigned char> written = {0, 1, 0, 255};
  const Parcel parcel = makeParcel();
  rpc_port_parcel_burst_write(parcel.get(), written.data(), 4);

  std::vector<unsigned char> read(4);
  const int result = rpc_port_parcel_burst_read(parcel.get(), read.data(), 4);

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_EQ(read, written);
}

TEST(AParcel, CallsAUserDefinedTypeToWriteAndRead) {
  rpc_port_parcelable_t type = {[](rpc_port_parcel_h h, void *data) {
                                  rpc_port_parcel_write_int32(h, *static_cast<int *>(data));
                                },
                                [](rpc_port_parcel_h h, void *data) {
                                  rpc_port_parcel_read_int32(h, static_cast<int *>(data));
                                }};
  const Parcel parcel = makeParcel();
  int written = 42;
  int read = 0;

  rpc_port_parcel_write(parcel.get(), &type, &written);
  rpc_port_parcel_read(parcel.get(), &type, &read);

  EXPECT_EQ(read, 42);
}

TEST(AParcel, RemembersItsTagAndSequenceNumber) {
  const Parcel parcel = makeParcel();
  rpc_port_parcel_header_h header = nullptr;
  rpc_port_parcel_get_header(parcel.get(), &header);
  rpc_port_parcel_header_set_tag(header, "6.5");
  rpc_port_parcel_header_set_seq_num(header, -9);

  Text tag;
  int number = 0;
  rpc_port_parcel_header_get_tag(header, &tag.characters);
  rpc_port_parcel_header_get_seq_num(header, &number);

  EXPECT_STREQ(tag.characters, "6.5");
  EXPECT_EQ(number, -9);
}

TEST(AParcel, HasTheTimeOfItsCreation) {
  timespec before = {};
  timespec after = {};
  timespec made = {};
  rpc_port_parcel_header_h header = nullptr;
  clock_gettime(CLOCK_MONOTONIC_RAW, &before);
  const Parcel parcel = makeParcel();
  clock_gettime(CLOCK_MONOTONIC_RAW, &after);

  rpc_port_parcel_get_header(parcel.get(), &header);
  rpc_port_parcel_header_get_timestamp(header, &made);

  const auto nanoseconds = [](const timespec &time) {
    return static_cast<long long>(time.tv_sec) * 1000000000 + time.tv_nsec;
  };
  EXPECT_LE(nanoseconds(before), nanoseconds(made));
  EXPECT_LE(nanoseconds(made), nanoseconds(after));
}

TEST(AParcel, ComesBackFromItsRawBytesUnchanged) {
  const Parcel parcel = makeParcel();
  rpc_port_parcel_header_h header = nullptr;
  rpc_port_parcel_get_header(parcel.get(), &header);
  rpc_port_parcel_header_set_tag(header, "tag");
  rpc_port_parcel_header_set_seq_num(header, 3);
  rpc_port_parcel_write_string(parcel.get(), "text");

  const Parcel copy = fromRaw(rawOf(parcel));

  EXPECT_EQ(rawOf(copy), rawOf(parcel));
}

TEST(AParcel, CanBeWrittenToAfterItCameFromRawBytes) {
  const Parcel parcel = withFields({1});
  rpc_port_parcel_write_byte(parcel.get(), 2);

  char first = 0;
  char second = 0;
  rpc_port_parcel_read_byte(parcel.get(), &first);
  rpc_port_parcel_read_byte(parcel.get(), &second);

  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 2);
}

TEST(AParcel, RefusesRawBytesCutAnywhereInTheHeader) {
  const Parcel parcel = makeParcel();
  rpc_port_parcel_header_h header = nullptr;
  rpc_port_parcel_get_header(parcel.get(), &header);
  rpc_port_parcel_header_set_tag(header, "tag");
  const std::vector<unsigned char> raw = rawOf(parcel);

  for (std::size_t size = 0; size < raw.size(); ++size) {
    rpc_port_parcel_h made = nullptr;
    const int result =
        rpc_port_parcel_create_from_raw(&made, raw.data(), static_cast<unsigned int>(size));
    EXPECT_EQ(result, RPC_PORT_ERROR_INVALID_PARAMETER) << size;
    EXPECT_EQ(made, nullptr) << size;
  }
}

TEST(AParcel, RefusesRawBytesWithANulInTheTag) {
  std::vector<unsigned char> raw(kHeaderSize, 0);
  raw[0] = 2;
  raw.insert(raw.end(), {'a', 0});

  const Parcel parcel = fromRaw(raw);

  EXPECT_EQ(parcel, nullptr);
}

TEST(AParcel, RefusesRawBytesWithATimeThatIsNone) {
  std::vector<unsigned char> raw(kHeaderSize, 0);
  raw[23] = 0x80; // The nanoseconds' sign.

  const Parcel parcel = fromRaw(raw);

  EXPECT_EQ(parcel, nullptr);
}

TEST(AParcel, RefusesATagLongerThanItsBound) {
  const Parcel parcel = makeParcel();
  rpc_port_parcel_header_h header = nullptr;
  rpc_port_parcel_get_header(parcel.get(), &header);

  EXPECT_EQ(rpc_port_parcel_header_set_tag(header, std::string(4096, 't').c_str()),
            RPC_PORT_ERROR_NONE);
  EXPECT_EQ(rpc_port_parcel_header_set_tag(header, std::string(4097, 't').c_str()),
            RPC_PORT_ERROR_INVALID_PARAMETER);
}

TEST(AParcel, RefusesToGrowBeyondAMessage) {
  const Parcel parcel = makeParcel();
  const std::vector<unsigned char> bytes(std::size_t{32} << 20);
  const auto size = static_cast<unsigned int>(bytes.size());
  ASSERT_EQ(rpc_port_parcel_burst_write(parcel.get(), bytes.data(), size), RPC_PORT_ERROR_NONE);

  const int result = rpc_port_parcel_burst_write(parcel.get(), bytes.data(), size);

  EXPECT_EQ(result, RPC_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(rawOf(parcel).size(), kHeaderSize + bytes.size());
}

/// A read of one type, and how many bytes it needs.
struct Read {
  const char *name;
  std::size_t size;
  int (*read)(rpc_port_parcel_h);
};

void PrintTo(const Read &row, std::ostream *out) {
  *out << row.name;
}

template <typename Value, int (*Function)(rpc_port_parcel_h, Value *)>
int readUntouched(rpc_port_parcel_h h) {
  Value value{};
  // NOLINTBEGIN(bugprone-sizeof-expression, bugprone-suspicious-memory-comparison): every bit
  // counts.
  std::memset(&value, 1, sizeof value);
  const Value before = value;
  const int result = Function(h, &value);
  EXPECT_EQ(std::memcmp(&value, &before, sizeof value), 0);
  // NOLINTEND(bugprone-sizeof-expression, bugprone-suspicious-memory-comparison)
  return result;
}

int readBytesUntouched(rpc_port_parcel_h h) {
  std::vector<unsigned char> bytes(3, 9);
  const int result = rpc_port_parcel_burst_read(h, bytes.data(), 3);
  EXPECT_THAT(bytes, ElementsAre(9, 9, 9));
  return result;
}

class AReadPastTheEnd : public testing::TestWithParam<Read> {};

TEST_P(AReadPastTheEnd, FailsAndLeavesEverythingAsItIs) {
  for (std::size_t size = 0; size < GetParam().size; ++size) {
    const Parcel parcel = withFields(std::vector<unsigned char>(size, 0));

    const int result = GetParam().read(parcel.get());

    EXPECT_EQ(result, RPC_PORT_ERROR_IO_ERROR) << size;
    std::vector<unsigned char> rest(size + 1);
    if (size > 0) {
      EXPECT_EQ(
          rpc_port_parcel_burst_read(parcel.get(), rest.data(), static_cast<unsigned int>(size)),
          RPC_PORT_ERROR_NONE)
          << "the position has moved";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    OfAnyType, AReadPastTheEnd,
    testing::Values(Read{"Byte", 1, readUntouched<char, rpc_port_parcel_read_byte>},
                    Read{"Int16", 2, readUntouched<short, rpc_port_parcel_read_int16>},
                    Read{"Int32", 4, readUntouched<int, rpc_port_parcel_read_int32>},
                    Read{"Int64", 8, readUntouched<long long, rpc_port_parcel_read_int64>},
                    Read{"Float", 4, readUntouched<float, rpc_port_parcel_read_float>},
                    Read{"Double", 8, readUntouched<double, rpc_port_parcel_read_double>},
                    Read{"Bool", 1, readUntouched<bool, rpc_port_parcel_read_bool>},
                    Read{"ArrayCount", 4, readUntouched<int, rpc_port_parcel_read_array_count>},
                    Read{"String", 5, readUntouched<char *, rpc_port_parcel_read_string>},
                    Read{"Bundle", 8, readUntouched<bundle *, rpc_port_parcel_read_bundle>},
                    Read{"Bytes", 3, readBytesUntouched}),
    [](const auto &test) { return test.param.name; });

/// Fields that no write has made, and the read that has to find it out.
struct Malformed {
  const char *name;
  std::vector<unsigned char> fields;
  int (*read)(rpc_port_parcel_h);
};

void PrintTo(const Malformed &row, std::ostream *out) {
  *out << row.name;
}

class AMalformedField : public testing::TestWithParam<Malformed> {};

TEST_P(AMalformedField, IsNotRead) {
  const Parcel parcel = withFields(GetParam().fields);

  const int result = GetParam().read(parcel.get());

  EXPECT_EQ(result, RPC_PORT_ERROR_IO_ERROR);
}

INSTANTIATE_TEST_SUITE_P(
    OfAnyType, AMalformedField,
    testing::Values(Malformed{"BoolTwo", {2}, readUntouched<bool, rpc_port_parcel_read_bool>},
                    Malformed{"BoolAllOnes", {255}, readUntouched<bool, rpc_port_parcel_read_bool>},
                    Malformed{"NegativeCount",
                              {255, 255, 255, 255},
                              readUntouched<int, rpc_port_parcel_read_array_count>},
                    Malformed{"StringOfLengthZero",
                              {0, 0, 0, 0},
                              readUntouched<char *, rpc_port_parcel_read_string>},
                    Malformed{"StringWithoutNul",
                              {2, 0, 0, 0, 'a', 'b'},
                              readUntouched<char *, rpc_port_parcel_read_string>},
                    Malformed{"StringWithNulInside",
                              {3, 0, 0, 0, 'a', 0, 0},
                              readUntouched<char *, rpc_port_parcel_read_string>},
                    Malformed{"StringOfTheLongestLength",
                              {255, 255, 255, 255, 'a', 0},
                              readUntouched<char *, rpc_port_parcel_read_string>},
                    Malformed{"BundleOfLengthZero",
                              {0, 0, 0, 0},
                              readUntouched<bundle *, rpc_port_parcel_read_bundle>},
                    Malformed{"BundleOfGarbage",
                              {4, 0, 0, 0, 9, 9, 9, 9},
                              readUntouched<bundle *, rpc_port_parcel_read_bundle>},
                    Malformed{"BundleOfTheLongestLength",
                              {255, 255, 255, 255, 0, 0, 0, 0},
                              readUntouched<bundle *, rpc_port_parcel_read_bundle>}),
    [](const auto &test) { return test.param.name; });

TEST(AParcelFunction, RefusesANullHandle) {
  int number = 0;
  rpc_port_parcelable_t type = {[](rpc_port_parcel_h, void *) {}, [](rpc_port_parcel_h, void *) {}};
  void *raw = nullptr;
  unsigned int size = 0;
  rpc_port_parcel_header_h header = nullptr;

  const std::vector<int> results = {
      rpc_port_parcel_create(nullptr),
      rpc_port_parcel_destroy(nullptr),
      rpc_port_parcel_write_byte(nullptr, 1),
      rpc_port_parcel_write_int32(nullptr, 1),
      rpc_port_parcel_write_string(nullptr, ""),
      rpc_port_parcel_write(nullptr, &type, nullptr),
      rpc_port_parcel_read_int32(nullptr, &number),
      rpc_port_parcel_read(nullptr, &type, nullptr),
      rpc_port_parcel_get_header(nullptr, &header),
      rpc_port_parcel_header_set_seq_num(nullptr, 1),
      rpc_port_parcel_header_get_seq_num(nullptr, &number),
      rpc_port_parcel_get_raw(nullptr, &raw, &size),
  };

  EXPECT_THAT(results, testing::Each(RPC_PORT_ERROR_INVALID_PARAMETER));
}

TEST(AParcelFunction, RefusesANullArgument) {
  const Parcel owned = makeParcel();
  rpc_port_parcel_h parcel = owned.get();
  rpc_port_parcel_header_h header = nullptr;
  rpc_port_parcel_get_header(parcel, &header);
  rpc_port_parcelable_t type = {nullptr, nullptr};
  unsigned char byte = 0;
  void *raw = nullptr;

  const std::vector<int> results = {
      rpc_port_parcel_create_from_raw(nullptr, &byte, 1),
      rpc_port_parcel_create_from_raw(&raw, nullptr, 1),
      rpc_port_parcel_create_from_port(nullptr, &byte),
      rpc_port_parcel_create_from_port(&raw, nullptr),
      rpc_port_parcel_send(parcel, nullptr),
      rpc_port_parcel_write_string(parcel, nullptr),
      rpc_port_parcel_write_bundle(parcel, nullptr),
      rpc_port_parcel_write_array_count(parcel, -1),
      rpc_port_parcel_burst_write(parcel, nullptr, 1),
      rpc_port_parcel_burst_write(parcel, &byte, 0),
      rpc_port_parcel_write(parcel, nullptr, nullptr),
      rpc_port_parcel_write(parcel, &type, nullptr),
      rpc_port_parcel_read_byte(parcel, nullptr),
      rpc_port_parcel_read_bool(parcel, nullptr),
      rpc_port_parcel_read_string(parcel, nullptr),
      rpc_port_parcel_read_bundle(parcel, nullptr),
      rpc_port_parcel_read_array_count(parcel, nullptr),
      rpc_port_parcel_burst_read(parcel, nullptr, 1),
      rpc_port_parcel_read(parcel, &type, nullptr),
      rpc_port_parcel_get_header(parcel, nullptr),
      rpc_port_parcel_header_set_tag(header, nullptr),
      rpc_port_parcel_header_get_tag(header, nullptr),
      rpc_port_parcel_header_get_seq_num(header, nullptr),
      rpc_port_parcel_header_get_timestamp(header, nullptr),
      rpc_port_parcel_get_raw(parcel, nullptr, nullptr),
  };

  EXPECT_THAT(results, testing::Each(RPC_PORT_ERROR_INVALID_PARAMETER));
}

} // namespace
} // namespace rpc_test
