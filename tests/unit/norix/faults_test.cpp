// SPDX-License-Identifier: Apache-2.0
//
// One failure at a time, on every road through the library. A call that is not named here has no
// effect when it fails: its result is ignored.
#include "FaultSweep.h"
#include "results.h"
#include "roads.h"

#include <norix.h>

namespace {

using fake::App;
using fake::Assistant;
using fake::DeliberateLeak;
using fake::kNothrowNew;
using fake::platform;

// The changes that effects make.
auto ends(int result, const std::string &lastLog) {
  return [=](Outcome &outcome) {
    outcome.result = result;
    outcome.lastLog = lastLog;
  };
}

auto endsUnsent(int result, const std::string &lastLog) {
  return [=](Outcome &outcome) {
    outcome = {result, lastLog, outcome.handed, outcome.results, outcome.responses - 1};
  };
}

auto endsUnhanded(int result, const std::string &lastLog) {
  return [=](Outcome &outcome) {
    outcome = {result, lastLog, outcome.handed - 1, outcome.results, outcome.responses};
  };
}

void goesUnsent(Outcome &outcome) {
  --outcome.responses;
}

void hasNoResult(Outcome &outcome) {
  --outcome.results;
}

auto throws(const std::string &lastLog) {
  return [=](Outcome &outcome) {
    outcome.result.reset();
    outcome.lastLog = lastLog;
  };
}

auto throwsUnhanded(const std::string &lastLog) {
  return [=](Outcome &outcome) {
    outcome = {std::nullopt, lastLog, outcome.handed - 1, outcome.results, outcome.responses};
  };
}

class TheFaults : public fake::NothingLeft {};

TEST_F(TheFaults, OfAnInitialisation) {
  const Road road = {nothing, [](App &app, Assistant &) { return app.initialises(); }};
  const std::vector<DeliberateLeak> stub = {DeliberateLeak::StubOfFailedInitialise};

  sweep(road, {{kNothrowNew, 1, ends(kNoMemory, "NorixImpl instance is null")},
               {"app_get_id", 1, throws("")},
               {"strdup", 1,
                ends(NORIX_ERROR_NOT_SUPPORTED,
                     "App SDK Norix Init Failed. App SDK version doesn't support TIDL.")},
               {kNothrowNew, 2, ends(kNoMemory, "message is failed")},
               {"rpc_port_stub_create", 1, throws("Failed to create stub handle")},
               {"rpc_port_stub_listen", 1, ends(kFailed, "Listen error: InvalidIOException"), stub},
               {kNothrowNew, 3, ends(kNoMemory, "NorixCommonData instance is null"), stub},
               {kNothrowNew, 4, ends(kNoMemory, "StateRequestImpl instance is null"), stub},
               {kNothrowNew, 5, ends(kNoMemory, "ActionRequestImpl instance is null"), stub}});
}

TEST_F(TheFaults, OfAConnection) {
  const Road road = {isInitialised, [](App &, Assistant &assistant) {
                       assistant.connects();
                       return 0;
                     }};

  sweep(road, {});
}

TEST_F(TheFaults, OfADisconnection) {
  const Road road = {isReady, [](App &, Assistant &assistant) {
                       assistant.disconnects();
                       return 0;
                     }};

  sweep(road, {});
}

TEST_F(TheFaults, OfARegistrationOfTheAssistant) {
  const Road road = {isConnected,
                     [](App &, Assistant &assistant) { return assistant.registers(); }};

  sweep(road, {{"rpc_port_parcel_create_from_port", 1,
                [](Outcome &outcome) {
                  ends(-5, "Failed to create parcel from port")(outcome);
                  hasNoResult(outcome);
                }},
               {"rpc_port_parcel_read_int32", 1,
                [](Outcome &outcome) {
                  ends(-1, "Unknown command(-1)")(outcome);
                  hasNoResult(outcome);
                }},
               {"rpc_port_parcel_create", 1, hasNoResult},
               {"rpc_port_parcel_send", 1, hasNoResult}});
}

TEST_F(TheFaults, OfAnUnregistrationOfTheAssistant) {
  const Road road = {isReady, [](App &, Assistant &assistant) { return assistant.unregisters(); }};

  sweep(road, {{"rpc_port_parcel_create_from_port", 1,
                [](Outcome &outcome) {
                  ends(-5, "Failed to create parcel from port")(outcome);
                  hasNoResult(outcome);
                }},
               {"rpc_port_parcel_read_int32", 1,
                [](Outcome &outcome) {
                  ends(-1, "Unknown command(-1)")(outcome);
                  hasNoResult(outcome);
                }},
               {"rpc_port_parcel_create", 1, hasNoResult},
               {"rpc_port_parcel_send", 1, hasNoResult}});
}

TEST_F(TheFaults, OfARegistrationForStates) {
  const Road road = {isInitialised, [](App &app, Assistant &) { return app.registersForState(); }};

  sweep(road, {{kNothrowNew, 1, ends(kNoMemory, "App State Request cb has been set")}});
}

TEST_F(TheFaults, OfARegistrationForActions) {
  const Road road = {isInitialised, [](App &app, Assistant &) { return app.registersFor("play"); }};

  sweep(road, {{kNothrowNew, 1, ends(NORIX_ERROR_INVALID_PARAMETER, "actionHandlerInfo is null")}});
}

TEST_F(TheFaults, OfAStateRequest) {
  const Road road = {isReady,
                     [](App &, Assistant &assistant) { return assistant.asksForState(1); }};

  sweep(road, {{"rpc_port_parcel_create_from_port", 1,
                endsUnhanded(-5, "Failed to create parcel from port")},
               {"rpc_port_parcel_read_int32", 1, endsUnhanded(-1, "Unknown command(-1)")},
               {"rpc_port_parcel_read_bundle", 1, endsUnhanded(0, "actionId is null")},
               {"bundle_dup", 1, endsUnhanded(0, "actionId is null")},
               {"bundle_get_str", 1, endsUnhanded(0, "actionId is null")}});
}

TEST_F(TheFaults, OfAStateRequestWithoutACallback) {
  const Road road = {[](App &app, Assistant &assistant) {
                       isConnected(app, assistant);
                       assistant.registers();
                     },
                     [](App &, Assistant &assistant) { return assistant.asksForState(1); }};

  sweep(road, {{"rpc_port_parcel_create_from_port", 1,
                endsUnsent(-5, "Failed to create parcel from port")},
               {"rpc_port_parcel_read_int32", 1, endsUnsent(-1, "Unknown command(-1)")},
               {"rpc_port_parcel_read_bundle", 1, endsUnsent(0, "actionId is null")},
               {"bundle_dup", 1, endsUnsent(0, "actionId is null")},
               {"bundle_get_str", 1, endsUnsent(0, "actionId is null")},
               {"bundle_create", 1, endsUnsent(0, "Bundle create failed")},
               {"app_get_id", 1, endsUnsent(0, "message_port_send_message status: -1073741825")},
               {"rpc_port_parcel_create", 2, goesUnsent},
               {"rpc_port_parcel_send", 1, goesUnsent}});
}

TEST_F(TheFaults, OfAnActionRequest) {
  const Road road = {isReady, [](App &, Assistant &assistant) {
                       const int result = assistant.asksForAction("play", 1);
                       // The address of the record comes out differently each time.
                       platform().log.clear();
                       return result;
                     }};
  const auto unhanded = [](int result) { return endsUnhanded(result, ""); };

  sweep(road, {{"rpc_port_parcel_create_from_port", 1, unhanded(-5)},
               {"rpc_port_parcel_read_int32", 1, unhanded(-1)},
               {"rpc_port_parcel_read_bundle", 1, unhanded(0)},
               {"bundle_dup", 1, unhanded(0)},
               {"bundle_get_str", 1, unhanded(0)}});
}

// Parked, registered, and delivered by the first tick.
TEST_F(TheFaults, OfAnEarlyRequest) {
  const Road road = {isReady,
                     [](App &app, Assistant &assistant) {
                       const int result = assistant.asksForAction("late", 1);
                       app.registersFor("late");
                       platform().log.clear();
                       platform().clock.advance(0.02);
                       platform().log.clear();
                       return result;
                     },
                     {DeliberateLeak::ParkedBundle}};
  const auto unhanded = [](int result) { return endsUnhanded(result, ""); };
  const auto thrown = throwsUnhanded("_actionExecutionFireCb called");

  sweep(road, {{"rpc_port_parcel_create_from_port", 1, unhanded(-5), {}, true},
               {"rpc_port_parcel_read_int32", 1, unhanded(-1), {}, true},
               {"rpc_port_parcel_read_bundle", 1, unhanded(0), {}, true},
               {"bundle_dup", 1, unhanded(0), {}, true},
               {"bundle_get_str", 1, unhanded(0), {}, true},
               {"bundle_create", 1, unhanded(0), {}, true},
               {"ecore_timer_add", 1, unhanded(0)},
               {kNothrowNew, 1, unhanded(0)}, // the registration: the request is given up
               // Without its action id, the copy is found out by the tick.
               {"bundle_foreach", 1, thrown},
               {"bundle_keyval_type_is_array", 1, thrown},
               {"bundle_keyval_get_basic_val", 1, thrown},
               {"bundle_add_str", 1, thrown},
               {"bundle_get_str", 4, thrown}});
}

TEST_F(TheFaults, OfAnEarlyRequestThatIsGivenUp) {
  const Road road = {[](App &app, Assistant &assistant) {
                       isReady(app, assistant);
                       assistant.asksForAction("late", 1);
                       platform().clock.advance(0.1);
                     },
                     [](App &, Assistant &) {
                       platform().clock.advance(0.02);
                       return 0;
                     },
                     {DeliberateLeak::ParkedBundle}};

  sweep(road, {{"bundle_create", 1, endsUnsent(0, "bundle_create is failed")},
               {"app_get_id", 1, endsUnsent(0, "send reponse result: -1073741825")},
               {"rpc_port_parcel_create", 1, goesUnsent},
               {"rpc_port_parcel_send", 1, goesUnsent}});
}

TEST_F(TheFaults, OfAStateAnswer) {
  const Road road = {[](App &app, Assistant &assistant) {
                       isReady(app, assistant);
                       assistant.asksForState(1);
                     },
                     [](App &app, Assistant &) { return app.answersState("state"); }};

  sweep(road,
        {{"bundle_create", 1, endsUnsent(kNoMemory, "bundle_create is failed")},
         {"app_get_id", 1, endsUnsent(kFailed, "[NorixClient <- App] send result: -1073741825")},
         {"rpc_port_parcel_create", 1, goesUnsent},
         {"rpc_port_parcel_send", 1, goesUnsent}});
}

TEST_F(TheFaults, OfAnActionResult) {
  const Road road = {[](App &app, Assistant &assistant) {
                       isReady(app, assistant);
                       assistant.asksForAction("play", 1);
                     },
                     [](App &app, Assistant &) { return app.answersAction("result"); }};

  sweep(road, {{"bundle_create", 1, endsUnsent(kNoMemory, "bundle_create is failed")},
               {"app_get_id", 1, endsUnsent(kFailed, "Response success")},
               {"rpc_port_parcel_create", 1, goesUnsent},
               {"rpc_port_parcel_send", 1, goesUnsent}});
}

TEST_F(TheFaults, OfAStateTimeout) {
  const Road road = {[](App &app, Assistant &assistant) {
                       isReady(app, assistant);
                       assistant.asksForState(1);
                     },
                     [](App &, Assistant &) {
                       platform().clock.advance(30);
                       return 0;
                     }};

  sweep(road, {{"bundle_create", 1, endsUnsent(0, "bundle_create is failed")},
               {"app_get_id", 1, endsUnsent(0, "App Id is null")},
               {"rpc_port_parcel_create", 1, goesUnsent},
               {"rpc_port_parcel_send", 1, goesUnsent}});
}

TEST_F(TheFaults, OfAnActionTimeout) {
  const Road road = {[](App &app, Assistant &assistant) {
                       isReady(app, assistant);
                       assistant.asksForAction("play", 1);
                     },
                     [](App &, Assistant &) {
                       platform().clock.advance(30);
                       return 0;
                     }};

  sweep(road, {{"bundle_create", 1, endsUnsent(0, "bundle_create is failed")},
               {"app_get_id", 1, endsUnsent(0, "send reponse result: -1073741825")},
               {"rpc_port_parcel_create", 1, goesUnsent},
               {"rpc_port_parcel_send", 1, goesUnsent}});
}

TEST_F(TheFaults, OfADeinitialisation) {
  const Road road = {[](App &app, Assistant &assistant) {
                       isReady(app, assistant);
                       assistant.asksForAction("play", 1);
                     },
                     [](App &app, Assistant &) { return app.deinitialises(); }};

  sweep(road, {});
}

} // namespace
