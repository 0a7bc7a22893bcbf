// SPDX-License-Identifier: Apache-2.0
//
// Every row of every table of docs/behaviour.md against the library: a row that is not true fails,
// and so does a row that nothing here tries out.
#include "roads.h"

#include "fakes/LibraryTest.h"

#include <norix.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <ostream>

namespace {

using fake::App;
using fake::Assistant;
using fake::DeliberateLeak;
using fake::platform;

using Cells = std::vector<std::string>;

std::string trimmed(const std::string &text) {
  const auto begin = text.find_first_not_of(' ');
  return begin == std::string::npos ? ""
                                    : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// The cells of "| one | two |".
Cells cellsOf(const std::string &line) {
  Cells cells;
  for (std::size_t begin = 1, end; (end = line.find('|', begin)) != std::string::npos;
       begin = end + 1) {
    cells.push_back(trimmed(line.substr(begin, end - begin)));
  }
  return cells;
}

// The rows of all tables of the page, without their headings.
std::vector<Cells> rowsOfThePage() {
  std::vector<Cells> rows;
  std::ifstream page(BEHAVIOUR_PAGE);
  bool isInTable = false;
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("|---", 0) == 0) {
      isInTable = true;
    } else if (line.rfind('|', 0) != 0) {
      isInTable = false;
    } else if (isInTable) {
      rows.push_back(cellsOf(line));
    }
  }
  return rows;
}

struct World {
  App &app;
  Assistant &assistant;
  std::function<void(const std::string &)> allowListIs;
};

// What the library does in the situation of a row, in the words of the row's other cells.
using Trial = std::function<Cells(World &)>;

void leaves(DeliberateLeak leak) {
  platform().leaks.expectLeft(leak, 1);
}

// --- Answers ---

enum class Kind { Action, State };

void asks(World &world, Kind kind, uint64_t requestId) {
  kind == Kind::Action ? world.assistant.asksForAction("play", requestId)
                       : world.assistant.asksForState(requestId);
}

void *handleOf(World &world, Kind kind) {
  return kind == Kind::Action ? world.app.actionRequests.back().handle
                              : world.app.stateRequests.back().handle;
}

// The result of an answer and what became of it.
std::string outcomeOf(World &world, Kind function, void *handle) {
  const std::size_t before = world.assistant.callbacks().size();
  const int result = function == Kind::Action ? norix_complete_action_execution(handle, "text")
                                              : norix_complete_app_state_request(handle, "text");
  const bool isSent = world.assistant.callbacks().size() != before;
  switch (result) {
  case NORIX_ERROR_NONE:
    return isSent ? "0, sent" : "0, dropped";
  case NORIX_ERROR_OPERATION_FAILED:
    return "`NORIX_ERROR_OPERATION_FAILED`";
  case NORIX_ERROR_INVALID_PARAMETER:
    return "`NORIX_ERROR_INVALID_PARAMETER`";
  default:
    return std::to_string(result);
  }
}

// Both kinds, each in a library of its own: a request, what happens meanwhile, and its answer.
Cells answersOfBoth(
    World &world, const std::function<void(World &, Kind)> &meanwhile,
    const std::function<void(Kind)> &afterwards = [](Kind) {}) {
  Cells outcomes;
  for (const Kind kind : {Kind::Action, Kind::State}) {
    isReady(world.app, world.assistant);
    asks(world, kind, 1);
    void *const handle = handleOf(world, kind);
    meanwhile(world, kind);
    outcomes.push_back(outcomeOf(world, kind, handle));
    afterwards(kind);
    platform().clock.advance(100);
    world.app.deinitialises();
  }
  return outcomes;
}

Cells answersInProgress(World &world) {
  return answersOfBoth(world, [](World &, Kind) {});
}

Cells answersAgain(World &world) {
  return answersOfBoth(
      world, [](World &inside, Kind kind) { outcomeOf(inside, kind, handleOf(inside, kind)); });
}

Cells answersReplaced(World &world) {
  return answersOfBoth(world, [](World &inside, Kind kind) { asks(inside, kind, 2); });
}

Cells answersReplacedWithTheSameId(World &world) {
  return answersOfBoth(world, [](World &inside, Kind kind) { asks(inside, kind, 1); });
}

Cells answersTooLate(World &world) {
  return answersOfBoth(world, [](World &, Kind) { platform().clock.advance(30); });
}

Cells answersTooLateWithoutResponse(World &world) {
  return answersOfBoth(world, [](World &, Kind) {
    platform().faults.fail("bundle_create");
    platform().clock.advance(30);
  });
}

