// SPDX-License-Identifier: Apache-2.0
//
// norix-scenario(5) beside what the reader knows: neither has a key that the other has not. What
// the reader knows is what it offers instead of a key that there is not.
#include "assistant/scenario/read.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace norix::assistant::scenario {
namespace {

using testing::IsEmpty;

using Words = std::set<std::string>;

const std::string kUnknown = "norix";

// The words of "one of: a, b, c" up to what ends the list.
Words listedIn(const std::string &message) {
  const std::string before = "one of: ";
  std::string list = message.substr(message.find(before) + before.size());
  list = list.substr(0, list.find(';'));
  std::replace(list.begin(), list.end(), ',', ' ');
  std::istringstream words(list);
  return {std::istream_iterator<std::string>(words), {}};
}

// What the reader expects where a scenario has something that it does not know.
Words knownIn(const std::string &scenario) {
  try {
    readScenario("unknown.yaml", scenario, {});
  } catch (const FileError &error) {
    return listedIn(error.what());
  }
  return {};
}

Words knownInStep(const std::string &step) {
  return knownIn("application: {folder: a}\nsteps: [{" + step + "}]");
}

/// The page: what is marked as a word of a scenario, by its section.
class Page {
public:
  Page() {
    std::istringstream lines(support::contentOf(SCENARIO_MANUAL));
    std::string section;
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      std::string macro;
      words >> macro;
      if (macro == ".Ss" || macro == ".Sh") {
        section = line.substr(macro.size() + 1);
      } else if (macro == ".Cm") {
        add(words, _marked[section]);
      } else if (macro == ".It") {
        words >> macro;
        add(words, _items[section]);
      }
    }
  }

  /// Of the lists of a section, what is explained.
  Words items(const std::string &section) const { return _items.at(section); }
  /// Everything that is marked as a word.
  Words all(const std::vector<std::string> &sections) const {
    Words all;
    for (const std::string &section : sections) {
      all.insert(_items.at(section).begin(), _items.at(section).end());
      const auto marked = _marked.find(section);
      if (marked != _marked.end()) {
        all.insert(marked->second.begin(), marked->second.end());
      }
    }
    return all;
  }

private:
  // What stands behind a colon is no word of a scenario: "run : Ar action".
  static void add(std::istream &words, Words &into) {
    for (std::string word; words >> word && word != ":" && word != "Pc";) {
      if (word != "," && word != ".") {
        into.insert(word);
      }
    }
  }

  std::map<std::string, Words> _items;
  std::map<std::string, Words> _marked;
};

const std::vector<std::string> kSections = {"The scenario", "The application", "Steps",
                                            "Expectations"};

Words operator+(Words a, const Words &b) {
  a.insert(b.begin(), b.end());
  return a;
}

Words operator-(const Words &a, const Words &b) {
  Words left;
  std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::inserter(left, left.end()));
  return left;
}

/// The keys of every kind of map.
struct Known {
  Words scenario = knownIn(kUnknown + ": 1");
  Words application = knownIn("application: {" + kUnknown + ": 1}");
  Words sender = knownIn("senders: {a: {" + kUnknown + ": 1}}");
  Words verbs = knownInStep(kUnknown + ": 1");
  Words request =
      knownInStep("run: a, " + kUnknown + ": 1") + knownInStep("state: , " + kUnknown + ": 1")
      + knownInStep("await: a, " + kUnknown + ": 1") + knownInStep("wait: 1, " + kUnknown + ": 1")
      + knownInStep("kill: application, " + kUnknown + ": 1");
  Words expectation = knownInStep("state: , expect: {" + kUnknown + ": 1}");
  Words retry = knownInStep("state: , retry: {" + kUnknown + ": 1}");
  Words capture = knownInStep("state: , capture: {a: {" + kUnknown + ": 1}}");
  Words outcomes = knownInStep("state: , expect: {outcome: " + kUnknown + "}");
};

TEST(TheManual, ExplainsEveryKeyAndNoOther) {
  const Page page;
  const Known known;
  // It stands in the text above the list.
  const Words inText = {"name"};

  EXPECT_EQ(page.items("The scenario"), known.scenario);
  EXPECT_EQ(page.items("The application"), known.application);
  EXPECT_EQ(page.items("Steps") + inText, known.verbs + known.request);
  EXPECT_EQ(page.items("Expectations"), known.expectation);
}

TEST(TheManual, NamesEveryWord) {
  const Words marked = Page().all(kSections);
  const Known known;

  for (const Words &words : {known.sender, known.retry, known.capture, known.outcomes}) {
    EXPECT_FALSE(words.empty());
    EXPECT_THAT(words - marked, IsEmpty());
  }
}

TEST(TheManual, NamesNoWordThatTheReaderDoesNotKnow) {
  const Known known;
  const Words values = {"any", "none", "text", "application", "assistant"};

  EXPECT_THAT(Page().all(kSections)
                  - (known.scenario + known.application + known.sender + known.verbs + known.request
                     + known.expectation + known.retry + known.capture + known.outcomes + values),
              IsEmpty());
}

} // namespace
} // namespace norix::assistant::scenario
