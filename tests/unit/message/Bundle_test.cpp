// SPDX-License-Identifier: Apache-2.0
#include "message/Bundle.h"

#include "fakes/LibraryTest.h"

#include <type_traits>
#include <utility>

namespace {

using fake::library;
using fake::platform;
using rpc_port::message::Bundle;
using testing::IsEmpty;

class ABundle : public fake::LibraryTest {
protected:
  bundle *handle = platform().bundles.create({});
};

TEST_F(ABundle, FreesItsHandle) {
  {
    const Bundle owner(handle);

    EXPECT_EQ(owner.GetHandle(), handle);
    EXPECT_EQ(platform().bundles.alive(), 1U);
  }

  EXPECT_EQ(platform().bundles.alive(), 0U);
}

TEST_F(ABundle, FreesNothingWhenItHasNothing) {
  library([] { return Bundle(nullptr).GetHandle(); });

  EXPECT_THAT(calls({"bundle_free"}), IsEmpty());
  bundle_free(handle);
}

TEST_F(ABundle, HandsItsHandleOverWhenItIsMoved) {
  Bundle first(handle);

  const Bundle second(std::move(first));

  EXPECT_EQ(second.GetHandle(), handle);
  EXPECT_EQ(first.GetHandle(), nullptr); // NOLINT(bugprone-use-after-move): that is the test
}

TEST_F(ABundle, FreesEachHandleOnceWhenItIsAssigned) {
  bundle *other = platform().bundles.create({});
  {
    Bundle first(handle);
    Bundle second(other);

    second = std::move(first);

    EXPECT_EQ(second.GetHandle(), handle);
  }

  EXPECT_EQ(platform().bundles.alive(), 0U);
}

TEST_F(ABundle, CannotBeCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<Bundle>);
  EXPECT_FALSE(std::is_copy_assignable_v<Bundle>);
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<Bundle>);
  EXPECT_FALSE((std::is_convertible_v<bundle *, Bundle>));
  bundle_free(handle);
}

} // namespace
