// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/LineReader.h"
#include "assistant/mcp/message.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace norix::assistant::mcp;

namespace {

struct BadLine {
  const char *name;
  std::string line;
  int code;
  const char *id;
};

void PrintTo(const BadLine &row, std::ostream *out) {
  *out << row.name;
}

class ABadLine : public ::testing::TestWithParam<BadLine> {};

TEST_P(ABadLine, IsRefusedWithItsCodeAndTheIdThatCouldBeRead) {
  try {
    parseMessage(GetParam().line);
    FAIL() << "accepted";
  } catch (const BadMessage &error) {
    EXPECT_EQ(error.code(), GetParam().code) << error.what();
    EXPECT_EQ(toLine(error.id()), GetParam().id);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Lines, ABadLine,
    ::testing::Values(
        BadLine{"NoJson", "hello", ParseError, "null"},
        BadLine{"HalfAnObject", R"({"jsonrpc":"2.0","id":1)", ParseError, "null"},
        BadLine{"NotUtf8", "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\"}", ParseError,
                "null"},
        BadLine{"ABatch", R"([{"jsonrpc":"2.0","id":1,"method":"ping"}])", InvalidRequest, "null"},
        BadLine{"ANumber", "42", InvalidRequest, "null"},
        BadLine{"NoVersion", R"({"id":1,"method":"ping"})", InvalidRequest, "1"},
        BadLine{"AnotherVersion", R"({"jsonrpc":"1.0","id":"a","method":"ping"})", InvalidRequest,
                "\"a\""},
        BadLine{"AnIdOfNull", R"({"jsonrpc":"2.0","id":null,"method":"ping"})", InvalidRequest,
                "null"},
        BadLine{"AnIdThatIsAFraction", R"({"jsonrpc":"2.0","id":1.5,"method":"ping"})",
                InvalidRequest, "null"},
        BadLine{"AMethodThatIsNoText", R"({"jsonrpc":"2.0","id":1,"method":2})", InvalidRequest,
                "1"},
        BadLine{"NeitherMethodNorResult", R"({"jsonrpc":"2.0","id":1})", InvalidRequest, "1"},
        BadLine{"ParamsThatAreNoObject", R"({"jsonrpc":"2.0","id":1,"method":"a","params":[1]})",
                InvalidParams, "1"},
        BadLine{"ADeepOne", std::string(100000, '['), InvalidRequest, "null"}),
    [](const auto &row) { return row.param.name; });

TEST(AMessage, WithoutAnIdIsANotification) {
  EXPECT_EQ(parseMessage(R"({"jsonrpc":"2.0","method":"a"})").kind, Message::Kind::Notification);
}

TEST(AMessage, WithAResultIsAResponse) {
  const Message message = parseMessage(R"({"jsonrpc":"2.0","id":"q","result":{"a":1}})");

  EXPECT_EQ(message.kind, Message::Kind::Response);
  EXPECT_EQ(toLine(message.result), R"({"a":1})");
}

TEST(AMessage, IsWrittenAsOneLineWhateverItHolds) {
  const std::string line = toLine(resultMessage(1, {{"text", "two\nlines\r\n\xff"}}));

  EXPECT_EQ(line.find_first_of("\r\n"), std::string::npos);
  EXPECT_NO_THROW(parseJson(line));
}

struct Lines {
  std::vector<std::string> read;
  int tooLong = 0;

  LineReader reader() {
    return LineReader(
        8, {[this](std::string_view line) { read.emplace_back(line); }, [this] { ++tooLong; }});
  }
};

TEST(ALineReader, CutsLinesWhereverTheStreamIsCut) {
  const std::string stream = "one\ntwo\r\n\nthree";
  for (std::size_t cut = 0; cut <= stream.size(); ++cut) {
    Lines lines;
    LineReader reader = lines.reader();

    reader.feed(std::string_view(stream).substr(0, cut));
    reader.feed(std::string_view(stream).substr(cut));
    reader.finish();

    EXPECT_EQ(lines.read, (std::vector<std::string>{"one", "two", "three"})) << "cut at " << cut;
  }
}

TEST(ALineReader, ReportsALongLineOnceAndReadsTheNext) {
  Lines lines;
  LineReader reader = lines.reader();

  for (int piece = 0; piece < 10; ++piece) {
    reader.feed("123456789");
  }
  reader.feed("\nnext\n");

  EXPECT_EQ(lines.tooLong, 1);
  EXPECT_EQ(lines.read, (std::vector<std::string>{"next"}));
}

TEST(ALineReader, TakesALineOfExactlyItsBound) {
  Lines lines;
  lines.reader().feed("12345678\n");

  EXPECT_EQ(lines.read, (std::vector<std::string>{"12345678"}));
  EXPECT_EQ(lines.tooLong, 0);
}

} // namespace
