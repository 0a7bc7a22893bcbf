// SPDX-License-Identifier: Apache-2.0
#include "probe/Record.h"
#include "probe/json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <vector>

namespace {

using nlohmann::json;
using norix::probe::EventKind;
using norix::probe::Field;
using norix::probe::formatRecord;
using norix::probe::kLongestLine;
using norix::probe::Record;

std::string lineOf(const Record &record) {
  std::vector<char> line(kLongestLine);
  return {line.data(), formatRecord(record.data(), record.size(), 7, line.data())};
}

std::string textBack(const std::string &text) {
  Record record(EventKind::Log);
  record.text(Field::Text, std::string_view(text));
  return json::parse(lineOf(record)).at("text");
}

TEST(AnEventsLine, HasWhatEveryEventHas) {
  const json event = json::parse(lineOf(Record(EventKind::CallbackEntered)));

  EXPECT_EQ(event.at("event"), "callback-entered");
  EXPECT_EQ(event.at("n"), 7);
  EXPECT_GT(event.at("t"), 0);
  EXPECT_GT(event.at("thread"), 0);
}

TEST(AnEventsLine, EndsWithItsOnlyNewline) {
  Record record(EventKind::Log);
  record.text(Field::Text, "two\nlines");
  const std::string line = lineOf(record);

  EXPECT_EQ(line.find('\n'), line.size() - 1);
}

TEST(AnEventsLine, CarriesEachKindOfValue) {
  Record record(EventKind::Call);
  record.number(Field::Result, -1073741825)
      .boolean(Field::OnLoop, true)
      .decimal(Field::RequestId, ~std::uint64_t{0})
      .pointer(Field::Handle, nullptr)
      .text(Field::Function, "norix_initialize")
      .text(Field::Action, static_cast<const char *>(nullptr));

  const json event = json::parse(lineOf(record));

  EXPECT_EQ(event.at("result"), -1073741825);
  EXPECT_EQ(event.at("onLoop"), true);
  EXPECT_EQ(event.at("requestId"), "18446744073709551615");
  EXPECT_EQ(event.at("handle"), "0x0");
  EXPECT_EQ(event.at("function"), "norix_initialize");
  EXPECT_FALSE(event.contains("action"));
}

TEST(AnEventsText, IsWhatItWas) {
  EXPECT_EQ(textBack("quoted \"Björk\" \\ tab\t bell\a 🎵"), "quoted \"Björk\" \\ tab\t bell\a 🎵");
}

TEST(AnEventsText, OfTheProgramsOwnIsWhatItWas) {
  Record record(EventKind::Log);
  record.constant(Field::Tag, "MUSIC").constant(Field::File, nullptr);

  const json event = json::parse(lineOf(record));
  EXPECT_EQ(event.at("tag"), "MUSIC");
  EXPECT_FALSE(event.contains("file"));
}

TEST(AnEventsText, ThatChangesAfterwardsIsWhatItWas) {
  std::string tag = "MUSIC";
  Record record(EventKind::Log);
  record.constant(Field::Tag, tag.c_str());
  tag = "OTHER";

  EXPECT_EQ(json::parse(lineOf(record)).at("tag"), "MUSIC");
}

TEST(AnEventsText, ShowsBytesThatAreNoUtf8AsTheirNumbers) {
  EXPECT_EQ(textBack("Beyonc\xe9!"), "Beyonc\xc3\xa9!");
}

TEST(AnEventsText, IsCutAtTheEndOfACharacter) {
  std::string text(Record::kLongestText - 1, 'a');
  text += "é";

  EXPECT_EQ(textBack(text), std::string(Record::kLongestText - 1, 'a'));
}

TEST(AnEvent, LeavesOutWhatDoesNotFit) {
  Record record(EventKind::Log);
  for (int count = 0; count < 20; ++count) {
    record.text(Field::Text, std::string(Record::kLongestText, '\x01'));
  }

  EXPECT_TRUE(json::accept(lineOf(record)));
  EXPECT_LE(lineOf(record).size(), kLongestLine);
}

} // namespace
