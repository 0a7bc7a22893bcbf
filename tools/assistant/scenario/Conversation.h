// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_CONVERSATION_H
#define NORIX_ASSISTANT_SCENARIO_CONVERSATION_H

#include "assistant/scenario/Stage.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::scenario {

/// What came of a request, or of a sender's wish to connect.
struct Observed {
  /// A word of kOutcomeWords.
  std::string outcome;
  /// The answer; the message of a failure; why there is neither.
  std::string text;
  /// When it was sent, and when it had come to this: CLOCK_MONOTONIC in nanoseconds.
  std::uint64_t begin = 0;
  std::uint64_t end = 0;

  double seconds() const;
};

/// A request with everything filled in.
struct Message {
  std::string sender;
  std::string action;
  std::string type;
  std::string params;
  std::vector<std::pair<std::string, std::string>> keys;
};

/// What the senders of a scenario and the application say to each other. Finds out what comes of
/// each request, also when the answer to a newer one shows that it will never be answered.
class Conversation {
public:
  /// @param seconds  how long anything may take that the application has to do
  Conversation(Stage &stage, double seconds);

  /// Sends a request; the sender is started, connected and registered if it has to be.
  /// @return its number, for await()
  std::size_t send(const Message &message);
  /// Waits for what comes of a request.
  Observed await(std::size_t number);

  /// "connect", "register", "unregister" or "disconnect".
  Observed execute(const std::string &sender, const std::string &what);
  /// Has the application read all that a sender has sent, before the sender goes away.
  void deliver(const std::string &sender);
  /// The sender's process was killed: what it has asked for is lost.
  void forget(const std::string &sender);
  /// Waits until every sender knows that the application has gone away.
  void awaitDisconnection();

private:
  struct Exchange {
    std::uint64_t id = 0;
    std::string sender;
    Observed observed;
    bool isDone = false;
    // Whether the application has answered it: then every older one is done with.
    bool isAnswered = false;
  };

  /// What is known about a sender's process.
  struct Line {
    bool isConnected = false;
    bool isRegistered = false;
    // What it says about the last command.
    std::optional<Frames::Json> done;
  };

  void hear(Sender &sender, const Frames::Json &message);
  void hearAnswer(const Frames::Json &message);
  void loseAll(const std::string &sender, const std::string &why);
  std::optional<Observed> prepare(const std::string &sender);
  void settleOthers(const std::string &sender);
  void settle(const std::string &sender, double seconds);
  bool isSuperseded(std::size_t number) const;
  void transmit(Exchange &exchange, const Message &message);
  void finish(Exchange &exchange, const std::string &outcome, const std::string &text,
              std::uint64_t time);
  Observed command(const std::string &sender, Frames::Json command, double seconds);

  Stage &_stage;
  double _seconds;
  std::map<std::string, Line> _lines;
  std::vector<Exchange> _exchanges;
  std::uint64_t _serial = 0;
};

} // namespace norix::assistant::scenario

#endif
