// SPDX-License-Identifier: Apache-2.0
//
// The log in a file.
#include "support/Child.h"

#include <cerrno>
#include <csignal>
#include <dlog.h>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;
using testing::StartsWith;

// The descriptor under which this process has a file open, or -1.
int descriptorOf(const std::string &path) {
  struct stat wanted {};
  struct stat open {};
  stat(path.c_str(), &wanted);
  for (int descriptor = 0; descriptor < 1000; ++descriptor) {
    if (fstat(descriptor, &open) == 0 && open.st_dev == wanted.st_dev
        && open.st_ino == wanted.st_ino) {
      return descriptor;
    }
  }
  return -1;
}

class ALogFile : public testing::Test {
protected:
  Environment environment() const { return {{"DLOG_FILE", _path}}; }

  Outcome logOneLine(const std::string &path) const {
    return inChild({{"DLOG_FILE", path}},
                   [] { return dlog_print(DLOG_ERROR, "TAG", "x") > 0 ? 0 : 1; });
  }

  const TemporaryFolder _folder;
  const std::string _path = _folder / "log";
};

TEST_F(ALogFile, TakesTheLines) {
  const Outcome outcome = logOneLine(_path);

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(withoutTimeAndPid(contentOf(_path)), "E/TAG     : x\n");
}

TEST_F(ALogFile, HoldsNothingThatATerminalObeys) {
  inChild(environment(), [] { return dlog_print(DLOG_ERROR, "TAG", "\x1b[2J"); });

  EXPECT_EQ(withoutTimeAndPid(contentOf(_path)), "E/TAG     : \\x1b[2J\n");
}

TEST_F(ALogFile, IsAppendedTo) {
  std::ofstream(_path) << "before\n";

  logOneLine(_path);
  logOneLine(_path);

  EXPECT_EQ(withoutTimeAndPid(contentOf(_path)), "before\nE/TAG     : x\nE/TAG     : x\n");
}

TEST_F(ALogFile, IsAppendedToByTwoProcessesAtOnce) {
  inChild(environment(), [this] {
    dlog_print(DLOG_ERROR, "TAG", "one");
    logOneLine(_path);
    dlog_print(DLOG_ERROR, "TAG", "three");
    return 0;
  });

  EXPECT_EQ(withoutTimeAndPid(contentOf(_path)),
            "E/TAG     : one\nE/TAG     : x\nE/TAG     : three\n");
}

TEST_F(ALogFile, IsOpenedOnce) {
  inChild(environment(), [this] {
    dlog_print(DLOG_ERROR, "TAG", "one");
    rename(_path.c_str(), (_folder / "renamed").c_str());
    dlog_print(DLOG_ERROR, "TAG", "two");
    return 0;
  });

  EXPECT_EQ(withoutTimeAndPid(contentOf(_folder / "renamed")),
            "E/TAG     : one\nE/TAG     : two\n");
}

