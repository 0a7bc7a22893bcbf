// SPDX-License-Identifier: Apache-2.0
//
// What is read of a scenario file that is right.
#include "assistant/scenario/Variables.h"
#include "assistant/scenario/read.h"

#include <gmock/gmock.h>

namespace norix::assistant::scenario {
namespace {

using testing::ElementsAre;
using testing::Pair;

Scenario readSteps(const std::string &steps) {
  return readScenario("here/music.yaml", "application: {folder: music}\nsteps:\n" + steps, {});
}

template <typename Action>
Action onlyAction(const std::string &steps) {
  return std::get<Action>(readSteps(steps).steps.at(0).action);
}

TEST(AScenario, IsCalledAfterItsFileUnlessItHasAName) {
  EXPECT_EQ(readSteps("- state:").name, "music");
  EXPECT_EQ(readScenario("a.yaml", "name: Volume\nsteps: [{state: }]", {"folder", {}}).name,
            "Volume");
}

TEST(AScenario, MeansTheApplicationsFolderFromItsOwn) {
  EXPECT_EQ(readSteps("- state:").application.folder, "here/music");
}

TEST(AScenario, TakesTheApplicationOfTheCommandLineFirst) {
  const Scenario scenario = readScenario(
      "a.yaml", "application: {running: org.example}\nsteps: [{state: }]", {"/folder", {}});

  EXPECT_EQ(scenario.application.folder, "/folder");
  EXPECT_EQ(scenario.application.running, "");
}

TEST(AScenario, SaysHowItsApplicationIsStarted) {
  const ApplicationSetup setup = readScenario("a.yaml",
                                              "application:\n"
                                              "  folder: /music\n"
                                              "  arguments: [--loud]\n"
                                              "  environment: {LANG: C}\n"
                                              "  allow-list: [com.example.phone]\n"
                                              "  completion-timeout: 500 ms\n"
                                              "steps: [{state: }]",
                                              {})
                                     .application;

  EXPECT_EQ(setup.folder, "/music");
  EXPECT_THAT(setup.arguments, ElementsAre("--loud"));
  EXPECT_THAT(setup.environment, ElementsAre(Pair("LANG", "C")));
  EXPECT_THAT(*setup.allowList, ElementsAre("com.example.phone"));
  EXPECT_EQ(setup.completionTimeout, 0.5);
}

TEST(AScenario, GivesTheLibraryTimeToSayThatAnAnswerIsLate) {
  EXPECT_EQ(readSteps("- state:").timeout, 32.0);
  EXPECT_EQ(readScenario("a.yaml",
                         "application: {folder: a, completion-timeout: 1 s}\nsteps: [{state: }]",
                         {})
                .timeout,
            3.0);
}

TEST(AScenario, TakesTheVariablesOfTheCommandLineFirst) {
  const Scenario scenario =
      readScenario("a.yaml", "variables: {a: 1, b: 2}\nsteps: [{run: 'x${a}${b}${c}'}]",
                   {"folder", {{"a", 5}, {"c", "z"}}});

  EXPECT_EQ(scenario.variables.at("a"), 5);
  EXPECT_EQ(scenario.variables.at("b"), 2);
}

TEST(AStep, KeepsItsLineAndItsName) {
  const Scenario scenario = readSteps("- state:\n- run: play\n- {name: third, wait: 1}");

  EXPECT_EQ(scenario.steps[1].line, 4);
  EXPECT_EQ(scenario.steps[1].name, "run play");
  EXPECT_EQ(scenario.steps[2].name, "third");
}

TEST(Parameters, KeepTheirTypesAndTheirOrder) {
  const Ask ask =
      onlyAction<Ask>("- run: a\n  params: {z: 1, y: '1', x: yes, w: [true, null, 1.5]}");

  EXPECT_EQ(ask.call.params.dump(), R"({"z":1,"y":"1","x":"yes","w":[true,null,1.5]})");
}

TEST(Parameters, CanBeATextOrBytes) {
  EXPECT_EQ(onlyAction<Ask>("- {run: a, params-text: '{'}").call.paramsText, "{");
  EXPECT_EQ(onlyAction<Ask>("- {run: a, params-base64: /w==}").call.paramsText, "\xff");
}

TEST(ARequest, IsOfTheFirstSenderUnlessItNamesOne) {
  const Scenario scenario =
      readScenario("a.yaml",
                   "senders: {phone: {id: p}, watch: {id: w, registers: false}}\n"
                   "steps: [{state: }, {state: , sender: watch}]",
                   {"folder", {}});

  EXPECT_EQ(std::get<Ask>(scenario.steps[0].action).call.sender, "phone");
  EXPECT_EQ(std::get<Ask>(scenario.steps[1].action).call.sender, "watch");
  EXPECT_FALSE(scenario.senders[1].registers);
}

TEST(AnExpectation, IsAnAnswerUnlessItSaysOtherwise) {
  EXPECT_EQ(onlyAction<Ask>("- state:").call.expectation.outcome, "answered");
}

TEST(AnExpectation, HasAllItsParts) {
  const Expectation expectation = onlyAction<Ask>("- state:\n"
                                                  "  expect:\n"
                                                  "    outcome: failed\n"
                                                  "    text: a\n"
                                                  "    contains: [b, c]\n"
                                                  "    matches: ^d$\n"
                                                  "    json: {/e: 5, '': {}}\n"
                                                  "    within: 2\n"
                                                  "    after: 10ms\n"
                                                  "    log: f\n"
                                                  "    findings: [g, h]")
                                      .call.expectation;

  EXPECT_EQ(expectation.outcome, "failed");
  EXPECT_EQ(expectation.text, "a");
  EXPECT_THAT(expectation.contains, ElementsAre("b", "c"));
  EXPECT_THAT(expectation.matches, ElementsAre("^d$"));
  EXPECT_THAT(expectation.json, ElementsAre(Pair("/e", Json(5)), Pair("", Json::object())));
  EXPECT_EQ(expectation.within, 2.0);
  EXPECT_EQ(expectation.after, 0.01);
  EXPECT_THAT(expectation.log, ElementsAre("f"));
  EXPECT_THAT(expectation.findings, ElementsAre("g", "h"));
}

TEST(Findings, AreAllowedByWordOrAltogether) {
  const auto read = [](const std::string &value) {
    return readScenario("a.yaml", "findings: " + value + "\nsteps: [{state: }]", {"folder", {}})
        .findings;
  };
  EXPECT_TRUE(read("any").allowsAll);
  EXPECT_THAT(read("none").words, testing::IsEmpty());
  EXPECT_THAT(read("[loop-held]").words, ElementsAre("loop-held"));
}

TEST(ABurst, HasRequestsOfWhichEachHasItsExpectation) {
  const Burst burst =
      onlyAction<Burst>("- burst:\n  - {run: a, expect: {outcome: superseded}}\n  - state:");

  ASSERT_EQ(burst.calls.size(), 2U);
  EXPECT_EQ(burst.calls[0].expectation.outcome, "superseded");
  EXPECT_EQ(burst.calls[1].action, "");
}

TEST(ARequestWithAName, IsAwaitedLater) {
  const Scenario scenario = readSteps("- {run: a, as: b}\n- {await: b, expect: {text: c}}");

  EXPECT_EQ(std::get<Send>(scenario.steps[0].action).id, "b");
  EXPECT_EQ(std::get<Await>(scenario.steps[1].action).expectation.text, "c");
}

struct Treatment {
  const char *step;
  Control::What what;
  const char *target;
};

TEST(ATreatment, IsOfTheApplicationOrOfASender) {
  const std::vector<Treatment> treatments = {
      {"kill: application", Control::What::Kill, "application"},
      {"stop: assistant", Control::What::Stop, "assistant"},
      {"continue: application", Control::What::Continue, "application"},
      {"restart: application", Control::What::Restart, "application"},
      {"connect: assistant", Control::What::Connect, "assistant"},
      {"register: assistant", Control::What::Register, "assistant"},
      {"unregister: assistant", Control::What::Unregister, "assistant"},
      {"disconnect: assistant", Control::What::Disconnect, "assistant"}};
  for (const Treatment &treatment : treatments) {
    const auto control = onlyAction<Control>(std::string("- ") + treatment.step);
    EXPECT_EQ(control.what, treatment.what) << treatment.step;
    EXPECT_EQ(control.target, treatment.target) << treatment.step;
  }
}

TEST(AName, IsFilledInAsTextOrAsTheValueItself) {
  const Variables variables({{"n", 5}, {"t", "x"}, {"l", Json::array({1})}});

  EXPECT_EQ(variables.fill(std::string("a${n}${t}-${l}")), "a5x-[1]");
  EXPECT_EQ(variables.fill(Json("${n}")), Json(5));
  EXPECT_EQ(variables.fill(Json({{"k", Json::array({"${l}", "v${t}", 1})}})).dump(),
            R"({"k":[[1],"vx",1]})");
}

TEST(AName, IsNotMeantBehindTwoDollars) {
  EXPECT_EQ(Variables().fill(std::string("$${n} $ $$ {n}")), "${n} $ $$ {n}");
  EXPECT_THAT(namesIn("$${a}${b}$${c"), ElementsAre("b"));
}

} // namespace
} // namespace norix::assistant::scenario
