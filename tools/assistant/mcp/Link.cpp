// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/Link.h"

#include <utility>

namespace norix::assistant::mcp {
namespace {

// How often a started application is tried until it listens, and a taken turn until it is free.
constexpr double kRetrySeconds = 0.05;

Request requestFor(const Work &work) {
  return work.isState() ? stateRequest() : actionRequest(work.actionId, work.params);
}

Outcome unknown(const std::string &what) {
  return {Outcome::Kind::Unknown, "Outcome unknown: " + what
                                      + ". The action may have been executed; read the state "
                                        "before repeating it."};
}

Outcome notExecuted(const std::string &what) {
  return {Outcome::Kind::NotExecuted, "Not executed: " + what};
}

// The library's failures, told apart by their texts: only a timeout leaves the outcome open.
Outcome failureOutcome(const Response &response, const std::string &appId) {
  const std::string &message = response.statusMessage();
  if (message.find("timed out") != std::string::npos) {
    return unknown("'" + appId + "' took the request and did not answer in time (" + message + ")");
  }
  return {Outcome::Kind::Failed,
          "Not executed: '" + appId + "' has not registered this (" + message
              + "). Use another tool, or ask the application's developer to register it."};
}

} // namespace

Link::Link(Settings settings) : _settings(std::move(settings)) {}

void Link::run(const Work &work, Done done) {
  _current = Current();
  _current->request = requestFor(work);
  _current->done = std::move(done);
  _current->limit = std::make_unique<Timer>(_settings.runSeconds, [this] { onLimit(); });
  begin();
}

void Link::begin() {
  if (!_settings.takeTurn()) {
    _retry = std::make_unique<Timer>(kRetrySeconds, [this] { begin(); });
  } else if (_connected) {
    registerAndSend();
  } else {
    connect();
  }
}

void Link::connect() {
  Client::Handlers handlers;
  handlers.connected = [this] {
    _connected = true;
    registerAndSend();
  };
  handlers.ended = [this](const Error &error) { onEnded(error); };
  handlers.answered = [this](const Answer &answer) { onAnswered(answer); };
  handlers.malformed = [this](const Error &error) { fail(error); };
  try {
    _client = std::make_unique<Client>(std::move(handlers));
    _client->connect(_settings.appId);
  } catch (const Error &error) {
    onEnded(error);
  }
}

// The delegate is registered for every request: between two of them another process may have asked
// as the same sender.
void Link::registerAndSend() {
  if (!_current) {
    return;
  }
  try {
    _client->setCallback({});
    _client->send(_current->request);
    _current->sent = true;
    _current->sentAt = std::chrono::steady_clock::now();
  } catch (const Error &error) {
    // Nothing of the request has left. A connection that ended while nobody looked is made again.
    if (error.failure() == Failure::Disconnected && !_current->reconnected) {
      _current->reconnected = true;
      drop();
      connect();
    } else {
      fail(error);
    }
  }
}

void Link::drop() {
  _connected = false;
  _client.reset();
}

void Link::onEnded(const Error &error) {
  drop();
  if (!_current) {
    return;
  }
  if (!_current->sent && error.failure() == Failure::CannotConnect) {
    launchOrFail();
    return;
  }
  fail(error);
}

void Link::launchOrFail() {
  if (!_settings.launch) {
    finish(notExecuted("'" + _settings.appId
                       + "' is not running, or does not accept connections. Ask the user to start "
                         "it."));
    return;
  }
  try {
    if (!std::exchange(_current->launched, true)) {
      _settings.launch();
    }
  } catch (const std::exception &error) {
    finish(notExecuted("'" + _settings.appId + "' cannot be started: " + error.what()));
    return;
  }
  _retry = std::make_unique<Timer>(kRetrySeconds, [this] { connect(); });
}

void Link::fail(const Error &error) {
  drop();
  if (!_current) {
    return;
  }
  if (_current->sent) {
    finish(unknown(error.what()));
  } else if (error.failure() == Failure::Refused) {
    finish(notExecuted("the application's allow list does not name '" + _settings.senderId
                       + "'. Ask the user to add it to the list."));
  } else {
    finish(notExecuted(error.what()));
  }
}

void Link::onAnswered(const Answer &answer) {
  // An answer to an earlier request, whose time ran out, is dropped here.
  if (!_current || answer.response.requestId() != _current->request.requestId) {
    return;
  }
  report(answer.response);
  finish(answer.response.succeeded() ? Outcome{Outcome::Kind::Answered, answer.response.text()}
                                     : failureOutcome(answer.response, _settings.appId));
}

void Link::report(const Response &response) const {
  if (_settings.answered) {
    const std::chrono::duration<double> passed =
        std::chrono::steady_clock::now() - _current->sentAt;
    _settings.answered(_current->request, response, passed.count());
  }
}

void Link::onLimit() {
  if (_current->sent) {
    finish(unknown("'" + _settings.appId + "' did not answer in time"));
    return;
  }
  drop();
  finish(notExecuted("'" + _settings.appId + "' could not be reached in time"));
}

void Link::finish(const Outcome &outcome) {
  _retry.reset();
  _settings.releaseTurn();
  const Current finished = *std::exchange(_current, std::nullopt);
  finished.done(outcome);
}

} // namespace norix::assistant::mcp
