// SPDX-License-Identifier: Apache-2.0
//
// The four process-wide objects are made alike.
#include "ActionRequestImpl/ActionRequestImpl.h"
#include "NorixImpl/NorixCommonData.h"
#include "NorixImpl/NorixImpl.h"
#include "StateRequestImpl/StateRequestImpl.h"

#include "fakes/LibraryTest.h"

namespace {

using fake::library;
using fake::platform;

template <typename Object>
class ASingleton : public fake::LibraryTest {
protected:
  static Object *get() {
    return library([] { return Object::getInstance(); });
  }
};

using Singletons = testing::Types<norix::NorixImpl, norix::NorixCommonData, norix::StateRequestImpl,
                                  norix::ActionRequestImpl>;
TYPED_TEST_SUITE(ASingleton, Singletons, );

TYPED_TEST(ASingleton, IsMadeByTheFirstCall) {
  EXPECT_EQ(TypeParam::_instance, nullptr);

  TypeParam *made = this->get();

  EXPECT_NE(made, nullptr);
  EXPECT_EQ(TypeParam::_instance, made);
}

TYPED_TEST(ASingleton, IsTheSameForEveryCall) {
  TypeParam *first = this->get();
  const int allocations = platform().journal.count(fake::kNothrowNew);

  EXPECT_EQ(this->get(), first);

  EXPECT_EQ(platform().journal.count(fake::kNothrowNew), allocations);
}

TYPED_TEST(ASingleton, IsMissingForGoodWhenItsAllocationFailed) {
  platform().faults.fail(fake::kNothrowNew);

  EXPECT_EQ(this->get(), nullptr);
  EXPECT_EQ(this->get(), nullptr);

  EXPECT_EQ(platform().journal.count(fake::kNothrowNew), 1);
}

} // namespace
