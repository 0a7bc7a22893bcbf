// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Turn.h"

#include "assistant/cli/Listener.h"

#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::cli {
namespace {

// The bytes of the file that are locked: one is the turn, the other is held by all who want it,
// shared, so that the last one knows to take the file away.
constexpr off_t kTurn = 0;
constexpr off_t kInterest = 1;

bool lock(int file, short type, off_t byte, int command) {
  struct flock range = {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  range.l_start = byte;
  range.l_len = 1;
  return fcntl(file, command, &range) == 0;
}

bool isAtPath(int file, const std::string &path) {
  struct stat opened = {};
  struct stat there = {};
  return fstat(file, &opened) == 0 && lstat(path.c_str(), &there) == 0
         && opened.st_ino == there.st_ino && opened.st_dev == there.st_dev;
}

// A sender id may be longer than what is left of a file's name. Two that share a number share
// turns.
std::string pathFor(const std::string &appId, const std::string &senderId) {
  return portsFolder() / appId / (".turn-" + std::to_string(std::hash<std::string>()(senderId)));
}

} // namespace

Turn::Turn(const std::string &appId, const std::string &senderId)
    : _path(pathFor(appId, senderId)) {}

Turn::Turn(const std::string &appId, const std::string &senderId,
           const std::function<void()> &waiting)
    : Turn(appId, senderId) {
  while (open()) {
    if (!lock(_file, F_WRLCK, kTurn, F_OFD_SETLK)) {
      waiting();
      lock(_file, F_WRLCK, kTurn, F_OFD_SETLKW);
    }
    // The one before may have been the last, and have taken the file away.
    if (isAtPath(_file, _path)) {
      return;
    }
    close(_file);
  }
}

std::unique_ptr<Turn> Turn::attempt(const std::string &appId, const std::string &senderId) {
  std::unique_ptr<Turn> turn(new Turn(appId, senderId));
  while (turn->open()) {
    const bool isTaken = !lock(turn->_file, F_WRLCK, kTurn, F_OFD_SETLK);
    if (isTaken || isAtPath(turn->_file, turn->_path)) {
      return isTaken ? nullptr : std::move(turn);
    }
    close(turn->_file);
  }
  return turn;
}

// False where no file can be made: no application listens there either.
bool Turn::open() {
  _file = ::open(_path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
  return _file >= 0 && lock(_file, F_RDLCK, kInterest, F_OFD_SETLKW);
}

Turn::~Turn() {
  release();
}

void Turn::release() {
  const int file = std::exchange(_file, -1);
  if (file < 0) {
    return;
  }
  if (lock(file, F_WRLCK, kInterest, F_OFD_SETLK) && isAtPath(file, _path)) {
    unlink(_path.c_str());
  }
  close(file);
}

} // namespace norix::assistant::cli
