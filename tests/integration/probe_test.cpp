// SPDX-License-Identifier: Apache-2.0
//
// The probe in applications that do what libraries do not expect, and with readers that do not
// read.
#include "assistant/launch/sockets.h"
#include "assistant/trace/Event.h"
#include "integration/harness/IntegrationTest.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace integration {
namespace {

using norix::assistant::launch::acceptFrom;
using norix::assistant::launch::Descriptor;
using norix::assistant::launch::listenAt;
using norix::assistant::trace::Event;
using norix::assistant::trace::LineBuffer;
using norix::assistant::trace::parseEvent;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char *kProbedId = "org.example.probed";

/// Where a probe connects, in the hands of the test.
class Reader {
public:
  explicit Reader(std::string path) : _path(std::move(path)), _listening(listenAt(_path)) {}

  const std::string &path() const { return _path; }

  void accept() {
    awaitReadable(_listening);
    _connection = acceptFrom(_listening);
    _lines = {};
  }
  void hangUp() { _connection = Descriptor(); }
  /// Hangs up, and takes nobody any more.
  void leave() {
    hangUp();
    _listening = Descriptor();
    std::filesystem::remove(_path);
  }

  /// Every event up to the first of this name.
  std::vector<Event> readUntil(const std::string &name) {
    std::vector<Event> events;
    while (events.empty() || events.back().name != name) {
      events.push_back(next());
    }
    return events;
  }
  Event next() {
    while (_arrived.empty()) {
      std::array<char, 65536> bytes{};
      awaitReadable(_connection);
      const ssize_t size = recv(_connection.get(), bytes.data(), bytes.size(), 0);
      if (size <= 0) {
        throw std::runtime_error("the probe has hung up");
      }
      for (const std::string &line : _lines.add({bytes.data(), static_cast<size_t>(size)})) {
        _arrived.push_back(parseEvent(line).value());
      }
    }
    Event event = _arrived.front();
    _arrived.erase(_arrived.begin());
    return event;
  }

private:
  static void awaitReadable(const Descriptor &descriptor) {
    constexpr int kMilliseconds = 1000;
    pollfd polled = {descriptor.get(), POLLIN, 0};
    if (poll(&polled, 1, static_cast<int>(kBound) * kMilliseconds) != 1) {
      throw std::runtime_error("nothing came from the probe");
    }
  }

  std::string _path;
  Descriptor _listening;
  Descriptor _connection;
  LineBuffer _lines;
  std::vector<Event> _arrived;
};

class TheProbe : public IntegrationTest {
protected:
  TheProbe() { runtime.install(kProbedId, "1.0-beta"); }

  void SetUp() override {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP()
        << "AddressSanitizer's run-time library has to be loaded first, and so has the probe";
#endif
  }

  std::string socketPath() const {
    return runtime.write("marker", "").parent_path() / "probe";
  }

  static Process startApplication(const std::vector<std::string> &arguments,
                                  const std::string &socket) {
    std::vector<std::string> command = {MISTAKEN_APPLICATION};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return Process(command, {{"AUL_APPID", kProbedId},
                             {"LD_PRELOAD", PROBE},
                             {"NORIX_PROBE_SOCKET", socket},
                             {"DLOG_FILTER", "*:S"}});
  }

  // Connects as soon as the application listens, however it is told.
  static Session connect() {
    for (int tries = 0;; ++tries) {
      try {
        return Session(kProbedId);
      } catch (const norix::assistant::Error &) {
        constexpr int kMostTries = 400;
        if (tries == kMostTries) {
          throw;
        }
        usleep(static_cast<useconds_t>(kBound * 1e6) / kMostTries);
      }
    }
  }

