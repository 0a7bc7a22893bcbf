// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/visible.h"

#include "assistant/trace/utf8.h"

#include <gtest/gtest.h>

namespace {

using norix::assistant::trace::beginningOf;
using norix::assistant::trace::isUtf8;
using norix::assistant::trace::visible;

TEST(AVisibleText, KeepsWhatATerminalOnlyDisplays) {
  EXPECT_EQ(visible("C:\\music \"Björk\" 音楽 🎵"), "C:\\music \"Björk\" 音楽 🎵");
}

TEST(AVisibleText, SpellsControlCharactersOut) {
  EXPECT_EQ(visible("a\n\t\r\x1b[31m\x7f\b"), "a\\n\\t\\r\\e[31m\\x7f\\x08");
  EXPECT_EQ(visible(std::string_view("\0", 1)), "\\x00");
}

TEST(AVisibleText, SpellsTheSecondRangeOfControlCharactersOut) {
  EXPECT_EQ(visible("\xc2\x9b"
                    "31m"),
            "\\xc2\\x9b31m");
}

TEST(AVisibleText, SpellsBytesOutThatAreNoUtf8) {
  EXPECT_EQ(visible("\xff"
                    "a\xc3"),
            "\\xffa\\xc3");
}

TEST(TheBeginningOfAText, EndsWithAWholeCharacter) {
  EXPECT_EQ(beginningOf("aé音", 2), "a");
  EXPECT_EQ(beginningOf("aé音", 3), "aé");
  EXPECT_EQ(beginningOf("aé音", 5), "aé");
  EXPECT_EQ(beginningOf("aé音", 6), "aé音");
}

struct Bytes {
  const char *text;
  bool isUtf8;
};

void PrintTo(const Bytes &bytes, std::ostream *out) {
  *out << visible(bytes.text);
}

class Text : public testing::TestWithParam<Bytes> {};

TEST_P(Text, IsCheckedForUtf8) {
  EXPECT_EQ(isUtf8(GetParam().text), GetParam().isUtf8);
}

INSTANTIATE_TEST_SUITE_P(Each, Text,
                         testing::Values(Bytes{"", true},
                                         Bytes{"plain text, longer than a word", true},
                                         Bytes{"plain text\xff and more", false},
                                         Bytes{"\xc3\xa9", true}, Bytes{"\xf4\x8f\xbf\xbf", true},
                                         Bytes{"\xc0\xaf", false}, Bytes{"\xe0\x80\xaf", false},
                                         Bytes{"\xed\xa0\x80", false},
                                         Bytes{"\xf4\x90\x80\x80", false},
                                         Bytes{"\xe9t\xe9", false}, Bytes{"\xc3", false}));

} // namespace
