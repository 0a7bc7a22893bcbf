// SPDX-License-Identifier: Apache-2.0
#include "support/Runtime.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <rpc-port.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace rpc_test {
namespace {

/// An environment without a home folder or a runtime folder that could be used.
struct PoorEnvironment {
  const char *name;
  const char *home; ///< Null: unset.
};

void PrintTo(const PoorEnvironment &row, std::ostream *out) {
  *out << row.name;
}

class AStubWithoutARuntimeFolder : public testing::TestWithParam<PoorEnvironment> {
protected:
  AStubWithoutARuntimeFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "rpc-port-test-XXXXXX").string();
    _directory = mkdtemp(name.data());
    unsetenv("XDG_RUNTIME_DIR");
    unsetenv("HOME");
    if (GetParam().home != nullptr) {
      setenv("HOME", GetParam().home, 1);
    }
    setenv("TMPDIR", _directory.c_str(), 1);
    setenv("AUL_APPID", "org.example.music", 1);
  }
  ~AStubWithoutARuntimeFolder() override {
    unsetenv("TMPDIR");
    std::filesystem::remove_all(_directory);
  }

private:
  std::string _directory;
};

TEST_P(AStubWithoutARuntimeFolder, ListensAndLeavesTheEnvironmentAlone) {
  rpc_port_stub_h stub = nullptr;
  ASSERT_EQ(rpc_port_stub_create(&stub, "message"), RPC_PORT_ERROR_NONE);

  EXPECT_EQ(rpc_port_stub_listen(stub), RPC_PORT_ERROR_NONE);

  EXPECT_EQ(std::getenv("XDG_RUNTIME_DIR"), nullptr);
  EXPECT_EQ(rpc_port_stub_destroy(stub), RPC_PORT_ERROR_NONE);
}

INSTANTIATE_TEST_SUITE_P(
    , AStubWithoutARuntimeFolder,
    testing::Values(PoorEnvironment{"AndNoHome", nullptr}, PoorEnvironment{"AndAnEmptyHome", ""},
                    PoorEnvironment{"AndAHomeThatDoesNotExist", "/proc/no/home"},
                    PoorEnvironment{"AndAHomeThatIsAFile", "/proc/version"}),
    [](const auto &row) { return std::string(row.param.name); });

/// No descriptor can be opened while the object lives.
class NoDescriptors {
public:
  NoDescriptors() {
    getrlimit(RLIMIT_NOFILE, &_before);
    const int lowest = dup(STDERR_FILENO);
    close(lowest);
    const rlimit now = {static_cast<rlim_t>(lowest), _before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &now);
  }
  ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &_before); }
  NoDescriptors(const NoDescriptors &) = delete;
  NoDescriptors &operator=(const NoDescriptors &) = delete;

private:
  rlimit _before = {};
};

class AStubAfterALackOfDescriptors : public Runtime {};

TEST_F(AStubAfterALackOfDescriptors, ListensAlthoughTheFirstStubIsKept) {
  rpc_port_stub_h first = nullptr;
  {
    const NoDescriptors none;
    rpc_port_stub_create(&first, "message");
    ASSERT_NE(rpc_port_stub_listen(first), RPC_PORT_ERROR_NONE);
  }
  rpc_port_stub_h second = nullptr;
  ASSERT_EQ(rpc_port_stub_create(&second, "message"), RPC_PORT_ERROR_NONE);

  EXPECT_EQ(rpc_port_stub_listen(second), RPC_PORT_ERROR_NONE);

  rpc_port_stub_destroy(second);
  rpc_port_stub_destroy(first);
}

} // namespace
} // namespace rpc_test
