// SPDX-License-Identifier: Apache-2.0
//
// norix-assistant certify: every check is passed by a good citizen, and failed by a bad one.
#include "assistant/certify/Catalogue.h"
#include "integration/harness/AssistantCommand.h"
#include "support/TemporaryRuntime.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <thread>

namespace integration {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using norix::assistant::certify::catalogue;
using norix::assistant::certify::Check;
using norix::assistant::certify::findCheck;
using norix::assistant::certify::Level;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char *kId = "org.example.citizen";
constexpr int kFindings = 10;
constexpr int kTestsFailed = 14;
constexpr int kInterrupted = 130;
// A whole certification takes longer than anything else, on a busy machine above all.
constexpr double kLong = 200.0;

constexpr const char *kDeclarations = R"({
  "version": 1,
  "state": {
    "description": "The level",
    "form": {
      "type": "object",
      "properties": {"level": {"type": "integer"}},
      "required": ["level"]
    }
  },
  "actions": [
    {
      "id": "setLevel",
      "title": "Set the level",
      "description": "Sets the level.",
      "parameters": {
        "type": "object",
        "properties": {
          "level": {"type": "integer", "minimum": 0, "maximum": 100, "description": "The level"},
          "name": {"type": "string", "description": "Whose level"}
        },
        "required": ["level"]
      },
      "examples": [{"level": 40}],
      "utterances": ["set the level to {level}"]
    },
    {
      "id": "reset",
      "title": "Reset",
      "description": "Ends everything.",
      "destructive": true,
      "confirm": true,
      "utterances": ["reset"]
    }
  ]
})";

/// What certify printed with --json, and how it ended.
struct Certificate {
  int status = -1;
  json suite;

  /// The verdicts with this outcome: their names with what they say.
  std::map<std::string, std::string> verdicts(const std::string &outcome) const {
    std::map<std::string, std::string> found;
    for (const json &chapter : suite.at("cases")) {
      for (const json &step : chapter.at("steps")) {
        if (step.at("outcome") == outcome) {
          const json &messages = step.at("messages");
          found[step.at("name")] = messages.empty() ? "" : messages[0].at("text");
        }
      }
    }
    return found;
  }
};

Outcome runCertify(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "certify");
  Process process = startAssistant(arguments);
  process.closeInput();
  Outcome outcome;
  outcome.out = process.readAll(kLong);
  outcome.status = process.wait(kLong);
  outcome.err = process.errors();
  return outcome;
}

Certificate certify(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "--json");
  const Outcome outcome = runCertify(arguments);
  return {outcome.status, json::parse(outcome.out)};
}

long countIn(const fs::path &folder) {
  return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

fs::path newFolderIn(const fs::path &folder) {
  for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
    if (entry.is_directory()) {
      return entry.path();
    }
  }
  return folder;
}

class Certifying : public testing::Test {
protected:
  Certifying() {
    runtime.install(kId, "1.0-beta");
    declare(kDeclarations);
    fs::create_symlink(CITIZEN, folder() / "app");
  }

  fs::path folder() const {
    return runtime.write(std::string("apps/") + kId + "/marker", "").parent_path();
  }
  void declare(const std::string &declarations) const {
    fs::create_directories(folder() / "shared/res");
    runtime.write(std::string("apps/") + kId + "/shared/res/norix-actions.json", declarations);
  }
  /// Declares with a part of the text replaced.
  void declareInstead(const std::string &part, const std::string &with) const {
    std::string declarations = kDeclarations;
    declarations.replace(declarations.find(part), part.size(), with);
    declare(declarations);
  }

  support::TemporaryRuntime runtime;
};

/// A check, how it is failed, and what it says then.
struct Failure {
  const char *check;
  const char *says;
  /// The library's timeout. Short where it has to run out.
  const char *timeout = "20";
};

void PrintTo(const Failure &failure, std::ostream *out) {
  *out << failure.check;
}

