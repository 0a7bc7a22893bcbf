// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Writer.h"
#include "assistant/report/json.h"
#include "examples.h"

#include <gmock/gmock.h>
#include <pugixml.hpp>

#include <sstream>

namespace norix::assistant::report {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string written(std::unique_ptr<Writer> (*make)(std::ostream &), const Suite &suite) {
  std::ostringstream out;
  const auto writer = make(out);
  for (const Case &tried : suite.cases) {
    writer->add(tried);
  }
  writer->end(suite);
  return out.str();
}

std::unique_ptr<Writer> makePlain(std::ostream &out) {
  return makePeopleWriter(out, false);
}

std::unique_ptr<Writer> makeColoured(std::ostream &out) {
  return makePeopleWriter(out, true);
}

TEST(ASuite, IsAsGoodAsItsWorstStep) {
  Suite suite = everything();
  EXPECT_EQ(suite.outcome(), Outcome::Broken);
  suite.cases.erase(suite.cases.begin() + 1);
  EXPECT_EQ(suite.outcome(), Outcome::Failed);
  suite.cases.erase(suite.cases.begin());
  EXPECT_EQ(suite.outcome(), Outcome::Passed);
}

TEST(ASuite, FailsByWhatFailedOrCouldNotBeTried) {
  EXPECT_TRUE(isFailure(Outcome::Failed));
  EXPECT_TRUE(isFailure(Outcome::Broken));
  EXPECT_FALSE(isFailure(Outcome::Tolerated));
  EXPECT_FALSE(isFailure(Outcome::Skipped));
}

TEST(AnOutcome, IsReadBackFromItsWord) {
  for (const Outcome outcome :
       {Outcome::Skipped, Outcome::Passed, Outcome::Tolerated, Outcome::Failed, Outcome::Broken}) {
    EXPECT_EQ(outcomeFrom(wordOf(outcome)), outcome);
  }
}

TEST(TheReportForPeople, SaysOneLineOfACaseThatPassedAndAllOfOneThatDidNot) {
  const std::string report = written(makePlain, everything());

  EXPECT_THAT(report, StartsWith("✗ Volume # 40 <loud> (volume.yaml)  0.00 s\n"
                                 "  ✓ start\n"
                                 "  ✗ run  volume.yaml:12\n"
                                 "      other text\n"
                                 "        -expected\n"
                                 "        +came \\e[31m\\xff\n"
                                 "      what happened:\n"
                                 "              0.0 ms  sent request 7\n"));
  EXPECT_THAT(report, HasSubstr("✓ Passes  0.00 s\n3 scenarios"));
}

TEST(TheReportForPeople, EndsWithTheCounts) {
  EXPECT_THAT(
      written(makePlain, everything()),
      testing::EndsWith("3 scenarios: 1 passed, 1 failed, 1 error; "
                        "7 steps: 2 passed, 1 failed, 1 error, 1 tolerated, 2 skipped; 1.50 s\n"));
}

TEST(TheReportForPeople, HasColoursWhereTheyAreWanted) {
  EXPECT_THAT(written(makeColoured, everything()), HasSubstr("\033[31m✗\033[0m"));
  EXPECT_THAT(written(makePlain, everything()), Not(HasSubstr("\033")));
}

TEST(TheTapReport, HasASubtestForACaseAndAPointForAStep) {
  const std::string report = written(makeTapWriter, everything());

  EXPECT_THAT(report, StartsWith("TAP version 14\n"
                                 "# Subtest: Volume \\# 40 <loud>\n"
                                 "    1..4\n"
                                 "    ok 1 - start\n"
                                 "    not ok 2 - run\n"
                                 "      ---\n"
                                 "      outcome: failed\n"
                                 "      duration_ms: 250\n"
                                 "      at: \"volume.yaml:12\"\n"
                                 "      message: |2\n"
                                 "        other text\n"));
  EXPECT_THAT(report, HasSubstr("    not ok 3 - known # TODO accepted\n"));
  EXPECT_THAT(report, HasSubstr("    ok 4 - rest # SKIP an earlier step failed\n"
                                "not ok 1 - Volume \\# 40 <loud>\n"));
  EXPECT_THAT(report, testing::EndsWith("ok 3 - Passes\n1..3\n"));
}

class TheJunitReport : public testing::Test {
protected:
  void SetUp() override {
    const std::string text = written(makeJunitWriter, everything());
    ASSERT_TRUE(_document.load_string(text.c_str())) << text;
  }
  pugi::xml_node suites() const { return _document.child("testsuites"); }
  pugi::xml_node failed() const {
    return suites().child("testsuite").find_child_by_attribute("testcase", "name", "run");
  }

private:
  pugi::xml_document _document;
};

TEST_F(TheJunitReport, HasATestCaseForEveryStepAlsoOfACaseThatCouldNotStart) {
  EXPECT_EQ(suites().select_nodes("testsuite/testcase").size(), 7U);
  EXPECT_STREQ(suites().attribute("tests").value(), "7");
  EXPECT_STREQ(suites().attribute("failures").value(), "1");
  EXPECT_STREQ(suites().attribute("errors").value(), "1");
  EXPECT_STREQ(suites().attribute("skipped").value(), "3");
}

TEST_F(TheJunitReport, TellsWhatFailedWhereAndWhy) {
  EXPECT_STREQ(failed().attribute("classname").value(), "Volume # 40 <loud>");
  EXPECT_STREQ(failed().attribute("line").value(), "12");
  EXPECT_STREQ(failed().child("failure").attribute("message").value(), "other text");
  EXPECT_THAT(failed().child("failure").text().get(),
              AllOf(HasSubstr("+came \\e[31m\\xff"), HasSubstr("received the answer")));
  EXPECT_STREQ(failed().child("system-out").text().get(), "]]> & \\x01");
  EXPECT_STREQ(failed().select_node("properties/property/@value").attribute().value(),
               "com.example");
}

TEST_F(TheJunitReport, CallsWhatCouldNotBeTriedAnErrorAndTheRestSkipped) {
  const pugi::xml_node broken =
      suites().find_child_by_attribute("testsuite", "name", "Does not start");
  EXPECT_STREQ(broken.child("testcase").child("error").attribute("message").value(),
               "cannot launch");
  EXPECT_TRUE(broken.last_child().child("skipped"));
}

TEST(TheHtmlReport, IsOnePageThatNeedsNothingElse) {
  const std::string page = written(makeHtmlWriter, everything());

  EXPECT_THAT(page, StartsWith("<!DOCTYPE html>"));
  EXPECT_THAT(page, AllOf(Not(HasSubstr("<script")), Not(HasSubstr("http:")),
                          Not(HasSubstr("https:")), Not(HasSubstr("src="))));
  EXPECT_THAT(page, HasSubstr("content=\"default-src 'none'; "));
}

TEST(TheHtmlReport, OpensWhatFailedAndLeadsToIt) {
  const std::string page = written(makeHtmlWriter, everything());

  EXPECT_THAT(page, HasSubstr("<details class=\"case failed\" open>"));
  EXPECT_THAT(page, HasSubstr("<details class=\"step failed\" id=\"case1-2\" open>"));
  EXPECT_THAT(page, HasSubstr("<details class=\"step passed\" id=\"case1-1\">"));
  EXPECT_THAT(page, HasSubstr("<a href=\"#case1-2\">Volume # 40 &lt;loud&gt;: run</a>"));
  EXPECT_THAT(page, HasSubstr("<a href=\"#case2-1\">Does not start: start</a>"));
}

TEST(TheHtmlReport, MarksDifferences) {
  const std::string page = written(makeHtmlWriter, everything());

  EXPECT_THAT(page, HasSubstr("<span class=\"missed\">-expected</span>\n"
                              "<span class=\"came\">+came "));
}

TEST(TheHtmlReport, EscapesWhatOthersSent) {
  const std::string page = written(makeHtmlWriter, everything());

  EXPECT_THAT(page, AllOf(HasSubstr("Volume # 40 &lt;loud&gt;"), HasSubstr("held &lt;too&gt; long"),
                          HasSubstr("]]&gt; &amp; \\x01"), HasSubstr("\\xff")));
  EXPECT_THAT(page, Not(HasSubstr("<loud>")));
}

TEST(TheJsonReport, KeepsEverythingOfACase) {
  const Case before = everything().cases[0];
  const Case after = caseFrom(toJson(before));

  EXPECT_EQ(toJson(after), toJson(before));
  EXPECT_EQ(after.steps[1].events.back().time, before.steps[1].events.back().time);
  EXPECT_EQ(after.steps[1].messages[0].detail, before.steps[1].messages[0].detail);
}

TEST(TheJsonReport, IsOneLineOfUtf8) {
  const std::string text = written(makeJsonWriter, everything());
  const auto value = nlohmann::json::parse(text);

  EXPECT_EQ(text.find('\n'), text.size() - 1);
  EXPECT_EQ(value["outcome"], "error");
  EXPECT_EQ(value["stepCounts"]["skipped"], 2);
  EXPECT_EQ(value["cases"][0]["steps"][1]["line"], 12);
}

} // namespace
} // namespace norix::assistant::report
