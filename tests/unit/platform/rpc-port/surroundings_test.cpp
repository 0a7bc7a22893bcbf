// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <rpc-port.h>
#include <string>

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

} // namespace
} // namespace rpc_test