Cells answersTheDisconnected(World &world) {
  return answersOfBoth(
      world, [](World &inside, Kind) { inside.assistant.disconnects(); },
      [](Kind kind) {
        if (kind == Kind::Action) {
          leaves(DeliberateLeak::AppIdOfFailedDelivery);
        }
      });
}

Cells answersWithoutDelegate(World &world) {
  return answersOfBoth(
      world, [](World &inside, Kind) { inside.assistant.unregisters(); },
      [](Kind kind) {
        if (kind == Kind::State) {
          leaves(DeliberateLeak::UndeliveredResponse);
        }
      });
}

Cells answersTheOtherKind(World &world) {
  isReady(world.app, world.assistant);
  asks(world, Kind::State, 1);
  const std::string action = outcomeOf(world, Kind::Action, handleOf(world, Kind::State));
  asks(world, Kind::Action, 2);
  return {action, outcomeOf(world, Kind::State, handleOf(world, Kind::Action))};
}

Cells answersALateRequest(World &world) {
  isReady(world.app, world.assistant);
  world.assistant.asksForAction("late", 1);
  world.app.registersFor("late");
  platform().clock.advance(0.02);
  leaves(DeliberateLeak::ParkedBundle);
  void *const handle = handleOf(world, Kind::Action);
  return {outcomeOf(world, Kind::Action, handle), outcomeOf(world, Kind::State, handle)};
}

Cells answersWithoutHandle(World &world) {
  isReady(world.app, world.assistant);
  asks(world, Kind::Action, 1);
  return {outcomeOf(world, Kind::Action, nullptr), outcomeOf(world, Kind::State, nullptr)};
}

Cells answersUninitialised(World &world) {
  int unknown = 2;
  const Cells before = {outcomeOf(world, Kind::Action, &unknown),
                        outcomeOf(world, Kind::State, &unknown)};
  isReady(world.app, world.assistant);
  world.app.deinitialises();
  Cells after = {outcomeOf(world, Kind::Action, &unknown), outcomeOf(world, Kind::State, &unknown)};
  EXPECT_EQ(before, after);
  return after;
}

// --- Actions without a callback ---

std::string statusMessage(const fake::Contents &response) {
  const auto found = std::find_if(response.begin(), response.end(),
                                  [](const auto &entry) { return entry.key == "status_msg"; });
  return found == response.end() ? "" : "`" + found->values.front() + "`";
}

// Advances to just before a moment and to the moment, at which the assistant is told something.
std::string toldAt(World &world, double seconds) {
  platform().clock.advance(seconds - 0.001);
  EXPECT_TRUE(world.assistant.responses().empty());
  platform().clock.advance(0.001);
  return world.assistant.responses().empty() ? "nothing"
                                             : statusMessage(world.assistant.responses().back());
}

Cells registersBefore(World &world) {
  isReady(world.app, world.assistant);
  asks(world, Kind::Action, 1);
  EXPECT_EQ(world.app.actionRequests.size(), 1U);
  return {"at once", toldAt(world, 30) + " after 30 s"};
}

Cells registersInTime(World &world) {
  isReady(world.app, world.assistant);
  leaves(DeliberateLeak::ParkedBundle);
  world.assistant.asksForAction("late", 1);
  platform().clock.advance(0.099);
  world.app.registersFor("late");
  EXPECT_TRUE(world.app.actionRequests.empty());
  platform().clock.advance(0.001);
  EXPECT_EQ(world.app.actionRequests.size(), 1U);
  return {"at the next look", toldAt(world, 30) + " 30 s after that look"};
}

Cells registersTooLate(World &world) {
  isReady(world.app, world.assistant);
  leaves(DeliberateLeak::ParkedBundle);
  world.assistant.asksForAction("late", 1);
  platform().clock.advance(0.101);
  world.app.registersFor("late");
  const std::string told = toldAt(world, 0.019) + " after 0.12 s";
  EXPECT_TRUE(world.app.actionRequests.empty());
  return {"never", told};
}

// --- Who may send requests ---

// Whether the assistant is served, and how often three requests of one connection read the list.
Cells served(World &world) {
  world.app.initialises();
  world.assistant.connects();
  world.assistant.registers();
  const bool isServed = world.assistant.results().back() == fake::resultOf(0);
  world.assistant.unregisters();
  world.assistant.unregisters();
  const std::vector<std::string> log = platform().log.texts();
  const auto looks = std::count_if(log.begin(), log.end(), [](const std::string &text) {
    return text.rfind("res_path : ", 0) == 0;
  });
  return {isServed ? "yes" : "no", looks == 1   ? "once per connection"
                                   : looks == 3 ? "at each request"
                                                : std::to_string(looks) + " times"};
}