TEST_F(ALogFile, IsNotInheritedByOtherPrograms) {
  const Outcome outcome = inChild(environment(), [this] {
    dlog_print(DLOG_ERROR, "TAG", "x");
    const int descriptor = descriptorOf(_path);
    return descriptor >= 0 && (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0 ? 0 : 1;
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ALogFile, DoesNotTakeThePlaceOfAClosedStandardStream) {
  const Outcome outcome = inChild(environment(), [] {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    close(STDERR_FILENO);
    dlog_print(DLOG_ERROR, "TAG", "x");
    const bool areClosed = fcntl(STDIN_FILENO, F_GETFD) < 0 && fcntl(STDOUT_FILENO, F_GETFD) < 0
                           && fcntl(STDERR_FILENO, F_GETFD) < 0;
    return areClosed ? 0 : 1; // closed after the library was loaded: nobody has seen it yet
  });

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(withoutTimeAndPid(contentOf(_path)), "E/TAG     : x\n");
}

TEST_F(ALogFile, ThatIsNotNamedIsStandardError) {
  const Outcome outcome = logOneLine("");

  EXPECT_EQ(withoutTimeAndPid(outcome.err), "E/TAG     : x\n");
}

TEST_F(ALogFile, ThatCannotBeOpenedIsNamedOnceAndReplacedByStandardError) {
  const std::string path = _folder / "missing/log";

  const Outcome outcome = inChild({{"DLOG_FILE", path}}, [] {
    dlog_print(DLOG_ERROR, "TAG", "one");
    dlog_print(DLOG_ERROR, "TAG", "two");
    return 0;
  });

  ASSERT_EQ(outcome.writes.size(), 3U);
  EXPECT_EQ(outcome.writes[0], "dlog: DLOG_FILE: cannot append to \"" + path
                                   + "\": No such file or directory: the log goes to standard "
                                     "error\n");
  EXPECT_EQ(withoutTimeAndPid(outcome.writes[1]), "E/TAG     : one\n");
  EXPECT_EQ(withoutTimeAndPid(outcome.writes[2]), "E/TAG     : two\n");
}

TEST_F(ALogFile, ThatIsAFolderIsReplacedByStandardError) {
  const Outcome outcome = logOneLine(_folder.path());

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.err, StartsWith("dlog: DLOG_FILE: "));
  EXPECT_THAT(outcome.err, HasSubstr("Is a directory"));
}

TEST_F(ALogFile, ThatIsAPipeWithoutAReaderDoesNotStopTheApplication) {
  ASSERT_EQ(mkfifo(_path.c_str(), 0600), 0);

  const Outcome outcome = logOneLine(_path);

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.err, HasSubstr("No such device or address"));
}

TEST_F(ALogFile, ThatIsAPipeTakesTheLinesUntilItsReaderIsGone) {
  ASSERT_EQ(mkfifo(_path.c_str(), 0600), 0);

  const Outcome outcome = inChild(environment(), [this] {
    const int reader = open(_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    char bytes[200];
    const int written = dlog_print(DLOG_ERROR, "TAG", "x");
    const bool isRead = read(reader, bytes, sizeof bytes) == written;
    close(reader);
    const int result = dlog_print(DLOG_ERROR, "TAG", "x");
    return isRead && result == DLOG_ERROR_NOT_PERMITTED ? 0 : 1;
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ALogFile, ThatIsFullIsAnError) {
  const Outcome outcome = inChild({{"DLOG_FILE", "/dev/full"}}, [] {
    return dlog_print(DLOG_ERROR, "TAG", "x") == DLOG_ERROR_NOT_PERMITTED ? 0 : 1;
  });

  EXPECT_EQ(outcome.status, 0);
}

int printPastALimit() {
  const rlimit small{60, 60};
  setrlimit(RLIMIT_FSIZE, &small);
  const int first = dlog_print(DLOG_ERROR, "TAG", "x");
  const int second = dlog_print(DLOG_ERROR, "TAG", "x");
  return first > 0 && second == DLOG_ERROR_NOT_PERMITTED ? 0 : 1;
}

TEST_F(ALogFile, IsPartlyWrittenWhenItMayGrowNoFurther) {
  const Outcome outcome = inChild(environment(), printPastALimit);

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(contentOf(_path).size(), 60U);
}

TEST_F(ALogFile, ThatIsStandardErrorMayBeLimitedAsWell) {
  const Outcome outcome = inChild({}, [this] {
    const int file = open(_path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    dup2(file, STDERR_FILENO);
    return printPastALimit();
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ALogFile, CallsNoHandlerWhenItMayGrowNoFurther) {
  const Outcome outcome = inChild(environment(), [] {
    static volatile std::sig_atomic_t handled = 0;
    std::signal(SIGXFSZ, [](int) { handled = 1; });
    return printPastALimit() + handled;
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ALogFile, LeavesASignalPendingThatWasWhenItMayGrowNoFurther) {
  const Outcome outcome = inChild(environment(), [] {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGXFSZ);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    const int without = printPastALimit();
    sigset_t pending;
    sigpending(&pending);
    const int left = sigismember(&pending, SIGXFSZ);
    raise(SIGXFSZ);
    dlog_print(DLOG_ERROR, "TAG", "x");
    sigpending(&pending);
    return without + (left == 0 ? 0 : 10) + (sigismember(&pending, SIGXFSZ) == 1 ? 0 : 20);
  });

  EXPECT_EQ(outcome.status, 0);
}

} // namespace
