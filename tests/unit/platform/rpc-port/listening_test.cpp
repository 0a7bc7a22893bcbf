// SPDX-License-Identifier: Apache-2.0
#include "support/Ends.h"
#include "support/RawSocket.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rpc_test {
namespace {

namespace fs = std::filesystem;

class Listening : public Runtime {
protected:
  static fs::perms modeOf(const std::string &path) { return fs::status(path).permissions(); }
};

TEST_F(Listening, MakesDirectoriesThatAreClosedToOthers) {
  StubEnd stub;

  const int result = stub.listen();

  EXPECT_EQ(result, RPC_PORT_ERROR_NONE);
  EXPECT_TRUE(fs::is_socket(socketPath(kPort)));
  EXPECT_EQ(modeOf(directory() + "/rpc-port"), fs::perms::owner_all);
  EXPECT_EQ(modeOf(directory() + "/rpc-port/" + kAppId), fs::perms::owner_all);
}

TEST_F(Listening, TakesItsSocketFileAwayWithItself) {
  StubEnd stub;
  stub.listen();

  stub.destroy();

  EXPECT_FALSE(fs::exists(socketPath(kPort)));
}

TEST_F(Listening, LeavesAnotherStubsSocketFileAlone) {
  StubEnd stub;
  stub.listen();
  fs::remove(socketPath(kPort));
  const auto other = RawSocket::listenAt(socketPath(kPort));

  stub.destroy();

  EXPECT_TRUE(fs::exists(socketPath(kPort)));
}

TEST_F(Listening, ReplacesASocketFileThatNobodyListensOn) {
  StubEnd first;
  first.listen();
  first.destroy();
  RawSocket::listenAt(socketPath(kPort)).reset();
  ASSERT_TRUE(fs::exists(socketPath(kPort)));
  StubEnd second;

  EXPECT_EQ(second.listen(), RPC_PORT_ERROR_NONE);
}

TEST_F(Listening, FailsOnAPortThatAnotherStubListensOn) {
  StubEnd first;
  StubEnd second;
  first.listen();

  EXPECT_EQ(second.listen(), RPC_PORT_ERROR_IO_ERROR);

  second.destroy();
  EXPECT_TRUE(fs::exists(socketPath(kPort)));
}

TEST_F(Listening, DisturbsNobodyByFailing) {
  StubEnd first;
  StubEnd second;
  ProxyEnd proxy;
  first.listen();
  second.listen();
  settle();

  proxy.connect();

  EXPECT_TRUE(runUntil([&] { return first.instances.size() == 1; }));
}

TEST_F(Listening, FailsTheSecondTime) {
  StubEnd stub;
  stub.listen();

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);
}

TEST_F(Listening, SucceedsOnSeveralPortsOfOneApplication) {
  StubEnd first("one");
  StubEnd second("two");

  EXPECT_EQ(first.listen(), RPC_PORT_ERROR_NONE);
  EXPECT_EQ(second.listen(), RPC_PORT_ERROR_NONE);
}

TEST_F(Listening, DoesNotTouchAFileThatIsNoSocket) {
  fs::create_directories(directory() + "/rpc-port/" + kAppId);
  fs::permissions(directory() + "/rpc-port", fs::perms::owner_all);
  fs::permissions(directory() + "/rpc-port/" + kAppId, fs::perms::owner_all);
  std::ofstream(socketPath(kPort)) << "precious";
  StubEnd stub;

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);

  EXPECT_EQ(fs::file_size(socketPath(kPort)), 8U);
}

TEST_F(Listening, DoesNotFollowALinkInPlaceOfADirectory) {
  fs::create_directory(directory() + "/elsewhere");
  fs::permissions(directory() + "/elsewhere", fs::perms::owner_all);
  fs::create_directory_symlink(directory() + "/elsewhere", directory() + "/rpc-port");
  StubEnd stub;

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);

  EXPECT_TRUE(fs::is_empty(directory() + "/elsewhere"));
}

TEST_F(Listening, FailsInADirectoryThatOthersCanWriteTo) {
  fs::permissions(directory(), fs::perms(0770));
  StubEnd stub;

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);
}

TEST_F(Listening, FailsWhereTheApplicationsDirectoryIsOpenToOthers) {
  fs::create_directory(directory() + "/rpc-port");
  fs::permissions(directory() + "/rpc-port", fs::perms::owner_all);
  fs::create_directory(directory() + "/rpc-port/" + kAppId);
  fs::permissions(directory() + "/rpc-port/" + kAppId, fs::perms(0750));
  StubEnd stub;

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);
}

TEST_F(Listening, FailsInADirectoryOfAnotherUser) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can give a directory away";
  }
  fs::create_directory(directory() + "/rpc-port");
  fs::permissions(directory() + "/rpc-port", fs::perms::owner_all);
  ASSERT_EQ(chown((directory() + "/rpc-port").c_str(), 12345, 12345), 0);
  StubEnd stub;

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);
}

TEST_F(Listening, FailsWithoutAnAppId) {
  unsetenv("AUL_APPID");
  StubEnd stub;

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);
}

TEST_F(Listening, FailsWithAnAppIdThatLeadsOutOfTheDirectory) {
  setenv("AUL_APPID", "../escape", 1);
  StubEnd stub;

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);
}

TEST_F(Listening, FallsBackToADirectoryOfTheUsersInTheTemporaryDirectory) {
  unsetenv("XDG_RUNTIME_DIR");
  const Environment temporary("TMPDIR", directory());
  StubEnd stub;
  ProxyEnd proxy;

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  proxy.connect();

  EXPECT_TRUE(runUntil([&] { return proxy.mainPorts.size() == 1; }));
  EXPECT_TRUE(fs::is_socket(directory() + "/rpc-port-" + std::to_string(geteuid()) + "/" + kAppId
                            + "/" + kPort));
}

TEST_F(Listening, SucceedsHoweverLongTheDirectorysPathIs) {
  const std::string deep = directory() + "/" + std::string(200, 'd');
  fs::create_directory(deep);
  fs::permissions(deep, fs::perms::owner_all);
  setenv("XDG_RUNTIME_DIR", deep.c_str(), 1);
  StubEnd stub;
  ProxyEnd proxy;

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  proxy.connect();

  EXPECT_TRUE(runUntil([&] { return proxy.mainPorts.size() == 1; }));
}

TEST_F(Listening, SucceedsWithTheLongestNamesThatAreAllowed) {
  setenv("AUL_APPID", std::string(255, 'a').c_str(), 1);
  StubEnd stub(std::string(80, 'p').c_str());

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
}

TEST_F(Listening, IsForPortsWithNamesThatAreFileNames) {
  rpc_port_stub_h handle = nullptr;

  for (const std::string name : {"", ".", "..", "a/b", "a\nb"}) {
    EXPECT_EQ(rpc_port_stub_create(&handle, name.c_str()), RPC_PORT_ERROR_INVALID_PARAMETER);
  }
  EXPECT_EQ(rpc_port_stub_create(&handle, std::string(81, 'p').c_str()),
            RPC_PORT_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(handle, nullptr);
}

} // namespace
} // namespace rpc_test
