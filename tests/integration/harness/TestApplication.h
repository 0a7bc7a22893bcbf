// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_TESTAPPLICATION_H
#define NORIX_TESTS_INTEGRATION_TESTAPPLICATION_H

#include "support/Process.h"
#include "support/TemporaryRuntime.h"

#include <cstdint>
#include <deque>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace integration {

using support::kBound;
using support::Process;
using support::TemporaryRuntime;

// One request as the application's callback saw it.
struct Received {
  std::string kind; // "state" or "action"
  int number = 0;   // by which the test names it: 0 for the first
  int handleNumber = 0;
  std::string handleText;
  std::string actionId;
  std::string actionType;
  std::string actionParams;
  std::uint64_t requestId = 0;
  // All texts of the bundle, by their keys.
  std::map<std::string, std::string> texts;
};

// The application for tests (app/), in a process of its own. Its calls return what the library's
// function of that name returned in there.
class TestApplication {
public:
  struct Options {
    std::string appId = "org.example.test";
    std::optional<std::string> sdkVersion = "1.0-beta";
    // The path of an allow list to use instead of the installed one.
    std::string allowList;
    Process::Environment environment;
  };

  // Starts the process; the library is not initialised yet.
  TestApplication(const TemporaryRuntime &runtime, const Options &options);
  // Starts the process, and initialises the library.
  explicit TestApplication(const TemporaryRuntime &runtime);
  static TestApplication initialised(const TemporaryRuntime &runtime, const Options &options);

  const std::string &id() const { return _appId; }
  Process &process() { return _process; }

  int initialize() { return call("initialize"); }
  int deinitialize() { return call("deinitialize"); }
  int setState() { return call("setState"); }
  int unsetState() { return call("unsetState"); }
  int setAction(const std::string &id) { return call("setAction", {{"id", id}}); }
  int unsetAction(const std::string &id) { return call("unsetAction", {{"id", id}}); }
  int completeState(int request, const std::optional<std::string> &text);
  int completeAction(int request, const std::optional<std::string> &text);
  // The name, or nothing with the library's error.
  std::optional<std::string> actionName(int request);

  // From now on every request is answered inside its callback.
  void answerAtOnce(const std::string &text) { call("answerAtOnce", {{"text", text}}); }
  // From now on every request makes the application deinitialise the library inside its callback.
  void deinitialiseAtOnce() { call("deinitialiseAtOnce"); }
  // The next request makes its callback throw.
  void throwAtOnce() { call("throwAtOnce"); }
  // Registers the action this long after the library has parked the next request.
  void setActionWhenParked(const std::string &id, double seconds);
  // Announces that awaitLog() will wait for this text.
  void reportLog(const std::string &text) { call("reportLog", {{"text", text}}); }

  // Forks a child that ends ("exit", "_exit") or does not ("stay"); 0 when that worked.
  int fork(const std::string &ending) { return call("fork", {{"ending", ending}}); }
  // What a program finds open that the application starts.
  int countSocketsOfAProgram() { return call("countSocketsOfAProgram"); }
  // Leaves the process no free descriptor, or as many as it had when it started.
  void takeDescriptors() { call("limitDescriptors", {{"toThoseItHas", true}}); }
  void giveDescriptors() { call("limitDescriptors", {{"toThoseItHas", false}}); }
  int minutesOnTheWallClock() { return call("wallClock"); }

  // Waits for the next request.
  Received awaitRequest();
  // Waits for the announced text in the log.
  void awaitLog();
  // Waits for deinitialiseAtOnce() to have happened; its result.
  int awaitDeinitialised();

private:
  int call(const std::string &name, const nlohmann::json &arguments = nlohmann::json::object());
  nlohmann::json exchange(const std::string &name, const nlohmann::json &arguments);
  nlohmann::json awaitEvent(const std::string &first, const std::string &second = {});

  std::string _appId;
  Process _process;
  std::deque<nlohmann::json> _events;
};

} // namespace integration

#endif
