// SPDX-License-Identifier: Apache-2.0
#include "assistant/client/Session.h"

#include "assistant/client/Timer.h"

#include <Ecore.h>
#include <algorithm>
#include <deque>
#include <optional>
#include <sstream>
#include <utility>
#include <variant>

namespace norix::assistant {

// What arrived, in order, and the wait for more. On the heap, for the client's handlers to find it
// after the session was moved.
struct Session::State {
  using Event = std::variant<Answer, Error>;

  explicit State(std::string id) : appId(std::move(id)), client(handlers()) {}

  Client::Handlers handlers();
  void wake() const;
  template <typename Condition>
  void waitUntil(Condition condition, double seconds);
  std::optional<Answer> take(double seconds);
  Error late(Failure failure, double seconds) const;

  std::string appId;
  bool connected = false;
  bool waiting = false;
  std::optional<Error> end;
  std::deque<Event> events;
  Client client;
};

Client::Handlers Session::State::handlers() {
  Client::Handlers made;
  made.connected = [this] {
    connected = true;
    wake();
  };
  made.ended = [this](const Error &why) {
    end = why;
    wake();
  };
  made.answered = [this](Answer answer) {
    events.emplace_back(std::move(answer));
    wake();
  };
  made.malformed = [this](const Error &why) {
    events.emplace_back(why);
    wake();
  };
  return made;
}

void Session::State::wake() const {
  if (waiting) {
    ecore_main_loop_quit();
  }
}

// Runs the loop until the condition holds, or the connection ended, or the time is up.
template <typename Condition>
void Session::State::waitUntil(Condition condition, double seconds) {
  if (condition()) {
    return;
  }
  bool expired = false;
  const Timer deadline(seconds, [&expired] {
    expired = true;
    ecore_main_loop_quit();
  });

  waiting = true;
  while (!condition() && !end && !expired) {
    ecore_main_loop_begin();
  }
  waiting = false;
}

// The next answer; nothing when the time is up.
std::optional<Answer> Session::State::take(double seconds) {
  waitUntil([this] { return !events.empty(); }, seconds);

  if (events.empty() && end) {
    throw Error(*end);
  }
  if (events.empty()) {
    return std::nullopt;
  }
  Event event = std::move(events.front());
  events.pop_front();
  if (const auto *malformed = std::get_if<Error>(&event)) {
    throw Error(*malformed);
  }
  return std::get<Answer>(std::move(event));
}

Error Session::State::late(Failure failure, double seconds) const {
  std::ostringstream text;
  text << "'" << appId
       << "': " << (failure == Failure::CannotConnect ? "no connection" : "no answer") << " within "
       << seconds << " seconds";
  return {failure, text.str()};
}

Session::Session(std::unique_ptr<State> state) : _state(std::move(state)) {}
Session::Session(Session &&other) noexcept = default;
Session &Session::operator=(Session &&other) noexcept = default;
Session::~Session() = default;

Session::Session(const std::string &appId, double seconds, const Delegate &delegate)
    : Session(connected(appId, seconds)) {
  client().setCallback(delegate);
}

Session Session::connected(const std::string &appId, double seconds) {
  auto state = std::make_unique<State>(appId);
  state->client.connect(appId);
  state->waitUntil([&state] { return state->connected; }, seconds);

  if (state->end) {
    throw Error(*state->end);
  }
  if (!state->connected) {
    throw state->late(Failure::CannotConnect, seconds);
  }
  return Session(std::move(state));
}

Answer Session::ask(const Request &request, double seconds) {
  client().send(request);
  return await(request.requestId, seconds);
}

Answer Session::await(std::uint64_t requestId, double seconds) {
  const double end = ecore_time_get() + seconds;
  while (std::optional<Answer> answer = _state->take(std::max(0.0, end - ecore_time_get()))) {
    if (answer->response.requestId() == requestId) {
      return std::move(*answer);
    }
  }
  throw _state->late(Failure::NoAnswer, seconds);
}

Answer Session::next(double seconds) {
  std::optional<Answer> answer = _state->take(seconds);
  if (!answer) {
    throw _state->late(Failure::NoAnswer, seconds);
  }
  return std::move(*answer);
}

void Session::awaitEnd(double seconds) {
  _state->waitUntil([] { return false; }, seconds);

  if (!_state->end) {
    throw _state->late(Failure::NoAnswer, seconds);
  }
}

Client &Session::client() {
  return _state->client;
}

} // namespace norix::assistant