Trial whenTheListIs(const std::string &content) {
  return [content](World &world) {
    world.allowListIs(content);
    return served(world);
  };
}

Cells whenTheListCannotBeOpened(World &world) {
  world.allowListIs("org.example.other\n");
  const std::filesystem::path list =
      std::string(NORIX_PROXY_ALLOW_APPID_LIST_PATH) + NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME;
  std::filesystem::remove(list);
  std::filesystem::create_symlink(list.filename(), list); // A loop, for root as well.
  return served(world);
}

// The second read of the list fails: what stands behind the first 8 KiB is not read.
Trial whenReadingFails(bool namesTheSenderFirst) {
  return [namesTheSenderFirst](World &world) {
    const std::string sender = std::string(fake::kAssistantId) + "\n";
    const std::string others = std::string(10000, 'x') + "\n";
    world.allowListIs(namesTheSenderFirst ? sender + others : "x\n" + others + sender);
    platform().faults.fail("read", 2);
    return served(world);
  };
}

// --- Starting and stopping ---

// What the assistant gets in the hour after a deinitialisation.
std::string toldAfterDeinitialising(World &world) {
  world.app.deinitialises();
  platform().clock.advance(3600);
  return world.assistant.responses().empty() ? "nothing" : "something";
}

Cells stopsWithAnAction(World &world) {
  isReady(world.app, world.assistant);
  asks(world, Kind::Action, 1);
  return {toldAfterDeinitialising(world)};
}

Cells stopsWithAParkedRequest(World &world) {
  isReady(world.app, world.assistant);
  world.assistant.asksForAction("late", 1);
  leaves(DeliberateLeak::ParkedBundle);
  return {toldAfterDeinitialising(world)};
}

Cells stopsWithAState(World &world) {
  isReady(world.app, world.assistant);
  asks(world, Kind::State, 1);
  leaves(DeliberateLeak::UndeliveredResponse);
  const std::string told = toldAfterDeinitialising(world);
  const std::vector<std::string> log = platform().log.texts();
  const bool isLogged = std::count(log.begin(), log.end(),
                                   "App state request execution timed out. Failed to execute "
                                   "action.")
                        == 1;
  return {told + (isLogged ? "; the timeout is logged all the same" : "")};
}

Cells stopsWithAStateAndComesBack(World &world) {
  isReady(world.app, world.assistant);
  asks(world, Kind::State, 1);
  world.app.deinitialises();
  platform().clock.advance(29);
  world.app.initialises();
  Assistant back(fake::kAssistantId, "instance-2");
  back.isReady();
  platform().clock.advance(1);
  if (back.responses().empty()) {
    return {"nothing"};
  }
  const bool hasAllOnes = back.responses().back().back() == fake::id("requestId", ~0ULL);
  return {statusMessage(back.responses().back())
          + (hasAllOnes ? " with a request id of all ones" : "")};
}

// --- Memory ---

// A row of the table of memory; the leak check of the test is what holds it.
Trial left(const std::string &what, DeliberateLeak leak,
           const std::function<void(World &)> &happens) {
  return [=](World &world) {
    happens(world);
    leaves(leak);
    return Cells{what};
  };
}

void isDeliveredLate(World &world) {
  isReady(world.app, world.assistant);
  world.assistant.asksForAction("late", 1);
  world.app.registersFor("late");
  platform().clock.advance(0.02);
}

void isGivenUp(World &world) {
  isReady(world.app, world.assistant);
  world.assistant.asksForAction("late", 1);
  platform().clock.advance(0.12);
}

void isParkedAtTheEnd(World &world) {
  isReady(world.app, world.assistant);
  world.assistant.asksForAction("late", 1);
  world.app.deinitialises();
}

void stateFindsNoDelegate(World &world) {
  isReady(world.app, world.assistant);
  world.assistant.unregisters();
  world.assistant.asksForState(1);
  world.app.answersState("state");
}

void actionIsRefusedByTheChannel(World &world) {
  isReady(world.app, world.assistant);
  world.assistant.asksForAction("play", 1);
  world.assistant.disconnects();
  world.app.answersAction("result");
}

void declaresItsVersionTwice(World &world) {
  platform().application.metadata.emplace_back(NORIX_SDK_VERSION_METADATA_KEY, "1.0-beta");
  world.app.initialises();
}

