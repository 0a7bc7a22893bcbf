// SPDX-License-Identifier: Apache-2.0
//
// Each mistake, made in a real application that norix-assistant launched, and what it is told.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"

#include <gmock/gmock.h>
#include <norix.h>

#include <csignal>
#include <nlohmann/json.hpp>

namespace integration {
namespace {

using nlohmann::json;
using support::Process;
using testing::HasSubstr;

constexpr const char *kMistakenId = "org.example.mistaken";
constexpr const char *kAssistant = "com.valtren.tizen.norix";
constexpr int kFindingsSeen = 10;

/// A launched application and what launch says of it.
class Launched {
public:
  /// @param options  of launch, in addition
  explicit Launched(std::vector<std::string> arguments, std::vector<std::string> options = {})
      : _process(startAssistant(command(std::move(options), std::move(arguments)),
                                {{"DLOG_FILTER", "*:S"}})) {}

  /// Waits for an event that the predicate accepts.
  template <typename Predicate>
  json await(Predicate isWanted) {
    while (true) {
      json event = json::parse(_process.readLine());
      if (isWanted(event)) {
        return event;
      }
    }
  }
  json awaitInitialised() {
    return await([](const json &event) {
      return event.at("event") == "call" && event.at("function") == "norix_initialize";
    });
  }
  std::string awaitFinding(const std::string &word) {
    return await([&word](const json &event) {
             return event.at("event") == "finding" && event.at("finding") == word;
           })
        .at("sentence");
  }
  int end() {
    _process.signal(SIGTERM);
    return _process.wait();
  }
  Process &process() { return _process; }

private:
  static std::vector<std::string> command(std::vector<std::string> options,
                                          std::vector<std::string> arguments) {
    std::vector<std::string> all = {
        "launch", "--json", "--trace", "--strict", "--completion-timeout", "0.3"};
    all.insert(all.end(), options.begin(), options.end());
    all.insert(all.end(), {kMistakenId, "--"});
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
  }

  Process _process;
};

class FindingTest : public IntegrationTest {
protected:
  FindingTest() { install("1.0-beta"); }

