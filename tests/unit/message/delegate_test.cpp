// SPDX-License-Identifier: Apache-2.0
//
// A delegate's three values, its name, and its way over a parcel.
#include "RecordingService.h"

#include "message/Exception.h"

#include <array>
#include <ostream>
#include <set>
#include <thread>
#include <type_traits>
#include <vector>

namespace {

using fake::Bool;
using fake::Int32;
using fake::library;
using fake::platform;
using Message = rpc_port::message::stub::message;

class ADelegate : public fake::LibraryTest {
protected:
  // As it comes out of a parcel.
  static Message::CallbackBase read(const fake::Parcel &fields) {
    Message::CallbackBase delegate(0, false);
    rpc_port_parcel_h parcel = platform().ports.createParcel(fields);
    EXPECT_EQ(library([&] { return parcel >> delegate; }), parcel);
    rpc_port_parcel_destroy(parcel);
    return delegate;
  }
};

TEST_F(ADelegate, HasTheValuesItIsMadeWith) {
  const Message::CallbackBase delegate(12, true);

  EXPECT_EQ(delegate.GetId(), 12);
  EXPECT_TRUE(delegate.IsOnce());
}

TEST_F(ADelegate, CountsEveryDelegateEverMade) {
  const Message::CallbackBase first(1, false);
  const Message::CallbackBase second(5, true);
  const Message::ResponseCB third(nullptr, {});

  EXPECT_EQ(second.GetSeqId(), first.GetSeqId() + 1);
  EXPECT_EQ(third.GetSeqId(), first.GetSeqId() + 2);
}

// In a process of its own only: the count never starts again.
TEST_F(ADelegate, CountsFromZero) {
  const Message::CallbackBase first(1, false);
  if (testing::UnitTest::GetInstance()->test_to_run_count() != 1) {
    GTEST_SKIP() << "an earlier test of this process has made a delegate";
  }

  EXPECT_EQ(first.GetSeqId(), 0);
}

TEST_F(ADelegate, HasASequenceIdOfItsOwnWhicheverThreadMakesIt) {
  constexpr std::size_t kThreads = 8;
  constexpr std::size_t kEach = 2000;
  std::array<std::vector<int>, kThreads> drawn;
  std::vector<std::thread> threads;
  for (std::vector<int> &ids : drawn) {
    threads.emplace_back([&ids] {
      for (std::size_t i = 0; i < kEach; ++i) {
        ids.push_back(Message::CallbackBase(1, false).GetSeqId());
      }
    });
  }
  for (std::thread &thread : threads) {
    thread.join();
  }

  std::set<int> all;
  for (const std::vector<int> &ids : drawn) {
    all.insert(ids.begin(), ids.end());
  }
  EXPECT_EQ(all.size(), kThreads * kEach);
}

TEST_F(ADelegate, CountsOnWhenThereIsANewStub) {
  library([] { Message(); });
  const Message::CallbackBase before(1, false);
  library([] { Message(); });

  EXPECT_EQ(Message::CallbackBase(1, false).GetSeqId(), before.GetSeqId() + 1);
}

TEST_F(ADelegate, ForResponsesHasIdOneAndMayBeInvokedAgain) {
  const Message::ResponseCB delegate(nullptr, {});

  EXPECT_EQ(delegate.GetId(), 1);
  EXPECT_FALSE(delegate.IsOnce());
}

TEST_F(ADelegate, IsDestroyedThroughItsBase) {
  EXPECT_TRUE(std::has_virtual_destructor_v<Message::CallbackBase>);
  EXPECT_TRUE((std::is_base_of_v<Message::CallbackBase, Message::ResponseCB>));
  EXPECT_TRUE(std::has_virtual_destructor_v<Message::ServiceBase>);
  EXPECT_TRUE(std::is_abstract_v<Message::ServiceBase>);
  // A factory has none: shared pointers are made from the concrete factory.
  EXPECT_FALSE(std::has_virtual_destructor_v<Message::ServiceBase::Factory>);
  EXPECT_TRUE(std::is_abstract_v<Message::ServiceBase::Factory>);
}

TEST_F(ADelegate, IsReadAndWrittenAsThreeFields) {
  const fake::Parcel fields = {Int32{-7}, Int32{2147483647}, Bool{true}};
  const Message::CallbackBase delegate = read(fields);

  rpc_port_parcel_h parcel = platform().ports.createParcel({});
  EXPECT_EQ(library([&] { return parcel << delegate; }), parcel);

  EXPECT_EQ(platform().ports.findParcel(parcel)->fields, fields);
  rpc_port_parcel_destroy(parcel);
}

TEST_F(ADelegate, KeepsWhatAParcelDoesNotHave) {
  const Message::CallbackBase delegate = read({Int32{3}});

  EXPECT_EQ(delegate.GetId(), 3);
  EXPECT_FALSE(delegate.IsOnce());
}

struct Tag {
  const char *name;
  int id;
  int seqId;
  const char *tag;
};

void PrintTo(const Tag &row, std::ostream *out) {
  *out << row.name;
}

class ADelegateTag : public ADelegate, public testing::WithParamInterface<Tag> {};

TEST_P(ADelegateTag, IsItsIdAndSequenceId) {
  EXPECT_EQ(read({Int32{GetParam().id}, Int32{GetParam().seqId}, Bool{false}}).GetTag(),
            GetParam().tag);
}

INSTANTIATE_TEST_SUITE_P(
    , ADelegateTag,
    testing::Values(Tag{"OfTheFirst", 1, 0, "1::0"}, Tag{"OfALaterOne", 1, 42, "1::42"},
                    Tag{"WithANegativeNumber", 1, -3, "1::-3"},
                    Tag{"WithTheLimits", -2147483647 - 1, 2147483647, "-2147483648::2147483647"}),
    [](const auto &tested) { return std::string(tested.param.name); });

TEST(TheExceptionsOfTheChannel, AreEmptyAndNoStandardExceptions) {
  using rpc_port::message::stub::Exception;
  using rpc_port::message::stub::InvalidCallbackException;
  using rpc_port::message::stub::InvalidIOException;
  using rpc_port::message::stub::NotConnectedSocketException;
  EXPECT_TRUE(std::is_empty_v<Exception>);
  EXPECT_TRUE((std::is_base_of_v<Exception, NotConnectedSocketException>));
  EXPECT_TRUE((std::is_base_of_v<Exception, InvalidCallbackException>));
  EXPECT_TRUE((std::is_base_of_v<Exception, InvalidIOException>));
  EXPECT_TRUE(std::is_empty_v<NotConnectedSocketException>);
  EXPECT_FALSE((std::is_base_of_v<std::exception, Exception>));
}

} // namespace
