// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Changes.h"
#include "assistant/scenario/select.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <chrono>

namespace norix::assistant::scenario {
namespace {

using testing::ElementsAre;

class ASelection : public testing::Test {
protected:
  void SetUp() override {
    for (const char *const name : {"b.yaml", "a.yml", "more/c.yaml", "d.txt"}) {
      folder.write(name, "application: {folder: x}\nsteps: [{state: }]");
    }
    selection.paths = {folder.path()};
  }

  std::vector<std::string> selected() const {
    std::vector<std::string> names;
    for (const Scenario &scenario : load(selection, {}).scenarios) {
      names.push_back(scenario.name);
    }
    return names;
  }

  support::TemporaryFolder folder;
  Selection selection;
};

TEST_F(ASelection, TakesTheScenariosOfAFolderByName) {
  EXPECT_THAT(selected(), ElementsAre("a", "b", "c"));
}

TEST_F(ASelection, TakesAFileWhateverItIsCalled) {
  selection.paths = {folder / "d.txt", folder / "b.yaml"};
  EXPECT_THAT(selected(), ElementsAre("d", "b"));
}

TEST_F(ASelection, KeepsWhatMatches) {
  selection.filter = "more/|^a$";
  EXPECT_THAT(selected(), ElementsAre("a", "c"));
}

TEST_F(ASelection, RepeatsAll) {
  selection.repeat = 2;
  EXPECT_THAT(selected(), ElementsAre("a (1 of 2)", "b (1 of 2)", "c (1 of 2)", "a (2 of 2)",
                                      "b (2 of 2)", "c (2 of 2)"));
}

TEST_F(ASelection, IsDividedWithoutRest) {
  selection.shard = "1/2";
  EXPECT_THAT(selected(), ElementsAre("a", "c"));
  selection.shard = "2/2";
  EXPECT_THAT(selected(), ElementsAre("b"));
}

TEST_F(ASelection, RefusesWhatSelectsNothing) {
  for (const char *const shard : {"0/2", "3/2", "1", "1/", "/1", "a/b", "1/2x"}) {
    selection.shard = shard;
    EXPECT_THROW(selected(), std::invalid_argument) << shard;
  }
  selection.shard.clear();
  for (const char *const filter : {"nothing", "("}) {
    selection.filter = filter;
    EXPECT_THROW(selected(), std::invalid_argument) << filter;
  }
  selection.filter.clear();
  selection.paths = {folder / "missing"};
  EXPECT_THROW(selected(), std::invalid_argument);
}

TEST_F(ASelection, CollectsTheFilesThatAreRefused) {
  folder.write("broken.yaml", "steps: 1");

  const Loaded loaded = load(selection, {});

  EXPECT_EQ(loaded.scenarios.size(), 3U);
  ASSERT_EQ(loaded.refused.size(), 1U);
  EXPECT_EQ(loaded.refused[0].file, folder / "broken.yaml");
  EXPECT_EQ(caseOf(loaded.refused[0]).outcome(), report::Outcome::Broken);
}

TEST_F(ASelection, IsWatchedForChanges) {
  Changes changes;
  changes.add(selection.paths, "");
  EXPECT_FALSE(changes.areThere());

  std::filesystem::last_write_time(folder / "more/c.yaml",
                                   std::filesystem::file_time_type::clock::now()
                                       + std::chrono::hours(1));

  EXPECT_TRUE(changes.areThere());
  changes.await();
}

} // namespace
} // namespace norix::assistant::scenario