  void install(const std::optional<std::string> &version) const {
    runtime.install(kMistakenId, version);
    addProgram();
  }
  void installWithKey(const std::string &key) const {
    writeManifest("<metadata key=\"" + key + "\" value=\"1.0-beta\"/>");
  }
  void writeManifest(const std::string &metadata) const {
    runtime.write(std::string("apps/") + kMistakenId + "/tizen-manifest.xml",
                  "<manifest package=\"p\"><service-application appid=\"" + std::string(kMistakenId)
                      + "\" exec=\"app\">" + metadata + "</service-application></manifest>");
  }
  std::filesystem::path folder() const {
    return runtime.write(std::string("apps/") + kMistakenId + "/marker", "").parent_path();
  }

private:
  void addProgram() const {
    const std::filesystem::path program = folder() / "app";
    std::error_code ignored;
    std::filesystem::create_symlink(MISTAKEN_APPLICATION, program, ignored);
  }
};

struct Mistake {
  const char *name;
  std::vector<const char *> requests;
  const char *word;
  // What the sentence has to name.
  const char *part;
};

void PrintTo(const Mistake &mistake, std::ostream *out) {
  *out << mistake.name;
}

// "answers-twice" as AnswersTwice.
std::string nameOf(const testing::TestParamInfo<Mistake> &mistake) {
  std::string name;
  bool isFirst = true;
  for (const char letter : std::string(mistake.param.name)) {
    if (letter != '-') {
      name += static_cast<char>(isFirst ? std::toupper(letter) : letter);
    }
    isFirst = letter == '-';
  }
  return name;
}

class AnApplicationThat : public FindingTest, public testing::WithParamInterface<Mistake> {
protected:
  static void send(Session &session, const std::vector<const char *> &actions) {
    for (const std::string action : actions) {
      session.client().send(action == "state" ? stateRequest() : actionRequest(action, "{}"));
    }
  }
};

TEST_P(AnApplicationThat, IsTold) {
  const Mistake &mistake = GetParam();
  Launched launched({mistake.name});
  launched.awaitInitialised();
  std::optional<Session> session;
  if (!mistake.requests.empty()) {
    session.emplace(kMistakenId);
    send(*session, mistake.requests);
  }

  EXPECT_THAT(launched.awaitFinding(mistake.word), HasSubstr(mistake.part));
  EXPECT_EQ(launched.end(), kFindingsSeen);
}

INSTANTIATE_TEST_SUITE_P(
    Each, AnApplicationThat,
    testing::Values(
        Mistake{"registers-twice", {}, "registered-twice", "'act'"},
        Mistake{"registers-late", {"state", "act"}, "registered-late", "cannot be answered"},
        Mistake{"never-answers", {"act"}, "never-answered", "'act'"},
        Mistake{"answers-twice", {"act"}, "answered-twice", "'act'"},
        Mistake{"answers-too-late", {"act"}, "answered-too-late", "'act'"},
        Mistake{"answers-replaced", {"act", "act"}, "answered-replaced", "newer request"},
        Mistake{"answers-other-kind",
                {"act"},
                "answered-other-kind",
                "norix_complete_action_execution()"},
        Mistake{"answers-null", {"act"}, "answered-without-handle", "request_handle"},
        Mistake{"answers-in-a-thread",
                {"act"},
                "wrong-thread",
                "ecore_main_loop_thread_safe_call_async"},
        Mistake{"frees-the-bundle", {"act"}, "lent-bundle-freed", "bundle_free()"},
        Mistake{"reads-the-bundle-later", {"act"}, "lent-bundle-used-late", "bundle_get_str()"},
        Mistake{"holds-the-loop", {"act"}, "loop-held", "'act'"},
        Mistake{"holds-the-loop-in-a-timer", {}, "loop-held", "outside the callbacks"},
        Mistake{"throws", {"act"}, "exception-from-callback", "std::out_of_range (no such song)"},
        Mistake{"throws-to-the-end",
                {"act"},
                "exception-from-callback",
                "std::runtime_error (no such album)"},
        Mistake{"crashes", {"act"}, "crashed", "SIGSEGV in the callback of 'act'"},
        Mistake{"answers-latin-1", {"act"}, "answer-not-utf8", "not UTF-8"},
        Mistake{"deinitializes-inside", {"act"}, "deinitialized-in-callback", "'act'"}),
    nameOf);

TEST_F(FindingTest, ACallBeforeInitializeIsNamed) {
  Launched launched({"calls-before-initialize"});

  EXPECT_THAT(launched.awaitFinding("called-before-initialize"),
              HasSubstr("norix_set_action_execution_cb()"));
  EXPECT_EQ(launched.end(), kFindingsSeen);
}

TEST_F(FindingTest, AnIgnoredFailureOfInitializeIsSaid) {
  install(std::nullopt);
  Launched launched({"ignores-initialize"});

  EXPECT_THAT(launched.awaitFinding("initialize-ignored"), HasSubstr("NORIX_ERROR_NOT_SUPPORTED"));
  EXPECT_EQ(launched.end(), kFindingsSeen);
}

TEST_F(FindingTest, AMissingMetadataKeyIsSaidBeforeTheStart) {
  install(std::nullopt);
  Launched launched({});

  EXPECT_THAT(launched.awaitFinding("no-metadata-key"), HasSubstr("tizen-manifest.xml"));
  EXPECT_EQ(launched.process().wait(), kFindingsSeen);
}

TEST_F(FindingTest, ANearlyRightKeyIsAnsweredWithTheRightOne) {
  installWithKey("http://valtren.com/tizen/metadata/norix/sdk/versoin");
  Launched launched({});

  EXPECT_THAT(launched.awaitFinding("metadata-key-misspelt"),
              HasSubstr(NORIX_SDK_VERSION_METADATA_KEY));
}

TEST_F(FindingTest, AnEmptyVersionIsSaid) {
  install("");
  Launched launched({});

  EXPECT_THAT(launched.awaitFinding("sdk-version-empty"), HasSubstr("without a value"));
  EXPECT_EQ(launched.end(), kFindingsSeen);
}

TEST_F(FindingTest, AKeyWithoutAVersionIsSaid) {
  writeManifest("<metadata key=\"" NORIX_SDK_VERSION_METADATA_KEY "\"/>");
  Launched launched({});

  EXPECT_THAT(launched.awaitFinding("sdk-version-missing"), HasSubstr("value=\"1.0-beta\""));
  EXPECT_EQ(launched.end(), kFindingsSeen);
}

TEST_F(FindingTest, AVersionOfTheAlphaSeriesIsSaid) {
  install("1.0-alpha3");
  Launched launched({});

  EXPECT_THAT(launched.awaitFinding("sdk-version-alpha"), HasSubstr("1.0-alpha3"));
}

TEST_F(FindingTest, AMissingManifestIsSaidInsteadOfAStart) {
  std::filesystem::remove(folder() / "tizen-manifest.xml");

  const Outcome outcome = runAssistant({"launch", "--json", folder()});

  EXPECT_EQ(outcome.status, kCannotLaunch);
  EXPECT_EQ(json::parse(outcome.out).at("finding"), "no-manifest");
}

TEST_F(FindingTest, ASecondStartOfTheSameProgramIsSaid) {
  Launched first({});
  first.awaitInitialised();
  Launched second({});

  EXPECT_THAT(second.awaitFinding("started-twice"), HasSubstr(kMistakenId));
  EXPECT_EQ(second.process().wait(), kFindingsSeen);
  EXPECT_EQ(first.end(), 0);
}

TEST_F(FindingTest, AnApplicationWithoutMistakesHasNone) {
  Launched launched({});
  launched.awaitInitialised();
  Session session(kMistakenId);
  session.ask(stateRequest(), support::kBound);
  session.ask(actionRequest("act"), support::kBound);

  EXPECT_EQ(launched.end(), 0);
}

TEST_F(FindingTest, TheCompletionTimeoutIsTheOneAskedFor) {
  Launched launched({"never-answers"});

  EXPECT_EQ(launched.awaitInitialised().at("completionTimeout"), 300);
}

TEST_F(FindingTest, TheAllowListIsTheOneAskedFor) {
  const std::string path = runtime.write("list", std::string(kAssistant) + "\n");
  Launched launched({}, {"--allow-list", path});

  EXPECT_EQ(launched.awaitInitialised().at("allowList"), path);
}

struct List {
  const char *name;
  const char *content;
  const char *word;
};

void PrintTo(const List &list, std::ostream *out) {
  *out << list.name;
}

class AnAllowListThat : public FindingTest, public testing::WithParamInterface<List> {};

TEST_P(AnAllowListThat, IsNamedByThePathThatTheApplicationReads) {
  const std::string path = runtime.write("list", GetParam().content);
  Launched launched({"replaces-the-allow-list", path});

  EXPECT_THAT(launched.awaitFinding(GetParam().word), HasSubstr(path));
  EXPECT_EQ(launched.end(), kFindingsSeen);
}

INSTANTIATE_TEST_SUITE_P(
    Each, AnAllowListThat,
    testing::Values(List{"IsEmpty", "", "allow-list-empty"},
                    List{"HasCrlf", "com.valtren.tizen.norix\r\n", "allow-list-crlf"},
                    List{"HasBlanks", "com.valtren.tizen.norix \n", "allow-list-blanks"},
                    List{"LacksTheAssistant", "org.example.other\n", "allow-list-lacks-sender"}),
    [](const testing::TestParamInfo<List> &list) { return list.param.name; });

TEST_F(FindingTest, ASenderThatTheListRefusesIsNamed) {
  const std::string path = runtime.write("list", std::string(kAssistant) + "\n");
  Launched launched({"replaces-the-allow-list", path});
  launched.awaitInitialised();
  runtime.sendAs("org.example.stranger");
  EXPECT_THROW(Session session(kMistakenId), norix::assistant::Error);

  EXPECT_THAT(launched.awaitFinding("allow-list-lacks-sender"), HasSubstr("org.example.stranger"));
}

} // namespace
} // namespace integration
