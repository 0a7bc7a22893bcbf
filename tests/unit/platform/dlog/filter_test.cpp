// SPDX-License-Identifier: Apache-2.0
//
// Which lines DLOG_FILTER lets pass.
#include "support/Child.h"

#include <dlog.h>
#include <gmock/gmock.h>
#include <ostream>

namespace {

using testing::HasSubstr;

// The letters of the priorities whose lines with this tag pass, in ascending order.
std::string lettersThatPass(const std::string &filter, const char *tag) {
  const Outcome outcome = inChild({{"DLOG_FILTER", filter}}, [tag] {
    for (int priority = DLOG_VERBOSE; priority <= DLOG_FATAL; ++priority) {
      dlog_print(static_cast<log_priority>(priority), tag, "x");
    }
    return 0;
  });

  std::string letters;
  for (const std::string &write : outcome.writes) {
    const auto slash = write.find('/');
    if (slash != std::string::npos && write.find("dlog: ") != 0) {
      letters += write[slash - 1];
    }
  }
  return letters;
}

struct Rule {
  const char *name;
  const char *filter;
  const char *tag;
  const char *pass;
};

void PrintTo(const Rule &row, std::ostream *out) {
  *out << row.name;
}

class AFilter : public testing::TestWithParam<Rule> {};

TEST_P(AFilter, LetsTheRightLinesPass) {
  EXPECT_EQ(lettersThatPass(GetParam().filter, GetParam().tag), GetParam().pass);
}

std::string nameOf(const testing::TestParamInfo<Rule> &info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Of, AFilter,
    testing::Values(Rule{"Nothing", "", "TAG", "VDIWEF"}, Rule{"Blanks", " \t ", "TAG", "VDIWEF"},
                    Rule{"Verbose", "TAG:V", "TAG", "VDIWEF"},
                    Rule{"Debug", "TAG:D", "TAG", "DIWEF"}, Rule{"Info", "TAG:I", "TAG", "IWEF"},
                    Rule{"Warn", "TAG:W", "TAG", "WEF"}, Rule{"Error", "TAG:E", "TAG", "EF"},
                    Rule{"Fatal", "TAG:F", "TAG", "F"}, Rule{"Silent", "TAG:S", "TAG", ""}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(ForOthers, AFilter,
                         testing::Values(Rule{"NothingSaid", "TAG:S", "OTHER", "VDIWEF"},
                                         Rule{"Star", "TAG:S *:W", "OTHER", "WEF"},
                                         Rule{"StarFirst", "*:W TAG:S", "OTHER", "WEF"},
                                         Rule{"StarFirstKeepsTheTag", "*:W TAG:S", "TAG", ""},
                                         Rule{"StarLastKeepsTheTag", "TAG:D *:S", "TAG", "DIWEF"},
                                         Rule{"StarAlone", "*", "TAG", "VDIWEF"},
                                         Rule{"SilentStar", "*:S", "TAG", ""},
                                         Rule{"LaterStar", "*:S *:E", "TAG", "EF"},
                                         Rule{"StarBackToEverything", "*:S *", "TAG", "VDIWEF"}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(OfWords, AFilter,
                         testing::Values(Rule{"LaterOneWins", "TAG:S TAG:E", "TAG", "EF"},
                                         Rule{"LaterOneWinsAlsoWhenStricter", "TAG:E OTHER:V TAG:F",
                                              "TAG", "F"},
                                         Rule{"TagAlone", "*:S TAG", "TAG", "VDIWEF"},
                                         Rule{"ManyBlanks", "  \t TAG:E\n  OTHER:S ", "TAG", "EF"},
                                         Rule{"ColonInTheTag", "A:B:E", "A:B", "EF"},
                                         Rule{"SmallLetterIsRefused", "TAG:e", "TAG", "VDIWEF"},
                                         Rule{"OneOfMany", "A:S B:S TAG:E C:S", "TAG", "EF"}),
                         nameOf);

INSTANTIATE_TEST_SUITE_P(
    ForTag, AFilter,
    testing::Values(
        Rule{"OfOtherCase", "TAG:S", "tag", "VDIWEF"}, Rule{"Longer", "TAG:S", "TAGS", "VDIWEF"},
        Rule{"Shorter", "TAG:S", "TA", "VDIWEF"}, Rule{"Empty", "TAG:S", "", "VDIWEF"},
        Rule{"EmptyUnderStar", "TAG:V *:F", "", "F"}, Rule{"Null", "TAG:V *:F", nullptr, "F"},
        Rule{"OfOneLetter", "T:S", "T", ""}, Rule{"OfSeven", "SEVENTH:S", "SEVENTH", ""},
        Rule{"OfSevenButTheLast", "SEVENTH:S", "SEVENTI", "VDIWEF"},
        Rule{"OfEight", "EIGHTISH:S", "EIGHTISH", ""},
        Rule{"OfEightButTheFirst", "EIGHTISH:S", "AIGHTISH", "VDIWEF"},
        Rule{"OfEightButTheLast", "EIGHTISH:S", "EIGHTISI", "VDIWEF"},
        Rule{"OfTwelve", "NORIX-APPSDK:S", "NORIX-APPSDK", ""},
        Rule{"OfTwelveButTheNinth", "NORIX-APPSDK:S", "NORIX-APQSDK", "VDIWEF"},
        Rule{"OfSixteen", "SIXTEEN-LETTERS-:S", "SIXTEEN-LETTERS-", ""},
        Rule{"OfSixteenButTheLast", "SIXTEEN-LETTERS-:S", "SIXTEEN-LETTERS+", "VDIWEF"},
        Rule{"OfSeventeen", "SIXTEEN-LETTERS-+:S", "SIXTEEN-LETTERS-+", ""},
        Rule{"OfSeventeenButTheNinth", "SIXTEEN-LETTERS-+:S", "SIXTEEN-LATTERS-+", "VDIWEF"}),
    nameOf);

TEST(AFilterThatIsNotSet, LetsEverythingPass) {
  const Outcome outcome = inChild({}, [] {
    dlog_print(DLOG_VERBOSE, "TAG", "x");
    return 0;
  });

  EXPECT_EQ(withoutTimeAndPid(outcome.err), "V/TAG     : x\n");
}

TEST(AFilter, ComparesTheTextOfATagNotItsAddress) {
  const Outcome outcome = inChild({{"DLOG_FILTER", "QUIET:S"}}, [] {
    char tag[] = "QUIET";
    dlog_print(DLOG_ERROR, tag, "dropped");
    tag[0] = 'q';
    dlog_print(DLOG_ERROR, tag, "written");
    tag[0] = 'Q';
    dlog_print(DLOG_ERROR, tag, "dropped");
    return 0;
  });

  EXPECT_EQ(withoutTimeAndPid(outcome.err), "E/qUIET   : written\n");
}

TEST(ADroppedLine, IsNotFormatted) {
  const Outcome outcome = inChild({{"DLOG_FILTER", "TAG:S"}}, [] {
    const auto *nowhere = reinterpret_cast<const char *>(1); // to format it would crash
    int sum = dlog_print(DLOG_ERROR, "TAG", "%s", nowhere);
    sum += dlog_print(DLOG_ERROR, "TAG", "%s", nowhere);
    return sum;
  });

  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.writes.empty());
}

TEST(ABadWord, IsNamedOnceWithWhatIsAllowed) {
  const Outcome outcome = inChild({{"DLOG_FILTER", "A:X B:E"}}, [] {
    dlog_print(DLOG_ERROR, "TAG", "one");
    dlog_print(DLOG_ERROR, "TAG", "two");
    return 0;
  });

  ASSERT_EQ(outcome.writes.size(), 3U);
  EXPECT_EQ(outcome.writes[0],
            "dlog: DLOG_FILTER: ignoring \"A:X\": a word is TAG, TAG:PRIORITY or *:PRIORITY, and "
            "the priority V, D, I, W, E, F or S\n");
}

TEST(ABadWord, LeavesTheOthersInForce) {
  EXPECT_EQ(lettersThatPass("TAG:E A:X *:S", "TAG"), "EF");
  EXPECT_EQ(lettersThatPass("A:X TAG:E *:S", "OTHER"), "");
}

TEST(ABadWord, IsNamedTogetherWithTheOtherBadOnes) {
  const Outcome outcome = inChild({{"DLOG_FILTER", "A: :E B:EE *:X : TAG:E"}}, [] {
    dlog_print(DLOG_ERROR, "TAG", "x");
    return 0;
  });

  ASSERT_EQ(outcome.writes.size(), 2U);
  EXPECT_THAT(outcome.writes[0], HasSubstr("ignoring \"A:\" \":E\" \"B:EE\" \"*:X\" \":\": "));
}

} // namespace
