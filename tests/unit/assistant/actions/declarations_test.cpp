// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/Declarations.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace norix::assistant::actions {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char *kLamp = R"({
  "version": 1,
  "state": {"description": "Whether it shines", "form": {"type": "string"}, "examples": ["on"]},
  "actions": [
    {"id": "dim", "title": "Dim", "description": "Dims the lamp.",
     "parameters": {"type": "object", "properties":
       {"percent": {"type": "integer", "description": "How much"}}},
     "examples": [{"percent": 10}], "utterances": ["dim by {percent}"]},
    {"id": "look", "title": "Look", "description": "Tells the colour.", "readOnly": true},
    {"id": "burn", "title": "Burn", "description": "Burns the lamp out.",
     "destructive": true, "confirm": true}
  ]
})";

class TheFolder : public testing::Test {
protected:
  TheFolder() {
    mkdtemp(_path.data());
    fs::create_directories(fs::path(_path) / "shared/res");
  }
  ~TheFolder() override { fs::remove_all(_path); }

  fs::path path() const { return _path; }
  fs::path file() const { return path() / kFile; }
  void write(const std::string &text) const { std::ofstream(file()) << text; }

private:
  std::string _path = "/tmp/norix-actions-XXXXXX";
};

TEST(Declarations, AreReadInTheirOrder) {
  const Reading reading = parse(kLamp);

  EXPECT_THAT(reading.findings, IsEmpty());
  std::vector<std::string> ids;
  for (const Action &action : reading.declarations.actions) {
    ids.push_back(action.id);
  }
  EXPECT_THAT(ids, ElementsAre("dim", "look", "burn"));
}

TEST(Declarations, TellAllAboutAnAction) {
  const Reading reading = parse(kLamp);

  const Action *dim = reading.declarations.find("dim");
  ASSERT_NE(dim, nullptr);
  EXPECT_EQ(dim->title, "Dim");
  EXPECT_EQ(dim->description, "Dims the lamp.");
  EXPECT_EQ(dim->parameters["properties"]["percent"]["type"], "integer");
  EXPECT_THAT(dim->examples, ElementsAre(Json{{"percent", 10}}));
  EXPECT_THAT(dim->utterances, ElementsAre("dim by {percent}"));
  EXPECT_FALSE(dim->readOnly || dim->destructive || dim->confirm);
}

TEST(Declarations, TellWhatAnActionDoesToTheWorld) {
  const Reading reading = parse(kLamp);

  EXPECT_TRUE(reading.declarations.find("look")->readOnly);
  EXPECT_TRUE(reading.declarations.find("burn")->destructive);
  EXPECT_TRUE(reading.declarations.find("burn")->confirm);
}

TEST(Declarations, GiveAnActionWithoutParametersTheFormOfNone) {
  EXPECT_EQ(parse(kLamp).declarations.find("look")->parameters,
            Json::parse(R"({"type":"object","properties":{},"additionalProperties":false})"));
}

TEST(Declarations, TellTheFormOfTheState) {
  const Reading reading = parse(kLamp);

  ASSERT_TRUE(reading.declarations.state);
  EXPECT_EQ(reading.declarations.state->description, "Whether it shines");
  EXPECT_EQ(reading.declarations.state->form, Json({{"type", "string"}}));
  EXPECT_THAT(reading.declarations.state->examples, ElementsAre("on"));
}

TEST(Declarations, DoNotKnowOtherActions) {
  EXPECT_EQ(parse(kLamp).declarations.find("sing"), nullptr);
}

TEST(Declarations, OfTheExamplesHaveNothingWrong) {
  for (const char *name : {"light", "music"}) {
    const std::optional<Reading> reading = read(fs::path(EXAMPLES) / name);
    ASSERT_TRUE(reading) << name;
    EXPECT_THAT(reading->findings, IsEmpty()) << name;
    EXPECT_FALSE(reading->declarations.actions.empty()) << name;
  }
}

TEST_F(TheFolder, WithoutAFileDeclaresNothing) {
  EXPECT_FALSE(read(path()));
  EXPECT_FALSE(load(path()));
}

TEST_F(TheFolder, GivesItsDeclarations) {
  write(kLamp);

  EXPECT_EQ(load(path())->actions.size(), 3U);
}

TEST_F(TheFolder, WithErrorsGivesNoneAndSaysWhere) {
  write("{\"version\": 1,\n \"actions\": [7]}");

  try {
    load(path());
    FAIL() << "no error";
  } catch (const DeclarationError &error) {
    EXPECT_EQ(error.what(), file().string() + ":2:14: error: an action is an object, not 7");
  }
}

TEST_F(TheFolder, WithAPipeInThePlaceOfTheFileIsRefused) {
  mkfifo(file().c_str(), 0600);

  EXPECT_THAT(read(path())->findings.at(0).text, HasSubstr("not a regular file"));
}

TEST_F(TheFolder, WithAHugeFileIsRefused) {
  write(std::string(2 * 1024 * 1024, ' '));

  EXPECT_THAT(read(path())->findings.at(0).text, HasSubstr("more than 1048576 bytes"));
}

TEST_F(TheFolder, WithAnEmptyFileIsToldThatItIsNoJson) {
  write("");

  EXPECT_EQ(read(path())->findings.at(0).text, parse("").findings.at(0).text);
}

TEST_F(TheFolder, WithALinkToNowhereSaysWhyThereIsNothing) {
  fs::create_symlink("nowhere", file());

  EXPECT_THAT(read(path())->findings.at(0).text,
              AllOf(HasSubstr("cannot be read"), HasSubstr("No such file")));
}

} // namespace
} // namespace norix::assistant::actions
