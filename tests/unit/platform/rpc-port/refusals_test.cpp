// SPDX-License-Identifier: Apache-2.0
// What stands in the way of a port: the log says where it is, what is wrong and what to do.
#include "support/Ends.h"
#include "support/RawSocket.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace rpc_test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;

/// Something in the way, and what the log has to say about it.
struct Obstacle {
  const char *name;
  void (*place)(const fs::path &socket);
  int result;
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

/// Standard error, where the log goes, in a file meanwhile.
class Log {
public:
  explicit Log(std::string path) : _path(std::move(path)), _before(dup(STDERR_FILENO)) {
    const int file = open(_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(file, STDERR_FILENO);
    close(file);
  }
  ~Log() {
    dup2(_before, STDERR_FILENO);
    close(_before);
  }
  Log(const Log &) = delete;
  Log &operator=(const Log &) = delete;

  std::string text() const {
    std::ostringstream text;
    text << std::ifstream(_path).rdbuf();
    return text.str();
  }

private:
  std::string _path;
  int _before;
};

TEST_P(AnObstacle, IsNamedInTheLogWithWhatToDo) {
  GetParam().place(socketPath(kPort));
  StubEnd stub;
  const Log log(directory() + "/log");

  EXPECT_EQ(stub.listen(), GetParam().result);

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
    testing::Values(
        Obstacle{"AFile", placeFile, RPC_PORT_ERROR_IO_ERROR, "org.example.music/message ",
                 "is in the way and no socket: remove it"},
        Obstacle{"ALink", placeLink, RPC_PORT_ERROR_IO_ERROR, "org.example.music/message ",
                 "is in the way and no socket: remove it"},
        Obstacle{"ALinkToASocket", placeLinkToASocket, RPC_PORT_ERROR_IO_ERROR,
                 "org.example.music/message ", "is in the way and no socket: remove it"},
        Obstacle{"ADirectory", placeDirectory, RPC_PORT_ERROR_IO_ERROR,
                 "org.example.music/message ", "is in the way and no socket: remove it"},
        Obstacle{"ALinkedDirectory", placeLinkedDirectory, RPC_PORT_ERROR_PERMISSION_DENIED,
                 "/rpc-port/org.example.music ", "no symbolic link; remove it"},
        Obstacle{"AFileForADirectory", placeFileForDirectory, RPC_PORT_ERROR_PERMISSION_DENIED,
                 "/rpc-port ", "it has to be a directory"},
        Obstacle{"ADirectoryOfTheGroups", openToTheGroup, RPC_PORT_ERROR_PERMISSION_DENIED,
                 "/rpc-port/org.example.music ", "is open to other users: chmod 700 it"},
        Obstacle{"ARuntimeDirectoryOfTheGroups", openRuntimeToTheGroup,
                 RPC_PORT_ERROR_PERMISSION_DENIED, " ", "is open to other users: chmod 700 it"}),
    [](const auto &test) { return test.param.name; });

} // namespace
} // namespace rpc_test