void failsToListen(World &world) {
  platform().faults.fail("rpc_port_stub_listen", 1, -5);
  world.app.initialises();
}

// By the first cell of the row.
const std::map<std::string, Trial> &situations() {
  static const std::string sender = fake::kAssistantId;
  static const std::map<std::string, Trial> all = {
      {"the request in progress", answersInProgress},
      {"the same request again", answersAgain},
      {"a request that a newer one replaced", answersReplaced},
      {"a request that one with the same request id replaced", answersReplacedWithTheSameId},
      {"after the 30 seconds", answersTooLate},
      {"after the 30 seconds, when the response that says so could not be made",
       answersTooLateWithoutResponse},
      {"after the assistant disconnected", answersTheDisconnected},
      {"an assistant that registered no delegate", answersWithoutDelegate},
      {"a request of the other kind", answersTheOtherKind},
      {"a request that waited for its callback", answersALateRequest},
      {"with a null handle", answersWithoutHandle},
      {"before `norix_initialize` or after `norix_deinitialize`", answersUninitialised},

      {"before the request", registersBefore},
      {"up to 0.10 s after the request", registersInTime},
      {"later than 0.10 s after the request, or never", registersTooLate},

      {"does not exist", served},
      {"cannot be opened", whenTheListCannotBeOpened},
      {"is empty", whenTheListIs("")},
      {"names the sender", whenTheListIs("org.example.other\n" + sender + "\n")},
      {"names the sender with a blank or `\\r` behind its id",
       whenTheListIs(sender + " \n" + sender + "\r\n")},
      {"names the sender in other letters (A for a)", whenTheListIs("COM.valtren.tizen.norix\n")},
      {"names others only", whenTheListIs("org.example.other\n")},
      {"names the sender before a place where it cannot be read", whenReadingFails(true)},
      {"names the sender behind a place where it cannot be read", whenReadingFails(false)},

      {"an action that was handed to the application", stopsWithAnAction},
      {"an action that waits for its callback", stopsWithAParkedRequest},
      {"a state request", stopsWithAState},
      {"a state request, and both sides are back before its 30 seconds have passed",
       stopsWithAStateAndComesBack},

      {"a request that waited for its callback is delivered",
       left("its copy: the application may still hold its handle", DeliberateLeak::ParkedBundle,
            isDeliveredLate)},
      {"a request that waited for its callback is given up",
       left("its copy", DeliberateLeak::ParkedBundle, isGivenUp)},
      {"`norix_deinitialize` while a request waits for its callback",
       left("its copy", DeliberateLeak::ParkedBundle, isParkedAtTheEnd)},
      {"a state response for an assistant that registered no delegate",
       left("the response bundle", DeliberateLeak::UndeliveredResponse, stateFindsNoDelegate)},
      {"an action response that the channel refuses",
       left("the text of the application's id", DeliberateLeak::AppIdOfFailedDelivery,
            actionIsRefusedByTheChannel)},
      {"a manifest that declares the SDK version twice",
       left("the earlier value", DeliberateLeak::ReplacedSdkVersion, declaresItsVersionTwice)},
      {"a failed `norix_initialize` whose port was opened",
       left("the port, open", DeliberateLeak::StubOfFailedInitialise, failsToListen)},
  };
  return all;
}

class ThePageOnBehaviour : public fake::LibraryTest, public testing::WithParamInterface<Cells> {};

TEST_P(ThePageOnBehaviour, IsTrueInThisRow) {
  const Cells &row = GetParam();
  const auto situation = situations().find(row.front());
  ASSERT_NE(situation, situations().end()) << "nothing tries out the row '" << row.front() << "'";
  World world{app, assistant, [this](const std::string &content) { allowListIs(content); }};

  EXPECT_EQ(situation->second(world), Cells(row.begin() + 1, row.end()));
}

INSTANTIATE_TEST_SUITE_P(, ThePageOnBehaviour, testing::ValuesIn(rowsOfThePage()),
                         [](const auto &tested) {
                           std::string name;
                           for (const char letter : tested.param.front()) {
                             name += std::isalnum(static_cast<unsigned char>(letter)) != 0 ? letter
                                                                                           : '_';
                           }
                           return name;
                         });

TEST(TheSituations, HaveARowEach) {
  const std::vector<Cells> rows = rowsOfThePage();
  for (const auto &[first, situation] : situations()) {
    EXPECT_TRUE(std::any_of(rows.begin(), rows.end(),
                            [&first = first](const Cells &row) { return row.front() == first; }))
        << "no row of the page says '" << first << "'";
  }
}

} // namespace