constexpr Failure kFailures[] = {
    {"manifest", "no tizen-manifest.xml"},
    {"sdk-version", "1.0-alpha"},
    {"declarations", "is not there"},
    {"declarations-valid", "norix-actions.json:"},
    {"declarations-lint", "'name' has no 'description'"},
    {"utterances", "'setLevel' has no 'utterances'"},
    {"starts", "ended before it listened"},
    {"ends", "status 3"},
    {"restarts", "does not start again"},
    {"declared-registered", "'setLevel' is declared and not registered"},
    {"registered-declared", "'polish' is registered and not declared"},
    {"state-answered", "found no callback registered"},
    {"state-form", "is not JSON: 'ready'"},
    {"examples-answered", "'setLevel' with {\"level\":40} was not answered within 1 second", "1"},
    {"answered-once", "'setLevel' was answered a second time"},
    {"findings", "null handle"},
    {"state-during-action", "right behind one for 'setLevel', was not answered", "1"},
    {"burst-newest", "the newest of 10 requests at once was not answered", "1"},
    {"parameters-missing", "no parameters at all was lost: the application ended with status 6"},
    {"parameters-empty", "an empty text as parameters was lost"},
    {"parameters-unknown", "not declared, 'norixUnknown' was lost"},
    {"parameters-wrong-type", "'level' being of another type was lost"},
    {"parameters-not-json", "parameters that are not JSON was lost"},
    {"parameters-huge", "1 MiB of parameters was lost"},
    {"parameters-nested", "10,000 lists in each other was lost"},
    {"parameters-not-utf8", "a text in Latin 1 was lost"},
    {"parameters-nul", "'\\u0000' was lost"},
    {"parameters-fuzz", "'setLevel' with {\"level\":-1} was lost"},
    {"assistant-leaves", "left without waiting for its answer, a request for the state was lost"},
    {"assistant-killed", "was killed before its answer, a request for the state was lost"},
    {"assistant-never-reads", "never reads an answer, a request for the state was not answered",
     "1"},
    {"reconnect", ", a request for the state was lost"},
    {"allow-list-with", "was refused"},
    {"allow-list-without", "was served, and is not on the allow list"},
    {"load-answered", "requests, the next one was lost"},
    {"load-memory", "memory grows"},
    {"load-descriptors", "open files grow"},
};

std::string nameOf(const testing::TestParamInfo<Failure> &failure) {
  std::string name;
  bool isFirst = true;
  for (const char letter : std::string(failure.param.check)) {
    if (letter != '-') {
      name += static_cast<char>(isFirst ? std::toupper(letter) : letter);
    }
    isFirst = letter == '-';
  }
  return name;
}

class ABadCitizen : public Certifying, public testing::WithParamInterface<Failure> {
protected:
  // Some checks are failed by what lies in the folder.
  void spoilFolder(const std::string &check) {
    if (check == "manifest") {
      fs::remove(folder() / "tizen-manifest.xml");
    } else if (check == "sdk-version") {
      runtime.install(kId, "1.0-alpha2");
    } else if (check == "declarations") {
      fs::remove(folder() / "shared/res/norix-actions.json");
    } else if (check == "declarations-valid") {
      declareInstead("\"version\": 1", "\"version\": \"one\"");
    } else if (check == "declarations-lint") {
      declareInstead(", \"description\": \"Whose level\"", "");
    } else if (check == "utterances") {
      declareInstead(",\n      \"utterances\": [\"set the level to {level}\"]", "");
    }
  }
};

TEST_P(ABadCitizen, IsSeen) {
  const Failure &failure = GetParam();
#ifdef __SANITIZE_ADDRESS__
  if (failure.check == std::string("load-memory")) {
    GTEST_SKIP() << "an application with AddressSanitizer keeps what it frees";
  }
#endif
  spoilFolder(failure.check);

  const Certificate certificate =
      certify({folder(), "--strict", "--check", failure.check, "--completion-timeout",
               failure.timeout, "--save", folder(), "--", failure.check});

  const bool counts = findCheck(failure.check)->level != Level::Information;
  EXPECT_EQ(certificate.status, counts ? kFindings : 0);
  EXPECT_THAT(certificate.verdicts(counts ? "failed" : "tolerated"),
              Contains(testing::Pair(testing::StartsWith(failure.check), HasSubstr(failure.says))));
}

INSTANTIATE_TEST_SUITE_P(With, ABadCitizen, testing::ValuesIn(kFailures), nameOf);

