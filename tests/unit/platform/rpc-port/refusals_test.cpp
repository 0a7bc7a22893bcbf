// SPDX-License-Identifier: Apache-2.0
// What stands in the way of a port: the log says where it is, what is wrong and what to do.
#include "support/Ends.h"
#include "support/Log.h"
#include "support/RawSocket.h"

#include <Ecore.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace rpc_test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// Something in the way, and what the log has to say about it.
struct Obstacle {
  const char *name;
  void (*place)(const fs::path &socket);
  const char *where; ///< The end of the path that the log names.
  const char *remedy;
};

void PrintTo(const Obstacle &row, std::ostream *out) {
  *out << row.name;
}

/// The path of the port's socket leads through the runtime directory, "rpc-port" and the app id.
fs::path applications(const fs::path &socket) {
  return socket.parent_path().parent_path();
}

void placeFile(const fs::path &socket) {
  std::ofstream(socket) << "precious";
}

void placeLink(const fs::path &socket) {
  fs::create_symlink(socket.string() + ".elsewhere", socket);
}

void placeLinkToASocket(const fs::path &socket) {
  RawSocket::listenAt(socket.string() + ".elsewhere").reset();
  placeLink(socket);
}

void placeDirectory(const fs::path &socket) {
  fs::create_directory(socket);
}

void placeLinkedDirectory(const fs::path &socket) {
  fs::rename(socket.parent_path(), applications(socket) / "elsewhere");
  fs::create_directory_symlink("elsewhere", socket.parent_path());
}

void placeFileForDirectory(const fs::path &socket) {
  fs::remove_all(applications(socket));
  std::ofstream(applications(socket)) << "a file";
}

void openToTheGroup(const fs::path &socket) {
  fs::permissions(socket.parent_path(), fs::perms(0770));
}

void openRuntimeToTheGroup(const fs::path &socket) {
  fs::permissions(applications(socket).parent_path(), fs::perms(0720));
}

class AnObstacle : public Runtime, public testing::WithParamInterface<Obstacle> {
protected:
  AnObstacle() {
    const fs::path folder = fs::path(socketPath(kPort)).parent_path();
    for (const auto &made : {folder.parent_path(), folder}) {
      fs::create_directory(made);
      fs::permissions(made, fs::perms::owner_all);
    }
  }
};

TEST_P(AnObstacle, IsNamedInTheLogWithWhatToDo) {
  GetParam().place(socketPath(kPort));
  StubEnd stub;
  const Log log(directory() + "/log");

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);

  EXPECT_THAT(log.text(), AllOf(HasSubstr(GetParam().where), HasSubstr(GetParam().remedy)));
}

TEST_P(AnObstacle, IsLeftAsItIs) {
  GetParam().place(socketPath(kPort));
  const fs::file_status before = fs::symlink_status(socketPath(kPort));
  StubEnd stub;

  stub.listen();
  stub.destroy();

  EXPECT_EQ(fs::symlink_status(socketPath(kPort)).type(), before.type());
}

INSTANTIATE_TEST_SUITE_P(
    OfAnyKind, AnObstacle,
    testing::Values(Obstacle{"AFile", placeFile, "org.example.music/message ",
                             "is in the way and no socket: remove it"},
                    Obstacle{"ALink", placeLink, "org.example.music/message ",
                             "is in the way and no socket: remove it"},
                    Obstacle{"ALinkToASocket", placeLinkToASocket, "org.example.music/message ",
                             "is in the way and no socket: remove it"},
                    Obstacle{"ADirectory", placeDirectory, "org.example.music/message ",
                             "is in the way and no socket: remove it"},
                    Obstacle{"ALinkedDirectory", placeLinkedDirectory,
                             "/rpc-port/org.example.music ", "no symbolic link; remove it"},
                    Obstacle{"AFileForADirectory", placeFileForDirectory, "/rpc-port ",
                             "it has to be a directory"},
                    Obstacle{"ADirectoryOfTheGroups", openToTheGroup,
                             "/rpc-port/org.example.music ",
                             "is open to other users: chmod 700 it"},
                    Obstacle{"ARuntimeDirectoryOfTheGroups", openRuntimeToTheGroup, " ",
                             "is open to other users: chmod 700 it"}),
    [](const auto &test) { return test.param.name; });

