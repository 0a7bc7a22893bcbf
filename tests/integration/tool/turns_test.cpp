// SPDX-License-Identifier: Apache-2.0
//
// Many commands at once: the library keeps one delegate per sender id and works on one request at a
// time, so the tool's processes take turns.
#include "integration/harness/AssistantCommand.h"
#include "integration/harness/IntegrationTest.h"
#include "integration/harness/TestApplication.h"
#include "integration/tool/startMusic.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace integration {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

// A start of an instrumented program costs a hundred of a plain one.
#if defined(__SANITIZE_ADDRESS__)
constexpr int kCommands = 50;
#else
constexpr int kCommands = 1000;
#endif

// Starts $1 commands at once; command i writes to $2/i what the application says to the number i.
constexpr const char *kStartAll = R"(
i=0
while [ $i -lt "$1" ]; do
  "$0" run org.example.music musicVolume volume=$((i + 1000)) >"$2/$i" 2>"$2/$i.err" </dev/null &
  i=$((i + 1))
done
wait)";

class Turns : public IntegrationTest {
protected:
  static std::string contentOf(const fs::path &file) {
    std::ostringstream content;
    content << std::ifstream(file).rdbuf();
    return content.str();
  }

  // How many locks lie beside the application's socket.
  long countLocks(const std::string &appId) const {
    const fs::path folder = runtime.write("marker", "").parent_path() / "run/rpc-port" / appId;
    const fs::directory_iterator files(folder);
    return std::count_if(begin(files), end(files), [](const auto &file) {
      return file.path().filename().string().rfind(".turn-", 0) == 0;
    });
  }
};

TEST_F(Turns, LoseAndMixUpNoneOfAThousandCommands) {
  const Process music = startMusic();
  const fs::path folder = runtime.write("out-marker", "").parent_path() / "out";
  fs::create_directory(folder);

  Process all(
      {"/bin/sh", "-c", kStartAll, ASSISTANT_COMMAND, std::to_string(kCommands), folder.string()});
  ASSERT_EQ(all.wait(100), 0);

  for (int i = 0; i < kCommands; ++i) {
    const std::string name = std::to_string(i);
    EXPECT_THAT(contentOf(folder / name), HasSubstr("not " + std::to_string(i + 1000) + "\n"))
        << contentOf(folder / (name + ".err"));
  }
  EXPECT_EQ(countLocks(kMusic), 0);
}

TEST_F(Turns, AreAnnouncedToWhoWaits) {
  TestApplication application(runtime);
  application.setState();
  const Process first = startAssistant({"state", application.id()});
  application.awaitRequest();

  const Outcome second = runAssistant({"state", application.id(), "--timeout", "0.3"});

  EXPECT_EQ(second.status, 12);
  EXPECT_THAT(second.out, IsEmpty());
  EXPECT_THAT(second.err, HasSubstr("waiting for other norix-assistant commands"));
  EXPECT_THAT(second.err, HasSubstr("the state request was not sent"));
}

TEST_F(Turns, AreNotTakenByCommandsWithAnotherSenderId) {
  TestApplication application(runtime);
  application.setState();
  const Process first = startAssistant({"state", application.id()});
  application.awaitRequest();
  application.answerAtOnce("well");

  EXPECT_EQ(runAssistant({"state", application.id(), "--id", "com.example.other"}).out, "well\n");
}

TEST_F(Turns, GoOnWhenACommandIsKilled) {
  TestApplication application(runtime);
  application.setState();
  Process first = startAssistant({"state", application.id()});
  application.awaitRequest();
  Process second = startAssistant({"state", application.id()});
  application.answerAtOnce("well");

  first.signal(SIGKILL);

  EXPECT_EQ(second.finish().out, "well\n");
}

TEST_F(Turns, LeaveNothingBehindWhenACommandIsInterrupted) {
  TestApplication application(runtime);
  application.setState();
  Process assistant = startAssistant({"state", application.id()});
  application.awaitRequest();
  EXPECT_EQ(countLocks(application.id()), 1);

  assistant.signal(SIGINT);
  assistant.wait();

  EXPECT_EQ(countLocks(application.id()), 0);
}

} // namespace
} // namespace integration
