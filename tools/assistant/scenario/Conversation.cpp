// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Conversation.h"

#include "assistant/client/Request.h"

#include <algorithm>

namespace norix::assistant::scenario {
namespace {

using Json = Frames::Json;

constexpr const char *kAnswered = "answered";
// How long an application may take to read what a sender has sent before it goes away, and a sender
// to notice the end of the application. Only one that does not run its loop takes as long.
constexpr double kSettling = 2.0;

std::string describe(const std::string &action) {
  return action == kStateActionId ? "the state" : action;
}

std::string timeText(double seconds) {
  std::string text = std::to_string(seconds);
  text.erase(text.find_last_not_of('0') + 1);
  text.erase(text.find_last_not_of('.') + 1);
  return text + " s";
}

} // namespace

double Observed::seconds() const {
  return end > begin ? static_cast<double>(end - begin) / 1e9 : 0.0;
}

Conversation::Conversation(Stage &stage, double seconds) : _stage(stage), _seconds(seconds) {
  _stage.onMessage([this](Sender &sender, const Json &message) { hear(sender, message); });
}

void Conversation::hear(Sender &sender, const Json &message) {
  Line &line = _lines[sender.setup().name];
  if (message.contains("done")) {
    // What comes after its time is of no interest any more.
    if (message.at("done") == _serial) {
      line.done = message;
    }
  } else if (message.contains("answered")) {
    hearAnswer(message);
  } else if (message.contains("ended")) {
    line = {};
    _stage.note({{"says", message.at("ended").get<std::string>()}}, message.at("t"));
    loseAll(sender.setup().name, message.at("ended"));
  } else if (message.contains("malformed")) {
    _stage.note({{"says", message.at("malformed").get<std::string>()}}, message.at("t"));
    for (Exchange &exchange : _exchanges) {
      if (exchange.sender == sender.setup().name) {
        finish(exchange, "malformed", message.at("malformed"), message.at("t"));
      }
    }
  }
}

void Conversation::hearAnswer(const Json &message) {
  const auto id = message.at("answered").get<std::uint64_t>();
  for (Exchange &exchange : _exchanges) {
    if (exchange.id == id && !exchange.isDone) {
      exchange.isAnswered = true;
      finish(exchange, message.at("outcome"), message.at("text"), message.at("t"));
      _stage.note({{"says", exchange.sender + " received the answer: " + exchange.observed.text},
                   {"step", "answered"},
                   {"requestId", std::to_string(id)}},
                  exchange.observed.end);
    }
  }
}

void Conversation::finish(Exchange &exchange, const std::string &outcome, const std::string &text,
                          std::uint64_t time) {
  if (!exchange.isDone) {
    exchange.isDone = true;
    exchange.observed.outcome = outcome;
    exchange.observed.text = text;
    exchange.observed.end = time;
  }
}

void Conversation::loseAll(const std::string &sender, const std::string &why) {
  for (Exchange &exchange : _exchanges) {
    if (exchange.sender == sender) {
      finish(exchange, "connection-lost", why, trace::monotonicNow());
    }
  }
}

void Conversation::forget(const std::string &sender) {
  _lines[sender] = {};
  loseAll(sender, "the sender was killed");
}

void Conversation::awaitDisconnection() {
  (void)_stage.waitUntil(
      [this] {
        return std::none_of(_stage.senders().begin(), _stage.senders().end(),
                            [this](const Sender &sender) {
                              return !sender.isStopped() && _lines[sender.setup().name].isConnected;
                            });
      },
      kSettling);
}

std::size_t Conversation::send(const Message &message) {
  const std::size_t number = _exchanges.size();
  _exchanges.emplace_back();
  Exchange &exchange = _exchanges.back();
  exchange.id = nextRequestId();
  exchange.sender = message.sender;
  exchange.observed.begin = trace::monotonicNow();
  if (const std::optional<Observed> failed = prepare(message.sender)) {
    finish(exchange, failed->outcome, failed->text, failed->end);
  } else {
    settleOthers(message.sender);
    transmit(exchange, message);
  }
  return number;
}

// Connects the sender, and registers it for answers. Nothing, or why that failed.
std::optional<Observed> Conversation::prepare(const std::string &sender) {
  std::vector<std::string> steps;
  const Line &line = _lines[sender];
  if (!line.isConnected) {
    steps.emplace_back("connect");
    if (_stage.sender(sender).setup().registers) {
      steps.emplace_back("register");
    }
  }
  for (const std::string &step : steps) {
    Observed observed = execute(sender, step);
    if (observed.outcome != kAnswered) {
      return observed;
    }
  }
  return std::nullopt;
}

void Conversation::transmit(Exchange &exchange, const Message &message) {
  Json keys = Json::object();
  for (const auto &[key, value] : message.keys) {
    keys[key] = value;
  }
  const Observed sent = command(message.sender,
                                {{"do", "send"},
                                 {"id", exchange.id},
                                 {"action", message.action},
                                 {"type", message.type},
                                 {"params", message.params},
                                 {"keys", std::move(keys)}},
                                _seconds);
  if (sent.outcome != kAnswered) {
    finish(exchange, sent.outcome, sent.text, sent.end);
    return;
  }
  exchange.observed.begin = sent.begin;
  _stage.note({{"says", message.sender + " sent request " + std::to_string(exchange.id) + " for "
                            + describe(message.action)},
               {"step", "sent"},
               {"requestId", std::to_string(exchange.id)}},
              sent.begin);
}

Observed Conversation::execute(const std::string &sender, const std::string &what) {
  Line &line = _lines[sender];
  Observed observed = command(sender, {{"do", what}}, _seconds);
  const bool isDone = observed.outcome == kAnswered;
  _stage.note({{"says", sender + ": " + what + (isDone ? "" : ": " + observed.text)}},
              observed.end);
  if (what == "connect" || what == "disconnect") {
    line.isConnected = isDone && what == "connect";
    line.isRegistered = false;
  } else if (isDone) {
    line.isRegistered = what == "register";
  }
  return observed;
}

// Has a sender do something, and waits until it is done.
Observed Conversation::command(const std::string &name, Json command, double seconds) {
  Sender &sender = _stage.sender(name);
  if (sender.isStopped()) {
    throw std::runtime_error("the sender '" + name
                             + "' is stopped and cannot do anything; let it "
                               "continue first");
  }
  sender.start();
  Line &line = _lines[name];
  line.done.reset();
  const std::string what = command.at("do").get<std::string>();
  command["serial"] = ++_serial;
  Observed observed;
  observed.begin = trace::monotonicNow();
  (void)sender.send(command);
  if (_stage.waitUntil([&line] { return line.done.has_value(); }, seconds)) {
    observed.end = line.done->at("t").get<std::uint64_t>();
    observed.outcome = line.done->value("outcome", kAnswered);
    observed.text = line.done->value("says", std::string());
  } else {
    observed.end = trace::monotonicNow();
    observed.outcome = what == "connect" ? "busy" : "no-answer";
    observed.text = "'" + _stage.application().id() + "' did not react within " + timeText(seconds);
  }
  return observed;
}

// A request of another sender is to arrive after those that are under way: the library holds one.
void Conversation::settleOthers(const std::string &sender) {
  for (const Exchange &exchange : _exchanges) {
    if (!exchange.isDone && exchange.sender != sender) {
      settle(exchange.sender, _seconds);
    }
  }
}

// Otherwise a later request of another sender might arrive before it.
void Conversation::deliver(const std::string &sender) {
  const bool isWaiting =
      std::any_of(_exchanges.begin(), _exchanges.end(), [&sender](const Exchange &exchange) {
        return !exchange.isDone && exchange.sender == sender;
      });
  if (isWaiting) {
    settle(sender, std::min(_seconds, kSettling));
  }
}

// Has the application read all that the sender has sent, and takes what it has answered by then.
void Conversation::settle(const std::string &name, double seconds) {
  const Line &line = _lines[name];
  if (line.isRegistered && !_stage.sender(name).isStopped() && !_stage.application().isStopped()) {
    (void)command(name, {{"do", "settle"}}, seconds);
  }
}

bool Conversation::isSuperseded(std::size_t number) const {
  return std::any_of(_exchanges.begin() + static_cast<std::ptrdiff_t>(number) + 1, _exchanges.end(),
                     [](const Exchange &newer) { return newer.isAnswered; });
}

Observed Conversation::await(std::size_t number) {
  const auto isDone = [this, number] { return _exchanges[number].isDone; };
  (void)_stage.waitUntil([&] { return isDone() || isSuperseded(number); }, _seconds);
  if (!isDone() && isSuperseded(number)) {
    settle(_exchanges[number].sender, _seconds);
    finish(_exchanges[number], "superseded", "a newer request took the place of this one",
           trace::monotonicNow());
  }
  finish(_exchanges[number], "no-answer", "no answer within " + timeText(_seconds),
         trace::monotonicNow());
  return _exchanges[number].observed;
}

} // namespace norix::assistant::scenario
