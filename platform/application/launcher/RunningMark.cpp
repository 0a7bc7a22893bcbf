// SPDX-License-Identifier: Apache-2.0
#include "launcher/RunningMark.h"

#include "manifest/AppId.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::application {

namespace {

constexpr mode_t kOthers = 077;

std::string folderPath() {
  const char *runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && *runtime == '/') {
    return std::string(runtime) + "/app-running";
  }
  const char *temporary = std::getenv("TMPDIR");
  return std::string(temporary != nullptr && *temporary == '/' ? temporary : "/tmp")
         + "/app-running-" + std::to_string(geteuid());
}

// Only into a folder of the user's own: in one of somebody else's, the file could be anything.
int openFolder() {
  const std::string path = folderPath();
  (void)mkdir(path.c_str(), S_IRWXU);
  const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  struct stat status = {};
  const bool isOwn = folder >= 0 && fstat(folder, &status) == 0 && status.st_uid == geteuid()
                     && (status.st_mode & kOthers) == 0;
  if (!isOwn && folder >= 0) {
    close(folder);
  }
  return isOwn ? folder : -1;
}

int openFile(const std::string &appId, int flags) {
  const int folder = isUsableAppId(appId) ? openFolder() : -1;
  if (folder < 0) {
    return -1;
  }
  const int file =
      openat(folder, appId.c_str(), flags | O_RDWR | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
  close(folder);
  return file;
}

struct flock wholeFile(short type) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  return lock;
}

} // namespace

RunningMark::~RunningMark() {
  if (_descriptor >= 0) {
    close(_descriptor);
  }
}

RunningMark::Taken RunningMark::take(const std::string &appId, short type) {
  _descriptor = openFile(appId, O_CREAT);
  if (_descriptor < 0) {
    return Taken::Impossible;
  }
  struct flock lock = wholeFile(type);
  if (fcntl(_descriptor, F_OFD_SETLK, &lock) == 0) {
    return Taken::Yes;
  }
  return errno == EAGAIN || errno == EACCES ? Taken::HeldAlready : Taken::Impossible;
}

RunningMark::Taken RunningMark::share(const std::string &appId) {
  return take(appId, F_RDLCK);
}

RunningMark::Taken RunningMark::takeAlone(const std::string &appId) {
  const Taken taken = take(appId, F_WRLCK);
  if (taken == Taken::Yes) {
    (void)futimens(_descriptor, nullptr);
    // From now on it keeps other launchers out, and lets other processes of the application in.
    struct flock shared = wholeFile(F_RDLCK);
    (void)fcntl(_descriptor, F_OFD_SETLK, &shared);
  }
  return taken;
}

bool RunningMark::isHeld(const std::string &appId) {
  const int file = openFile(appId, 0);
  if (file < 0) {
    return false;
  }
  struct flock lock = wholeFile(F_WRLCK);
  const bool isKnown = fcntl(file, F_OFD_GETLK, &lock) == 0;
  close(file);
  return isKnown && lock.l_type != F_UNLCK;
}

double RunningMark::secondsSinceLaunch(const std::string &appId) {
  const int file = openFile(appId, 0);
  struct stat status = {};
  const bool isKnown = file >= 0 && fstat(file, &status) == 0;
  if (file >= 0) {
    close(file);
  }
  return isKnown ? std::difftime(std::time(nullptr), status.st_mtime)
                 : std::numeric_limits<double>::infinity();
}

} // namespace platform::application