TEST(TheCatalogue, HasABadCitizenForEveryCheck) {
  std::set<std::string> failed;
  for (const Failure &failure : kFailures) {
    failed.insert(failure.check);
  }

  for (const Check &check : catalogue()) {
    EXPECT_EQ(failed.count(check.id), 1) << check.id;
  }
}

// The page says of each what the program says of it.
TEST(TheCatalogue, StandsInTheManual) {
  std::istringstream manual(support::contentOf(CERTIFY_MANUAL));
  std::vector<std::string> lines;
  for (std::string line; std::getline(manual, line);) {
    lines.push_back(line);
  }

  auto next = std::find(lines.begin(), lines.end(), ".Sh CATALOGUE");
  for (const Check &check : catalogue()) {
    next = std::find_if(next, lines.end(),
                        [](const std::string &line) { return line.rfind(".It Cm ", 0) == 0; });
    ASSERT_GE(std::distance(next, lines.end()), 4) << check.id;
    EXPECT_EQ(*next++, std::string(".It Cm ") + check.id + " Pq " + wordOf(check.level));
    EXPECT_EQ(*next++, check.title);
    EXPECT_EQ(*next++, check.why);
    EXPECT_EQ(*next++, check.mend);
  }
  EXPECT_EQ(*next, ".El");
}

TEST_F(Certifying, AGoodCitizenPassesEveryCheck) {
  const Certificate certificate = certify({folder(), "--strict", "--completion-timeout", "20"});

  EXPECT_EQ(certificate.status, 0) << certificate.suite.dump(1);
  EXPECT_THAT(certificate.verdicts("failed"), IsEmpty());
  EXPECT_THAT(certificate.verdicts("tolerated"), IsEmpty());
  for (const Check &check : catalogue()) {
    EXPECT_THAT(certificate.suite.dump(), HasSubstr('"' + std::string(check.id)));
  }
}

TEST_F(Certifying, ActionsThatDestroyAreLeftOutUnlessAskedFor) {
  const Certificate without = certify({folder(), "--check", "examples-answered"});
  const Certificate with = certify({folder(), "--check", "examples-answered", "--destructive"});

  EXPECT_EQ(without.status, 0);
  EXPECT_THAT(without.verdicts("skipped"),
              Contains(testing::Pair("examples-answered reset", HasSubstr("--destructive"))));
  EXPECT_EQ(with.status, kFindings);
}

TEST_F(Certifying, TheSmallestParametersThatFailAreSaved) {
  certify({folder(), "--check", "parameters-fuzz", "--save", folder(), "--", "parameters-fuzz"});

  EXPECT_THAT(support::contentOf(folder() / (std::string(kId) + "-setLevel.yaml")),
              testing::EndsWith("  - run: \"setLevel\"\n    params: {\"level\":-1}\n  - state:\n"));
}

TEST_F(Certifying, TheSavedScenarioFailsForTheSameReason) {
  const Certificate certificate = certify(
      {folder(), "--check", "parameters-fuzz", "--save", folder(), "--", "parameters-fuzz"});
  const Outcome replayed =
      runAssistant({"test", folder() / (std::string(kId) + "-setLevel.yaml"), "--json"});

  // The application's end, seen by both.
  EXPECT_THAT(certificate.verdicts("failed").begin()->second,
              HasSubstr("{\"level\":-1} was lost: the application ended with status 6"));
  EXPECT_EQ(replayed.status, kTestsFailed);
  const json step = json::parse(replayed.out).at("cases").at(0).at("steps").at(1);
  EXPECT_EQ(step.at("name"), "1 run setLevel");
  EXPECT_EQ(step.at("outcome"), "failed");
  EXPECT_EQ(step.at("messages").at(1).at("text"), "the application ended with status 6");
}

TEST_F(Certifying, ReportsForBuildServersToo) {
  const std::string junit = folder() / "report.xml";
  const std::string page = folder() / "report.html";

  const Outcome outcome = runCertify({folder(), "--check", "manifest", "--check", "sdk-version",
                                      "--tap", "--junit", junit, "--html", page});

  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, testing::StartsWith("TAP version 14\n"));
  EXPECT_THAT(support::contentOf(junit), HasSubstr("<testcase name=\"sdk-version\""));
  EXPECT_THAT(support::contentOf(page), HasSubstr("sdk-version"));
}

