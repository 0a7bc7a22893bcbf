// SPDX-License-Identifier: Apache-2.0
//
// What a line looks like.
#include "support/Child.h"

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <dlog.h>
#include <gmock/gmock.h>
#include <ostream>
#include <unistd.h>

namespace {

using testing::MatchesRegex;

constexpr std::size_t kMaxLine = 4096;

// The one write that a child process logs.
std::string logged(const std::function<void()> &log) {
  const Outcome outcome = inChild({}, [&log] {
    log();
    return 0;
  });
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.writes.size(), 1U);
  return outcome.err;
}

// Not time(), whose clock may be a tick behind.
time_t secondNow() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return now.tv_sec;
}

std::string stampOf(time_t seconds) {
  char text[sizeof "MM-DD HH:MM:SS"];
  tm local{};
  localtime_r(&seconds, &local);
  strftime(text, sizeof text, "%m-%d %H:%M:%S", &local);
  return text;
}

TEST(ALine, HasATimeAPriorityATagAProcessAndAText) {
  const Outcome outcome = inChild({}, [] {
    dlog_print(DLOG_ERROR, "TAG", "text %d", 7);
    return 0;
  });

  char pid[16];
  snprintf(pid, sizeof pid, "%5d", outcome.pid);
  EXPECT_THAT(outcome.err,
              MatchesRegex("[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} E/TAG     \\("
                           + std::string(pid) + "\\): text 7\n"));
}

TEST(ALine, HasTheLocalTime) {
  setenv("TZ", "XXX-05:30", 1); // nobody's own
  tzset();
  const time_t before = secondNow();

  const std::string line = logged([] { dlog_print(DLOG_ERROR, "TAG", "text"); });

  const time_t after = secondNow();
  std::vector<std::string> possible;
  for (time_t second = before; second <= after; ++second) {
    possible.push_back(stampOf(second));
  }
  EXPECT_THAT(possible, testing::Contains(line.substr(0, 14)));
}

TEST(ALine, HasTheProcessIdOfAForkedProcess) {
  const Outcome outcome = inChild({}, [] {
    dlog_print(DLOG_ERROR, "TAG", "parent");
    return inChild({},
                   [] {
                     return dlog_print(DLOG_ERROR, "TAG", "%d", getpid()) > 0 ? 0 : 1;
                   }).err.find("TAG")
                   != std::string::npos
               ? 0
               : 1;
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(ALine, HasATagOfAnyLength) {
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "T", "x"); })), "E/T       : x\n");
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "EIGHTISH", "x"); })),
            "E/EIGHTISH: x\n");
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "NORIX-APPSDK", "x"); })),
            "E/NORIX-APPSDK: x\n");
}

TEST(ALine, ShowsTheBeginningOfAVeryLongTag) {
  const std::string tag(5000, 'T');

  const std::string line = logged([&] { dlog_print(DLOG_ERROR, tag.c_str(), "x"); });

  EXPECT_EQ(withoutTimeAndPid(line), "E/" + std::string(128, 'T') + ": x\n");
}

TEST(ALine, HasAnEmptyTagForNone) {
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, nullptr, "x"); })),
            "E/        : x\n");
}

TEST(ALine, MayHaveAnEmptyText) {
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "TAG", "%s", ""); })),
            "E/TAG     : \n");
}

TEST(ALine, MayHaveFloatingPointArguments) {
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "TAG", "%.1f %d", 0.5, 3); })),
            "E/TAG     : 0.5 3\n");
}

struct Letter {
  log_priority priority;
  char letter;
};

void PrintTo(const Letter &row, std::ostream *out) {
  *out << row.letter;
}

class APriority : public testing::TestWithParam<Letter> {};

TEST_P(APriority, HasItsLetter) {
  const std::string line = logged([] { dlog_print(GetParam().priority, "TAG", "x"); });

  EXPECT_EQ(withoutTimeAndPid(line), std::string(1, GetParam().letter) + "/TAG     : x\n");
}

INSTANTIATE_TEST_SUITE_P(Of, APriority,
                         testing::Values(Letter{DLOG_VERBOSE, 'V'}, Letter{DLOG_DEBUG, 'D'},
                                         Letter{DLOG_INFO, 'I'}, Letter{DLOG_WARN, 'W'},
                                         Letter{DLOG_ERROR, 'E'}, Letter{DLOG_FATAL, 'F'}),
                         [](const auto &row) { return std::string(1, row.param.letter); });

