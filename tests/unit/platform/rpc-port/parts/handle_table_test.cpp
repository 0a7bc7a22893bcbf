// SPDX-License-Identifier: Apache-2.0
#include <registry/HandleTable.h>

#include <gmock/gmock.h>
#include <set>
#include <string>

namespace platform::rpc_port {
namespace {

using Table = HandleTable<std::string, HandleKind::Port>;
using OtherTable = HandleTable<std::string, HandleKind::Stub>;

TEST(AHandleTable, FindsWhatItHolds) {
  Table table;

  void *one = table.add("one");
  void *two = table.add("two");

  EXPECT_EQ(*table.find(one), "one");
  EXPECT_EQ(*table.find(two), "two");
}

TEST(AHandleTable, NeverGivesANullHandle) {
  Table table;

  EXPECT_NE(table.add("one"), nullptr);
  EXPECT_EQ(table.find(nullptr), nullptr);
}

TEST(AHandleTable, ForgetsWhatIsRemoved) {
  Table table;
  void *handle = table.add("one");

  EXPECT_EQ(table.remove(handle), "one");

  EXPECT_EQ(table.find(handle), nullptr);
  EXPECT_EQ(table.remove(handle), "");
}

TEST(AHandleTable, DoesNotGiveAHandleTwice) {
  Table table;
  std::set<void *> handles;

  for (int i = 0; i < 10000; ++i) {
    void *handle = table.add("object");
    EXPECT_TRUE(handles.insert(handle).second);
    table.remove(handle);
  }
}

TEST(AHandleTable, DoesNotFindAHandleOfAnotherKind) {
  Table table;
  OtherTable other;
  table.add("one");

  void *handle = other.add("other");

  EXPECT_EQ(table.find(handle), nullptr);
}

TEST(AHandleTable, DoesNotFindGarbage) {
  Table table;
  table.add("one");
  int variable = 0;

  EXPECT_EQ(table.find(&variable), nullptr);
  EXPECT_EQ(table.find(reinterpret_cast<void *>(~std::uintptr_t{0})), nullptr);
  EXPECT_EQ(table.find(reinterpret_cast<void *>(1)), nullptr);
}

} // namespace
} // namespace platform::rpc_port