TEST_F(Certifying, ShowsWhatHappenedInTheApplication) {
  const Certificate certificate = certify({folder(), "--check", "examples-answered",
                                           "--completion-timeout", "1", "--", "examples-answered"});

  const json &step = certificate.suite["cases"][0]["steps"][0];
  EXPECT_EQ(step["name"], "examples-answered setLevel");
  EXPECT_EQ(step["events"][0]["event"], "received");
  EXPECT_EQ(step["events"][0]["action"], "setLevel");
}

TEST_F(Certifying, ShouldDoesNotCountUnlessItIsStrict) {
  const Certificate certificate = certify({folder(), "--check", "ends", "--", "ends"});

  EXPECT_EQ(certificate.status, 0);
  EXPECT_THAT(certificate.verdicts("tolerated"), Contains(testing::Key("ends")));
}

TEST_F(Certifying, AFailureOfTheBaselineIsAccepted) {
  const std::string baseline = runtime.write("baseline", "# for now\nstate-form  # old form\n");

  const Certificate certificate =
      certify({folder(), "--check", "state-form", "--baseline", baseline, "--", "state-form"});

  EXPECT_EQ(certificate.status, 0);
  EXPECT_THAT(certificate.verdicts("tolerated"), Contains(testing::Key("state-form")));
}

TEST_F(Certifying, AnAcceptedFailureThatIsNoneAnyMoreFails) {
  const std::string baseline = runtime.write("baseline", "state-answered\nload-memory\n");

  const Certificate certificate =
      certify({folder(), "--check", "state-answered", "--baseline", baseline});

  EXPECT_EQ(certificate.status, kFindings);
  EXPECT_THAT(certificate.verdicts("failed"),
              testing::ElementsAre(testing::Pair("state-answered", HasSubstr("does not fail"))));
}

TEST_F(Certifying, ABaselineThatNamesNoCheckIsRefused) {
  const std::string baseline = runtime.write("baseline", "\nstate-from\n");

  const Outcome outcome = runCertify({folder(), "--baseline", baseline});

  EXPECT_EQ(outcome.status, kWrongUsage);
  EXPECT_THAT(
      outcome.err,
      HasSubstr(baseline + ":2: there is no check 'state-from', did you mean 'state-form'?"));
}

TEST_F(Certifying, LeavesNothingBehind) {
  const fs::path temporary = runtime.write("tmp/marker", "").parent_path();

  const Outcome outcome = finish(startAssistant({"certify", folder(), "--check", "state-answered"},
                                                {{"TMPDIR", temporary.string()}}));

  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(countIn(temporary), 1);
}

TEST_F(Certifying, AnInterruptLeavesNothingBehind) {
  const fs::path temporary = runtime.write("tmp/marker", "").parent_path();
  Process process = startAssistant({"certify", folder(), "--completion-timeout", "100", "--check",
                                    "examples-answered", "--json", "--", "examples-answered"},
                                   {{"TMPDIR", temporary.string()}});
  // Until there is something to leave behind.
  while (countIn(temporary) < 2 || countIn(newFolderIn(temporary)) == 0) {
    std::this_thread::yield();
  }

  process.signal(SIGINT);

  EXPECT_EQ(process.wait(), kInterrupted);
  EXPECT_EQ(countIn(temporary), 1);
}

TEST(Certification, OfTheLightFailsInNoMust) {
  const support::TemporaryRuntime runtime;

  const Certificate certificate = certify({LIGHT_EXAMPLE, "--completion-timeout", "20"});

  EXPECT_EQ(certificate.status, 0) << certificate.suite.dump(1);
}

TEST(Certification, OfTheMusicSucceedsButForTheActionThatShowsSilence) {
  const support::TemporaryRuntime runtime;

  const Certificate certificate =
      certify({MUSIC_EXAMPLE, "--baseline", MUSIC_BASELINE, "--completion-timeout", "8"});

  EXPECT_EQ(certificate.status, 0) << certificate.suite.dump(1);
  EXPECT_THAT(certificate.verdicts("tolerated"),
              Contains(testing::Key("examples-answered musicSing")));
}

} // namespace
} // namespace integration