class NoPriority : public testing::TestWithParam<log_priority> {};

TEST_P(NoPriority, IsRefused) {
  const Outcome outcome = inChild({}, [] {
    return dlog_print(GetParam(), "TAG", "x") == DLOG_ERROR_INVALID_PARAMETER ? 0 : 1;
  });

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

TEST_P(NoPriority, IsRefusedWhateverTheFilter) {
  const Outcome outcome = inChild({{"DLOG_FILTER", "TAG:S *:W"}}, [] {
    dlog_print(DLOG_VERBOSE, "TAG", "the filter is known from here on");
    return dlog_print(GetParam(), "TAG", "x") == DLOG_ERROR_INVALID_PARAMETER ? 0 : 1;
  });

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

INSTANTIATE_TEST_SUITE_P(Of, NoPriority,
                         testing::Values(DLOG_UNKNOWN, DLOG_DEFAULT, DLOG_SILENT, DLOG_PRIO_MAX));

TEST(NoFormat, IsRefused) {
  const Outcome outcome = inChild({}, [] {
    const char *volatile none = nullptr;
    return dlog_print(DLOG_ERROR, "TAG", none, 0) == DLOG_ERROR_INVALID_PARAMETER ? 0 : 1;
  });

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

TEST(NoFormat, IsRefusedAlsoForALineThatTheFilterDrops) {
  const Outcome outcome = inChild({{"DLOG_FILTER", "*:S"}}, [] {
    const char *volatile none = nullptr;
    dlog_print(DLOG_ERROR, "TAG", "the filter is known from here on");
    return dlog_print(DLOG_ERROR, "TAG", none, 0) == DLOG_ERROR_INVALID_PARAMETER ? 0 : 1;
  });

  EXPECT_EQ(outcome.status, 0);
}

TEST(AFormatThatCannotBeFollowed, IsRefused) {
  const Outcome outcome = inChild({}, [] {
    const wchar_t noCharacter[] = {static_cast<wchar_t>(0x7fffffff), 0};
    return dlog_print(DLOG_ERROR, "TAG", "%ls", noCharacter) == DLOG_ERROR_INVALID_PARAMETER ? 0
                                                                                             : 1;
  });

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

int printList(const char *fmt, ...) __attribute__((format(printf, 1, 2)));

int printList(const char *fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  const int result = dlog_vprint(DLOG_WARN, "TAG", fmt, ap);
  va_end(ap);
  return result;
}

TEST(AList, OfArgumentsIsLoggedAlike) {
  const std::string line = logged([] { printList("%s %d %.2f", "x", 1, 0.25); });

  EXPECT_EQ(withoutTimeAndPid(line), "W/TAG     : x 1 0.25\n");
}

TEST(TheResult, IsTheNumberOfBytesWritten) {
  const Outcome outcome = inChild({}, [] { return dlog_print(DLOG_ERROR, "TAG", "text"); });

  EXPECT_EQ(static_cast<std::size_t>(outcome.status), outcome.err.size());
}

TEST(ATextOfSeveralLines, HasAHeaderForEachAndIsOneWrite) {
  const std::string lines = logged([] { dlog_print(DLOG_ERROR, "TAG", "one\ntwo\n\nfour"); });

  EXPECT_EQ(withoutTimeAndPid(lines),
            "E/TAG     : one\nE/TAG     : two\nE/TAG     : \nE/TAG     : four\n");
}

TEST(ATextOfSeveralLines, MayBeginWithAnEmptyOne) {
  const std::string lines = logged([] { dlog_print(DLOG_ERROR, "TAG", "\ntwo"); });

  EXPECT_EQ(withoutTimeAndPid(lines), "E/TAG     : \nE/TAG     : two\n");
}

TEST(ANewlineAtTheEnd, AddsNoLine) {
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "TAG", "one\n"); })),
            "E/TAG     : one\n");
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "TAG", "one\ntwo\n"); })),
            "E/TAG     : one\nE/TAG     : two\n");
}

TEST(ANewlineAtTheEnd, AloneIsAnEmptyLine) {
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "TAG", "\n"); })),
            "E/TAG     : \n");
}