/// Where in the path the directory lies.
struct AnotherUsers {
  const char *name;
  fs::path (*directory)(const fs::path &socket);
};

void PrintTo(const AnotherUsers &row, std::ostream *out) {
  *out << row.name;
}

class AnotherUsersPath : public Runtime, public testing::WithParamInterface<AnotherUsers> {};

TEST_P(AnotherUsersPath, IsNotToBeRemoved) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can give a directory away";
  }
  StubEnd first;
  ASSERT_EQ(first.listen(), RPC_PORT_ERROR_NONE);
  first.destroy();
  ASSERT_EQ(lchown(GetParam().directory(socketPath(kPort)).c_str(), 12345, 12345), 0);
  StubEnd stub;
  const Log log(directory() + "/log");

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);

  EXPECT_THAT(log.text(), AllOf(HasSubstr("belongs to another user"), HasSubstr("XDG_RUNTIME_DIR"),
                                Not(HasSubstr("remove"))));
}

INSTANTIATE_TEST_SUITE_P(, AnotherUsersPath,
                         testing::Values(AnotherUsers{"AtTheRuntimeDirectory",
                                                      [](const fs::path &socket) {
                                                        return applications(socket).parent_path();
                                                      }},
                                         AnotherUsers{"AtTheDirectoryOfAllPorts", applications},
                                         AnotherUsers{"AtTheApplicationsDirectory",
                                                      [](const fs::path &socket) {
                                                        return socket.parent_path();
                                                      }},
                                         AnotherUsers{"AtALink",
                                                      [](const fs::path &socket) {
                                                        placeLinkedDirectory(socket);
                                                        return socket.parent_path();
                                                      }}),
                         [](const auto &test) { return test.param.name; });

class AnAppId : public Runtime {};

TEST_F(AnAppId, IsNeverLoggedWithItsControlCharacters) {
  setenv("AUL_APPID", "\x1b[2J\xc2\x9b/evil", 1);
  StubEnd stub;
  const Log log(directory() + "/log");

  EXPECT_EQ(stub.listen(), RPC_PORT_ERROR_IO_ERROR);

  EXPECT_THAT(log.text(), AllOf(HasSubstr("\\x1b[2J\\xc2\\x9b/evil"), Not(HasSubstr("\x1b"))));
}

class ASystemWithoutProc : public Runtime {
protected:
  /// Runs `check` in a child that has an empty directory in place of /proc. @return Its result, or
  /// 77 where the system does not allow that.
  template <typename Check>
  static int resultInChild(Check check) {
    const pid_t child = fork();
    if (child == 0) {
      ecore_fork_reset(); // As Ecore asks of a child that uses its loop.
      const int spaces = geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER;
      const bool isHidden = unshare(spaces) == 0
                            && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
                            && mount("none", "/proc", "tmpfs", 0, nullptr) == 0;
      _exit(isHidden ? check() : 77);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
};

TEST_F(ASystemWithoutProc, IsNamedInTheLogOfAStub) {
  const Log log(directory() + "/log");

  const int result = resultInChild([] {
    StubEnd stub;
    return stub.listen() == RPC_PORT_ERROR_IO_ERROR ? 0 : 1;
  });

  if (result == 77) {
    GTEST_SKIP() << "this user may not hide /proc";
  }
  EXPECT_EQ(result, 0);
  EXPECT_THAT(log.text(), HasSubstr("/proc is not mounted"));
}

TEST_F(ASystemWithoutProc, IsNamedInTheLogOfAProxy) {
  StubEnd stub;
  ASSERT_EQ(stub.listen(), RPC_PORT_ERROR_NONE);
  const Log log(directory() + "/log");

  const int result = resultInChild([] {
    ProxyEnd proxy;
    proxy.connect();
    return runUntil([&] { return proxy.rejections == 1; }) ? 0 : 1;
  });

  if (result == 77) {
    GTEST_SKIP() << "this user may not hide /proc";
  }
  EXPECT_EQ(result, 0);
  EXPECT_THAT(log.text(), HasSubstr("/proc is not mounted"));
}

} // namespace
} // namespace rpc_test
