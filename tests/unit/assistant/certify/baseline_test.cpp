// SPDX-License-Identifier: Apache-2.0
//
// Files of accepted failures.
#include "assistant/certify/Baseline.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace norix::assistant::certify {
namespace {

using testing::HasSubstr;

class ABaseline : public testing::Test {
protected:
  Baseline read(const std::string &content) const {
    return Baseline::read(_folder.write("baseline", content));
  }
  std::string refusal(const std::string &content) const {
    try {
      read(content);
    } catch (const BaselineError &error) {
      return error.what();
    }
    return "";
  }

private:
  support::TemporaryFolder _folder;
};

TEST_F(ABaseline, NamesVerdictsWithTheirLines) {
  const Baseline baseline = read("# comment\n\n  load-memory  \nutterances \t act # why\n");

  ASSERT_EQ(baseline.entries().size(), 2U);
  EXPECT_EQ(baseline.find("load-memory")->line, 3);
  EXPECT_EQ(baseline.find("utterances act")->line, 4);
  EXPECT_EQ(baseline.find("utterances"), nullptr);
}

TEST_F(ABaseline, NamesNoVerdictTwice) {
  EXPECT_THAT(refusal("load-memory\nload-memory\n"),
              HasSubstr(":2: 'load-memory' stands on line 1 already"));
}

TEST_F(ABaseline, NamesChecksThatThereAre) {
  EXPECT_THAT(refusal("load-memori\n"),
              HasSubstr(":1: there is no check 'load-memori', did you mean 'load-memory'?"));
}

TEST_F(ABaseline, IsThere) {
  EXPECT_THROW(Baseline::read("/nowhere/baseline"), BaselineError);
}

} // namespace
} // namespace norix::assistant::certify