struct Shown {
  const char *name;
  std::string text;
  const char *shown;
};

void PrintTo(const Shown &row, std::ostream *out) {
  *out << row.name;
}

class ATextFromAnybody : public testing::TestWithParam<Shown> {};

TEST_P(ATextFromAnybody, IsDisplayedAndNotObeyedByATerminal) {
  const std::string line =
      logged([] { dlog_print(DLOG_ERROR, "TAG", "<%s>", GetParam().text.c_str()); });

  EXPECT_EQ(withoutTimeAndPid(line), "E/TAG     : <" + std::string(GetParam().shown) + ">\n");
}

INSTANTIATE_TEST_SUITE_P(
    With, ATextFromAnybody,
    testing::Values(Shown{"AnEscapeSequence", "\x1b[31m", "\\x1b[31m"},
                    Shown{"ABell", "\a", "\\x07"},
                    Shown{"TheFirstControlCharacter", "\x01", "\\x01"},
                    Shown{"TheLastControlCharacter", "\x1f", "\\x1f"},
                    Shown{"ACarriageReturn", "a\rb", "a\\x0db"}, Shown{"ADelete", "\x7f", "\\x7f"},
                    Shown{"AnEightBitEscape", "\x9b", "\\x9b"},
                    Shown{"AControlCharacterInUtf8", "\xc2\x9b", "\\xc2\\x9b"},
                    Shown{"TheLastControlCharacterInUtf8", "\xc2\x9f", "\\xc2\\x9f"},
                    Shown{"AByteThatBeginsNothing", "\xff", "\\xff"},
                    Shown{"AnOverlongForm", "\xc0\xaf", "\\xc0\\xaf"},
                    Shown{"AnOverlongFormOfThree", "\xe0\x9f\xbf", "\\xe0\\x9f\\xbf"},
                    Shown{"AnOverlongFormOfFour", "\xf0\x8f\xbf\xbf", "\\xf0\\x8f\\xbf\\xbf"},
                    Shown{"ASurrogate", "\xed\xa0\x80", "\\xed\\xa0\\x80"},
                    Shown{"MoreThanUnicodeHas", "\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
                    Shown{"ACharacterCutOff", "\xe2\x82", "\\xe2\\x82"},
                    Shown{"AWrongThirdByte", "\xe2\x82z", "\\xe2\\x82z"}),
    [](const auto &row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Keeping, ATextFromAnybody,
    testing::Values(Shown{"ATab", "a\tb", "a\tb"}, Shown{"ABackslash", "\\x1b", "\\x1b"},
                    Shown{"TheFirstOfTwoBytes", "\xc2\xa0", "\xc2\xa0"},
                    Shown{"Umlauts", "\xc3\xa4", "\xc3\xa4"},
                    Shown{"Hangul", "\xed\x95\x9c", "\xed\x95\x9c"},
                    Shown{"TheLastBeforeTheSurrogates", "\xed\x9f\xbf", "\xed\x9f\xbf"},
                    Shown{"TheFirstBehindTheSurrogates", "\xee\x80\x80", "\xee\x80\x80"},
                    Shown{"APicture", "\xf0\x9f\x8e\xb5", "\xf0\x9f\x8e\xb5"},
                    Shown{"TheLastOfAll", "\xf4\x8f\xbf\xbf", "\xf4\x8f\xbf\xbf"}),
    [](const auto &row) { return std::string(row.param.name); });

TEST(ATagFromAnybody, IsDisplayedAndNotObeyedByATerminal) {
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "A\x1b\nB", "x"); })),
            "E/A\\x1b\\x0aB    : x\n");
}

TEST(EachOfSeveralLines, IsDisplayedAndNotObeyedByATerminal) {
  EXPECT_EQ(withoutTimeAndPid(logged([] { dlog_print(DLOG_ERROR, "TAG", "a\a\nb\x1b"); })),
            "E/TAG     : a\\x07\nE/TAG     : b\\x1b\n");
}

TEST(TheResult, CountsTheBytesOfEscapes) {
  const Outcome outcome = inChild({}, [] { return dlog_print(DLOG_ERROR, "TAG", "\x1b"); });

  EXPECT_EQ(static_cast<std::size_t>(outcome.status), outcome.err.size());
}

