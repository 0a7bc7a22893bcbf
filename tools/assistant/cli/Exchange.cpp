// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Exchange.h"

#include "assistant/cli/Listener.h"
#include "assistant/cli/Tracing.h"
#include "assistant/cli/Turn.h"
#include "assistant/cli/Watchdog.h"
#include "assistant/cli/exchangeOutcome.h"
#include "assistant/client/MainLoop.h"
#include "assistant/client/Session.h"

#include <cstdlib>
#include <poll.h>
#include <set>
#include <utility>

namespace norix::assistant::cli {
namespace {

// The library answers in the application's place after 30 seconds; a little more, so that its
// answer comes first.
constexpr double kExchange = 32.0;
// By then the library has answered, unless another request has taken the place of this one.
constexpr double kCertain = 31.0;
// A thousand commands at once have had their turns by then.
constexpr double kTurns = 300.0;
// For waits that the watchdog bounds.
constexpr double kUnbounded = 86400.0;
// Between two looks for an application that is starting, in milliseconds.
constexpr int kPauseBetweenLooks = 20;

class Exchange {
public:
  Exchange(const ExchangeOptions &options, Request request, Console &console)
      : _options(options), _request(std::move(request)), _console(console), _watchdog(console),
        _subject(subjectOf(options, _request)),
        _tracing(options.traces, options.appId, _request.requestId) {}

  Ending run() {
    setenv("AUL_APPID", _options.senderId.c_str(), 1);
    // The user wants the answer; who wants the log as well says which.
    setenv("DLOG_FILTER", "*:S", 0);
    if (_options.timeout) {
      _watchdog.allow(*_options.timeout);
    }
    _watchdog.onEnd([this] { _tracing.show(); });
    Ending ending = awaitListener() ? takeTurn() : finished(Outcome::NobodyListens);
    _tracing.show();
    _tracing.addTo(ending.facts);
    return ending;
  }

private:
  bool awaitListener() {
    if (_options.wait == 0.0) {
      return true;
    }
    expect("waiting for '" + _options.appId + "' to listen", Outcome::NobodyListens);
    allowUnlessBounded(_options.wait);
    const double end = _watchdog.secondsPassed() + _options.wait;
    while (!findListener(_options.appId)) {
      if (_watchdog.secondsPassed() >= end) {
        return false;
      }
      (void)poll(nullptr, 0, kPauseBetweenLooks);
    }
    return true;
  }

  Ending takeTurn() {
    expect("waiting for other commands", Outcome::Crowded);
    allowUnlessBounded(kTurns);
    Turn turn(_options.appId, _options.senderId, [this] {
      _console.say("'" + _options.appId + "': waiting for other norix-assistant commands");
    });
    _watchdog.onEnd([this, &turn] {
      turn.release();
      _tracing.show();
    });
    allowUnlessBounded(kExchange);
    Ending ending = ask();
    _watchdog.onEnd([this] { _tracing.show(); });
    return ending;
  }

  Ending ask() {
    try {
      const MainLoop loop;
      Watchdog::blockSignals();
      expect("waiting for '" + _options.appId + "' to accept", Outcome::Busy);
      _tracing.note("connecting");
      Session session = connected();
      _tracing.note("connected; registering for answers");
      expect("waiting for '" + _options.appId + "' to answer", Outcome::NoAnswer);
      session.client().setCallback({});
      _tracing.note("sending request " + std::to_string(_request.requestId) + " for "
                    + _request.actionId);
      return await(session);
    } catch (const Error &error) {
      _tracing.note(error.what());
      _subject.detail = error.what();
      return finished(outcomeOf(error.failure()));
    }
  }

  // An application that began to listen when this command had found nobody is tried again: nothing
  // was sent yet.
  Session connected() {
    constexpr int kTries = 25;
    for (int tries = 1;; ++tries) {
      try {
        return Session::connected(_options.appId, kUnbounded);
      } catch (const Error &error) {
        _listens = findListener(_options.appId).has_value();
        if (error.failure() != Failure::CannotConnect || !_listens || tries == kTries) {
          throw;
        }
      }
      (void)poll(nullptr, 0, kPauseBetweenLooks);
    }
  }

  Ending await(Session &session) {
    try {
      const Answer answer = session.ask(_request, kCertain);
      _tracing.note("received the answer: "
                    + (answer.response.succeeded() ? answer.response.text()
                                                   : answer.response.statusMessage()));
      _watchdog.finish();
      return endingOf(answer.response, _subject);
    } catch (const Error &error) {
      if (error.failure() != Failure::NoAnswer) {
        throw;
      }
    }
    // The application is there and its loop runs if it answers this.
    session.client().setCallback({});
    return finished(Outcome::Superseded);
  }

  // Listening and not connecting are two cases for the client, which sees no connection.
  Outcome outcomeOf(Failure failure) const {
    return failure == Failure::CannotConnect && _listens ? Outcome::Busy : cli::outcomeOf(failure);
  }

  Ending finished(Outcome outcome) {
    _watchdog.finish();
    return endingWith(outcome);
  }

  void expect(const std::string &what, Outcome late) { _watchdog.expect(what, endingWith(late)); }

  Ending endingWith(Outcome outcome) const {
    Subject subject = _subject;
    subject.seconds = _options.timeout.value_or(kExchange);
    if (outcome == Outcome::NobodyListens) {
      subject.detail = describeListeners();
    }
    return failure(outcome, subject);
  }

  void allowUnlessBounded(double seconds) {
    if (!_options.timeout) {
      _watchdog.allow(seconds);
    }
  }

  const ExchangeOptions &_options;
  const Request _request;
  Console &_console;
  Watchdog _watchdog;
  // What was seen when no connection came about: who looks again may see what came after.
  bool _listens = false;
  Subject _subject;
  Tracing _tracing;
};

std::vector<std::pair<std::string, std::string>>
furtherKeys(const std::vector<std::string> &pairs) {
  std::set<std::string> taken{"actionId", "actionType", "actionParams", "requestId"};
  std::vector<std::pair<std::string, std::string>> keys;
  for (const std::string &pair : pairs) {
    const size_t equals = pair.find('=');
    if (equals == 0 || equals == std::string::npos) {
      throw UsageError("'" + pair + "' is no key of the bundle; give --set KEY=VALUE");
    }
    const std::string key = pair.substr(0, equals);
    if (!taken.insert(key).second) {
      throw UsageError("the key '" + key + "' is in the bundle already; --set adds others");
    }
    keys.emplace_back(key, pair.substr(equals + 1));
  }
  return keys;
}

} // namespace

Ending exchange(const ExchangeOptions &options, Request request, Console &console) {
  request.furtherKeys = furtherKeys(options.keys);
  return Exchange(options, std::move(request), console).run();
}

} // namespace norix::assistant::cli
