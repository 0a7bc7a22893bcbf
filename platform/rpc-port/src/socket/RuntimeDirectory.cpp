// SPDX-License-Identifier: Apache-2.0
#include "socket/RuntimeDirectory.h"

#include "common/Printable.h"
#include "common/log.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <rpc-port.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace platform::rpc_port {

namespace {

/// One opened directory of the path, with its path for the log.
struct Step {
  Descriptor descriptor;
  std::string path;
  int error;
};

bool isNotDirectory(int number) {
  return number == ELOOP || number == ENOTDIR;
}

int toError(int number) {
  const bool denied = number == EACCES || number == EPERM || isNotDirectory(number);
  return denied ? RPC_PORT_ERROR_PERMISSION_DENIED : RPC_PORT_ERROR_IO_ERROR;
}

Step failed(const std::string &path, int error) {
  return {Descriptor(), path, error};
}

/// What to do about a path that cannot be opened. Only its owner is told to remove something.
const char *findRemedy(const std::string &path, int number) {
  if (!isNotDirectory(number)) {
    return "check the directory and XDG_RUNTIME_DIR";
  }
  struct stat status = {};
  const bool isOwn = lstat(path.c_str(), &status) == 0 && status.st_uid == geteuid();
  return isOwn ? "it has to be a directory and no symbolic link; remove it"
               : "it belongs to another user; set XDG_RUNTIME_DIR to a directory of your own";
}

Step failedToOpen(const std::string &path, DirectoryUse use, int number) {
  // To a proxy, a missing directory only says that the application does not run.
  if (number != ENOENT || use == DirectoryUse::Listen) {
    dlog_print(DLOG_ERROR, kLogTag, "%s cannot be opened (%s): %s", Printable(path).text(),
               std::strerror(number), findRemedy(path, number));
  }
  return failed(path, toError(number));
}

/// @return nullptr for a directory that can be trusted, else what is wrong with it.
const char *findFault(const struct stat &status, mode_t forbidden) {
  if (status.st_uid != geteuid()) {
    return "belongs to another user: set XDG_RUNTIME_DIR to a directory of your own";
  }
  if ((status.st_mode & forbidden) != 0) {
    return "is open to other users: chmod 700 it";
  }
  return nullptr;
}

Step check(Step step, mode_t forbidden) {
  struct stat status = {};
  if (fstat(step.descriptor.get(), &status) != 0) {
    return failed(step.path, RPC_PORT_ERROR_IO_ERROR);
  }
  const char *fault = findFault(status, forbidden);
  if (fault == nullptr) {
    return step;
  }
  dlog_print(DLOG_ERROR, kLogTag, "%s %s", Printable(step.path).text(), fault);
  return failed(step.path, RPC_PORT_ERROR_PERMISSION_DENIED);
}

Step enter(const Step &parent, const std::string &name, DirectoryUse use) {
  std::string path = parent.path + "/" + name;
  if (!parent.descriptor) {
    return failed(path, parent.error);
  }
  const bool create = use == DirectoryUse::Listen;
  if (create && mkdirat(parent.descriptor.get(), name.c_str(), 0700) != 0 && errno != EEXIST) {
    return failedToOpen(path, use, errno);
  }
  Descriptor descriptor(openat(parent.descriptor.get(), name.c_str(),
                               O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!descriptor) {
    return failedToOpen(path, use, errno);
  }
  return check({std::move(descriptor), std::move(path), RPC_PORT_ERROR_NONE}, 077);
}

Step openAt(const std::string &path, DirectoryUse use) {
  Descriptor descriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!descriptor) {
    return failedToOpen(path, use, errno);
  }
  return {std::move(descriptor), path, RPC_PORT_ERROR_NONE};
}

std::string environment(const char *name) {
  const char *value = std::getenv(name);
  return value != nullptr && *value == '/' ? value : "";
}

/// Opens the directory with the ports of all applications.
Step openBase(DirectoryUse use) {
  if (const std::string runtime = environment("XDG_RUNTIME_DIR"); !runtime.empty()) {
    Step step = openAt(runtime, use);
    // Others may read the user's runtime directory; what is created in it is closed to them.
    return enter(step.descriptor ? check(std::move(step), 022) : std::move(step), "rpc-port", use);
  }
  const std::string temporary = environment("TMPDIR");
  const Step step = openAt(temporary.empty() ? "/tmp" : temporary, use);
  return enter(step, "rpc-port-" + std::to_string(geteuid()), use);
}

} // namespace

OpenedDirectory openPortDirectory(const std::string &appId, DirectoryUse use) {
  Step step = enter(openBase(use), appId, use);
  return {std::move(step.descriptor), step.error};
}

} // namespace platform::rpc_port