// A piece of text repeated until it has a size.
std::string repeated(const char *piece, std::size_t size) {
  std::string text;
  while (text.size() < size) {
    text += piece;
  }
  return text;
}

// Texts of lengths around the limit, and far beyond it.
class ALongText : public testing::TestWithParam<std::size_t> {};

INSTANTIATE_TEST_SUITE_P(OfBytes, ALongText,
                         testing::Values(4000, 4057, 4058, 4059, 4060, 4095, 4096, 4097, 1000000));

TEST_P(ALongText, IsCutAtTheBound) {
  const std::string text(GetParam(), 'x');

  const std::string line = logged([&] { dlog_print(DLOG_ERROR, "TAG", "%s", text.c_str()); });

  const std::size_t header = line.find("): ") + 3;
  EXPECT_EQ(line.size(), std::min(kMaxLine, header + text.size() + 1));
  EXPECT_EQ(line.substr(header), std::string(line.size() - header - 1, 'x') + "\n");
}

TEST_P(ALongText, OfLinesIsCutAtTheBound) {
  for (const char *line : {"\n", "0123456789012345678901234567890123456789\n"}) {
    const std::string text = repeated(line, GetParam());

    const std::string lines = logged([&] { dlog_print(DLOG_ERROR, "TAG", "%s", text.c_str()); });

    EXPECT_LE(lines.size(), kMaxLine);
    EXPECT_GT(lines.size(), kMaxLine - 100);
    EXPECT_EQ(lines.back(), '\n');
  }
}

TEST_P(ALongText, OfEscapesIsCutBetweenThem) {
  const std::string text(GetParam(), '\x1b');

  const std::string line = logged([&] { dlog_print(DLOG_ERROR, "TAG", "%s", text.c_str()); });

  const std::size_t header = line.find("): ") + 3;
  EXPECT_LE(line.size(), kMaxLine);
  EXPECT_GT(line.size(), kMaxLine - 5);
  EXPECT_EQ((line.size() - header - 1) % 4, 0U);
}

TEST_P(ALongText, OfLongCharactersIsCutBetweenThem) {
  const std::string text = repeated("\xed\x95\x9c", GetParam());

  const std::string line = logged([&] { dlog_print(DLOG_ERROR, "TAG", "%s", text.c_str()); });

  const std::size_t header = line.find("): ") + 3;
  EXPECT_LE(line.size(), kMaxLine);
  EXPECT_EQ(line.substr(header, 3), "\xed\x95\x9c");
  EXPECT_EQ(line.substr(line.size() - 4), "\xed\x95\x9c\n");
}

TEST(Errno, CanBeLogged) {
  const std::string line = logged([] {
    const char *volatile extension = "%m"; // which -Wpedantic does not like to see
    errno = ENOENT;
    dlog_print(DLOG_ERROR, "TAG", extension, 0);
  });

  EXPECT_EQ(withoutTimeAndPid(line), "E/TAG     : No such file or directory\n");
}

TEST(Errno, IsLoggedAsItWasAlsoWhenTheTimeZoneIsUnknown) {
  const Outcome outcome = inChild({{"TZ", ":/no such folder/zone"}}, [] {
    const char *volatile extension = "%m";
    errno = ENOTTY;
    dlog_print(DLOG_ERROR, "TAG", extension, 0);
    return 0;
  });

  EXPECT_EQ(withoutTimeAndPid(outcome.err), "E/TAG     : Inappropriate ioctl for device\n");
}

TEST(Errno, IsLeftAsItIs) {
  const Outcome outcome = inChild({{"DLOG_FILTER", "A:S"}, {"DLOG_FILE", "/no such folder/x"}}, [] {
    int changes = 0;
    for (const char *tag : {"A", "B", "A", "B"}) {
      errno = ENOTTY;
      dlog_print(DLOG_ERROR, tag, "x");
      changes += errno != ENOTTY ? 1 : 0;
    }
    close(STDERR_FILENO);
    errno = ENOTTY;
    changes += dlog_print(DLOG_ERROR, "B", "x") > 0 || errno != ENOTTY ? 1 : 0;
    return changes;
  });

  EXPECT_EQ(outcome.status, 0);
}

} // namespace
