// SPDX-License-Identifier: Apache-2.0
#include "launcher/launch.h"

#include "launcher/RunningMark.h"
#include "manifest/ManifestReader.h"
#include "manifest/find.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlog.h>
#include <fcntl.h>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace platform::application {

namespace {

constexpr const char *kTag = "APP_LAUNCHER";
constexpr const char *kReasonVariable = "NORIX_LAUNCH_REASON";
constexpr const char *kMarkVariable = "NORIX_LAUNCH_MARK";
constexpr const char *kRequest = "request";
constexpr const char *kDefault = "default";

/// The time within which a launched application is expected to listen.
constexpr double kStartSeconds = 10.0;
constexpr int kFirstInherited = 3;

struct Program {
  std::string path;
  std::vector<std::string> environment;
};

bool isReplaced(const std::string &entry) {
  for (const char *name : {"AUL_APPID=", "NORIX_LAUNCH_REASON=", "NORIX_LAUNCH_MARK="}) {
    if (entry.rfind(name, 0) == 0) {
      return true;
    }
  }
  return false;
}

std::vector<std::string> environmentOf(const std::string &appId, LaunchReason reason) {
  std::vector<std::string> entries;
  for (char **entry = environ; *entry != nullptr; ++entry) {
    if (!isReplaced(*entry)) {
      entries.emplace_back(*entry);
    }
  }
  entries.push_back("AUL_APPID=" + appId);
  entries.push_back(std::string(kReasonVariable) + "="
                    + (reason == LaunchReason::Request ? kRequest : kDefault));
  entries.push_back(std::string(kMarkVariable) + "=" + std::to_string(kFirstInherited));
  return entries;
}

/// @return Nothing when there is no such application. Throws ManifestError.
std::optional<Program> findInstalledProgram(const std::string &appId, LaunchReason reason) {
  const std::optional<FoundManifest> found = findInstalledManifest(appId);
  if (!found) {
    return std::nullopt;
  }
  const std::string &exec = found->manifest.find(appId)->exec;
  const std::string path = findProgram(found->folder, exec);
  if (path.empty()) {
    dlog_print(DLOG_ERROR, kTag,
               "%s: no program '%s' in %s/bin/ or beside the manifest; exec names one by a path "
               "within the application's folder",
               appId.c_str(), exec.c_str(), found->folder.c_str());
  }
  return Program{path, environmentOf(appId, reason)};
}

std::vector<char *> pointersTo(std::vector<std::string> &texts) {
  std::vector<char *> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string &text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

// In the new process; other threads may have held any lock when it was forked, so nothing here
// allocates.
void restoreSignals() {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int number : {SIGPIPE, SIGCHLD, SIGINT, SIGTERM, SIGQUIT, SIGHUP}) {
    (void)signal(number, SIG_DFL);
  }
}

// A reader of this process's output must see its end when this process ends, and not only when the
// application does. Its log stays visible on standard error.
void leaveStandardStreams() {
  const int nothing = open("/dev/null", O_RDWR);
  (void)dup2(nothing, STDIN_FILENO);
  (void)dup2(nothing, STDOUT_FILENO);
}

[[noreturn]] void become(const char *path, char *const *arguments, char *const *environment,
                         int mark, int failure) {
  restoreSignals();
  (void)setsid();
  leaveStandardStreams();
  // Out of the way first: either may have the number that the other is to get.
  const int spareMark = fcntl(mark, F_DUPFD, kFirstInherited + 2);
  const int spareFailure = fcntl(failure, F_DUPFD, kFirstInherited + 2);
  (void)dup2(spareMark, kFirstInherited);
  (void)dup3(spareFailure, kFirstInherited + 1, O_CLOEXEC);
  (void)close_range(kFirstInherited + 2, ~0U, 0);
  execve(path, arguments, environment);
  const int number = errno;
  (void)!write(kFirstInherited + 1, &number, sizeof number);
  _exit(EXIT_FAILURE);
}

/// Starts the program as a process of nobody's. @return 0, or the errno that says why not.
int start(Program program, int mark) {
  std::array<int, 2> failure = {-1, -1};
  if (pipe2(failure.data(), O_CLOEXEC) != 0) {
    return errno;
  }
  std::vector<std::string> texts{program.path};
  const std::vector<char *> arguments = pointersTo(texts);
  const std::vector<char *> environment = pointersTo(program.environment);
  const pid_t between = fork();
  if (between == 0) {
    // The child that forks again ends at once: init takes over the application and its ending.
    if (fork() == 0) {
      become(program.path.c_str(), arguments.data(), environment.data(), mark, failure[1]);
    }
    _exit(EXIT_SUCCESS);
  }
  int number = between < 0 ? errno : 0;
  close(failure[1]);
  if (between > 0) {
    while (waitpid(between, nullptr, 0) < 0 && errno == EINTR) {
    }
    (void)!read(failure[0], &number, sizeof number); // Closed by the execution: nothing comes.
  }
  close(failure[0]);
  return number;
}

Launch launchInstalled(const std::string &appId, LaunchReason reason) {
  std::optional<Program> program = findInstalledProgram(appId, reason);
  if (!program) {
    return Launch::Unknown;
  }
  if (program->path.empty()) {
    return Launch::Failed;
  }
  RunningMark mark;
  switch (mark.takeAlone(appId)) {
  case RunningMark::Taken::HeldAlready:
    return Launch::Running;
  case RunningMark::Taken::Impossible:
    dlog_print(DLOG_ERROR, kTag, "%s cannot be marked as running: check XDG_RUNTIME_DIR",
               appId.c_str());
    return Launch::Failed;
  case RunningMark::Taken::Yes:
    break;
  }
  const std::string path = program->path;
  const int error = start(std::move(*program), mark.descriptor());
  if (error != 0) {
    dlog_print(DLOG_ERROR, kTag, "%s does not start: %s: %s", appId.c_str(), path.c_str(),
               std::strerror(error));
    return Launch::Failed;
  }
  return Launch::Started;
}

} // namespace

Launch launch(const std::string &appId, LaunchReason reason) try {
  return launchInstalled(appId, reason);
} catch (const ManifestError &error) {
  dlog_print(DLOG_ERROR, kTag, "%s", error.what());
  return Launch::Failed;
}

bool isStarting(const std::string &appId) {
  return RunningMark::isHeld(appId) && RunningMark::secondsSinceLaunch(appId) < kStartSeconds;
}

bool wasLaunched() {
  return std::getenv(kMarkVariable) != nullptr;
}

LaunchReason takeLaunchReason() {
  const char *mark = std::getenv(kMarkVariable);
  if (mark != nullptr) {
    // The mark is this process's, not that of the programs which it starts.
    (void)fcntl(std::atoi(mark), F_SETFD, FD_CLOEXEC);
    unsetenv(kMarkVariable);
  }
  const char *reason = std::getenv(kReasonVariable);
  const bool isRequested = reason != nullptr && std::strcmp(reason, kRequest) == 0;
  unsetenv(kReasonVariable);
  return isRequested ? LaunchReason::Request : LaunchReason::Default;
}

} // namespace platform::application
