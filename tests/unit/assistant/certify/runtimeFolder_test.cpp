// SPDX-License-Identifier: Apache-2.0
//
// The runtime folder of a certification.
#include "assistant/certify/RuntimeFolder.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace norix::assistant::certify {
namespace {

namespace fs = std::filesystem;

class TheRuntimeFolder : public testing::Test {
protected:
  support::TemporaryFolder users;
  support::ScopedVariable variable{"XDG_RUNTIME_DIR", users.path()};
};

TEST_F(TheRuntimeFolder, IsTheOneOfTheEnvironmentWhileItIsThere) {
  {
    const RuntimeFolder folder;
    EXPECT_EQ(std::getenv("XDG_RUNTIME_DIR"), folder.path());
  }

  EXPECT_EQ(std::getenv("XDG_RUNTIME_DIR"), users.path());
}

TEST_F(TheRuntimeFolder, HasTheUsersSoundAndNotTheApplications) {
  users.write("pulse/native", "sound");
  users.write("rpc-port/org.example.app/message", "an application");
  users.write("app.lock", "17");
  const RuntimeFolder folder;

  EXPECT_EQ(support::contentOf(folder.path() / "pulse/native"), "sound");
  EXPECT_FALSE(fs::exists(folder.path() / "rpc-port"));
  EXPECT_FALSE(fs::exists(folder.path() / "app.lock"));
}

TEST_F(TheRuntimeFolder, IsRemovedAndWhatItLinksStays) {
  const fs::path file = users.write("pulse/native", "sound");
  fs::path path;
  {
    const RuntimeFolder folder;
    path = folder.path();
    EXPECT_TRUE(fs::exists(path / "pulse/native"));
  }

  EXPECT_FALSE(fs::exists(path));
  EXPECT_TRUE(fs::exists(file));
}

} // namespace
} // namespace norix::assistant::certify