  static std::string act(Session &session) {
    return session.ask(actionRequest("act", "{}"), kBound).response.text();
  }
};

TEST_F(TheProbe, DoesNothingWithoutASocket) {
  Process application = startApplication({}, "");
  Session session = connect();

  EXPECT_EQ(act(session), "done");
  application.signal(SIGTERM);
  EXPECT_EQ(application.wait(), 0);
  EXPECT_THAT(application.errors(), IsEmpty());
}

TEST_F(TheProbe, DoesNotMissASocketThatNobodyListensOn) {
  Process application = startApplication({}, socketPath());
  Session session = connect();

  EXPECT_EQ(act(session), "done");
  application.signal(SIGTERM);
  EXPECT_EQ(application.wait(), 0);
}

TEST_F(TheProbe, OutlivesItsReader) {
  Reader reader(socketPath());
  Process application = startApplication({}, reader.path());
  reader.accept();
  Session session = connect();
  reader.leave();

  for (int request = 0; request < 100; ++request) {
    EXPECT_EQ(act(session), "done");
  }
  application.signal(SIGTERM);
  EXPECT_EQ(application.wait(), 0);
}

TEST_F(TheProbe, SaysHowManyEventsAReaderMissedThatDidNotRead) {
  Reader reader(socketPath());
  Process application = startApplication({}, reader.path());
  reader.accept();
  Session session = connect();
  constexpr int kMoreThanFits = 2000;
  for (int request = 0; request < kMoreThanFits; ++request) {
    ASSERT_EQ(act(session), "done");
  }

  std::int64_t expected = 0;
  std::int64_t missed = 0;
  for (Event event = reader.next(); event.name != "dropped"; event = reader.next()) {
    EXPECT_EQ(event.number("n"), expected++);
    missed = expected;
  }
  const Event after = reader.next();
  EXPECT_GT(after.number("n"), missed + 1);
}

TEST_F(TheProbe, StaysWithTheParentWhenItForks) {
  Reader reader(socketPath());
  Process application = startApplication({"forks"}, reader.path());
  reader.accept();
  Session session = connect();

  EXPECT_EQ(act(session), "done");

  const std::vector<Event> events = reader.readUntil("callback-left");
  for (const Event &event : events) {
    EXPECT_NE(event.name, "exit");
  }
  application.signal(SIGTERM);
  EXPECT_EQ(reader.readUntil("exit").back().number("status"), 0);
}

TEST_F(TheProbe, LeavesTheProgramsAloneThatTheApplicationRuns) {
  Reader reader(socketPath());
  Process application = startApplication({"runs-a-program"}, reader.path());
  reader.accept();
  Session session = connect();

  EXPECT_EQ(act(session), "done");
  EXPECT_EQ(reader.readUntil("callback-left").back().text("action"), "act");
}

TEST_F(TheProbe, ConnectsAgainWhenTheApplicationClosesItsDescriptor) {
  Reader reader(socketPath());
  Process application = startApplication({"closes-descriptors"}, reader.path());
  reader.accept();
  Session session = connect();

  EXPECT_EQ(act(session), "done");

  reader.accept();
  EXPECT_EQ(reader.next().name, "hello");
  EXPECT_EQ(reader.readUntil("callback-left").back().text("action"), "act");
}

TEST_F(TheProbe, WritesIntoNoFileThatTookItsDescriptor) {
  const std::filesystem::path file = runtime.write("precious", "");
  Reader reader(socketPath());
  Process application = startApplication({"replaces-descriptors", file}, reader.path());
  reader.accept();
  Session session = connect();

  EXPECT_EQ(act(session), "done");

  reader.accept();
  reader.readUntil("callback-left");
  EXPECT_EQ(std::filesystem::file_size(file), 0U);
}

TEST_F(TheProbe, ReportsEveryLineOfEightThreads) {
  Reader reader(socketPath());
  Process application = startApplication({"logs-from-threads"}, reader.path());
  reader.accept();
  Session session = connect();

  EXPECT_EQ(act(session), "done");

  std::set<std::string> lines;
  std::int64_t dropped = 0;
  for (const Event &event : reader.readUntil("callback-left")) {
    dropped += event.name == "dropped" ? event.number("count") : 0;
    if (event.text("tag") == "THREADS") {
      lines.insert(event.text("text"));
    }
  }
  constexpr std::size_t kLines = 4000;
  EXPECT_EQ(lines.size() + static_cast<std::size_t>(dropped), kLines);
}

TEST_F(TheProbe, PassesOnWhatAnOpenedLibraryCalls) {
  Process program(
      {OPENING_PROGRAM, NORIX_LIBRARY},
      {{"AUL_APPID", kProbedId}, {"LD_PRELOAD", PROBE}, {"NORIX_PROBE_SOCKET", socketPath()}});

  EXPECT_EQ(program.readLine(), "0");
  EXPECT_EQ(program.wait(), 0);
  EXPECT_THAT(program.errors(), HasSubstr("NorixImpl is not initialized"));
}

TEST_F(TheProbe, EscapesWhatIsNoUtf8) {
  Reader reader(socketPath());
  Process application = startApplication({"answers-latin-1"}, reader.path());
  reader.accept();
  Session session = connect();
  act(session);

  for (const Event &event : reader.readUntil("callback-left")) {
    if (event.text("function") == "norix_complete_action_execution") {
      EXPECT_EQ(event.text("text"), "Beyonc\xc3\xa9");
      EXPECT_FALSE(event.flag("utf8"));
    }
  }
}

} // namespace
} // namespace integration
