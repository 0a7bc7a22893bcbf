// SPDX-License-Identifier: Apache-2.0
#include "common/log.h"
#include "common/text.h"

#include "fakes/LibraryTest.h"
#include "fakes/LogMatchers.h"

#include <stdexcept>

namespace {

using fake::IsLine;
using fake::library;
using fake::LinesAre;

TEST(TheBaseNameOfAFile, IsWhatFollowsTheLastSlash) {
  EXPECT_STREQ(norix::baseName("/folder/src/norix.cpp"), "norix.cpp");
  EXPECT_STREQ(norix::baseName("src/norix.cpp"), "norix.cpp");
  EXPECT_STREQ(norix::baseName("norix.cpp"), "norix.cpp");
  EXPECT_STREQ(norix::baseName("folder/"), "");
  EXPECT_STREQ(norix::baseName(""), "");
}

TEST(TheBaseNameOfAFile, IsCutAtCompileTime) {
  constexpr const char *kName = norix::baseName("a/b");

  static_assert(kName[0] == 'b');
  EXPECT_STREQ(kName, "b");
}

class ALogLine : public fake::LibraryTest {};

TEST_F(ALogLine, NamesItsPlace) {
  library([] {
    NORIX_LOG("plain");
    return 0;
  });

  const fake::LogLine &line = logLines().back();
  EXPECT_EQ(line.file, "common_test.cpp");
  EXPECT_EQ(line.function, "operator()");
  EXPECT_EQ(line.line, __LINE__ - 7);
}

void logsWithArguments() {
  NORIX_LOG_FORMAT("%s has %d", "it", 3);
}

TEST_F(ALogLine, HasItsTextAndArguments) {
  library([] {
    logsWithArguments();
    return 0;
  });

  EXPECT_THAT(logLines(),
              LinesAre({IsLine("common_test.cpp", "logsWithArguments", "%s has %d", "it has 3")}));
}

TEST(ACopyOfAText, IsTheText) {
  EXPECT_EQ(norix::textOf("text"), "text");
  EXPECT_EQ(norix::textOf(""), "");
}

TEST(ACopyOfAText, CannotBeMadeOfNull) {
  EXPECT_THAT([] { norix::textOf(nullptr); },
              testing::ThrowsMessage<std::logic_error>(
                  testing::StrEq("basic_string::_M_construct null not valid")));
}

} // namespace
