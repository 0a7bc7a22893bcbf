// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_SCENARIO_H
#define NORIX_ASSISTANT_SCENARIO_SCENARIO_H

#include <nlohmann/json.hpp>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace norix::assistant::scenario {

/// JSON whose members keep their order. Texts in it may have ${names} to fill in.
using Json = nlohmann::ordered_json;

/// The application that a scenario talks to. Times are in seconds.
struct ApplicationSetup {
  int line = 0;
  /// The folder of the one to start; empty when one that runs is used.
  std::string folder;
  /// The id of one that runs.
  std::string running;
  std::vector<std::string> arguments;
  std::map<std::string, std::string> environment;
  /// Who may send, one id each; without it, the list of the device counts.
  std::optional<std::vector<std::string>> allowList;
  /// How long the library waits for an answer, instead of 30 seconds.
  std::optional<double> completionTimeout;
};

/// An assistant, or several: each is a process of its own.
struct SenderSetup {
  /// What steps call it.
  std::string name;
  /// As whom it sends.
  std::string appId;
  /// Whether it registers for answers when it connects; otherwise a step has to say `register`.
  bool registers = true;
};

/// What has to come of a request.
struct Expectation {
  /// A word of the outcomes of norix-assistant: "answered".
  std::string outcome = "answered";
  /// What the answer has to be; in a failure, its message.
  std::optional<std::string> text;
  std::vector<std::string> contains;
  /// Regular expressions of RE2, to be found anywhere.
  std::vector<std::string> matches;
  /// JSON pointers into the answer, and the values that have to stand there.
  std::vector<std::pair<std::string, Json>> json;
  /// The longest and the shortest time from the request to the answer.
  std::optional<double> within;
  std::optional<double> after;
  /// Lines that the application has to log from the step's begin on: texts that they contain.
  std::vector<std::string> log;
  /// Mistakes that the application has to make in this step: words of findings.
  std::vector<std::string> findings;
};

/// A value of an answer to be used as ${name} later. One of the two, or neither for the whole text.
struct Capture {
  std::string name;
  std::string pointer;
  /// A regular expression of RE2 with one group.
  std::string pattern;
};

/// One request, and what has to come of it.
struct Call {
  int line = 0;
  std::string sender;
  /// Empty for the state.
  std::string action;
  std::string type;
  /// The parameters, as JSON or as a text to be sent as it is.
  Json params = Json::object();
  std::optional<std::string> paramsText;
  /// Further texts of the bundle.
  std::vector<std::pair<std::string, std::string>> keys;
  Expectation expectation;
  std::vector<Capture> captures;
};

/// Asking again until what is expected comes.
struct Retry {
  double every = 0.1;
  double within = 0.0;
};

// What a step does.

/// One request; the step lasts until it is answered, or only until it is sent.
struct Ask {
  Call call;
  std::optional<Retry> retry;
};

/// A request whose answer a later step awaits.
struct Send {
  std::string id;
  Call call;
};

/// Waits for what an earlier step has sent.
struct Await {
  std::string id;
  Expectation expectation;
  std::vector<Capture> captures;
};

/// Requests that are sent one right after the other.
struct Burst {
  std::vector<Call> calls;
};

struct Pause {
  double seconds = 0.0;
};

/// Something that happens to the application, or to a sender.
struct Control {
  enum class What { Kill, Stop, Continue, Restart, Connect, Register, Unregister, Disconnect };
  What what = What::Kill;
  /// "application", or the name of a sender.
  std::string target;
  Expectation expectation;
};

struct Step {
  int line = 0;
  std::string name;
  std::variant<Ask, Send, Await, Burst, Pause, Control> action;
};

/// Findings that may come anywhere: all, or those with these words.
struct AllowedFindings {
  bool allowsAll = false;
  std::vector<std::string> words;
};

/// A test: an application, and what is done to it step by step.
struct Scenario {
  std::string file;
  std::string name;
  ApplicationSetup application;
  std::vector<SenderSetup> senders;
  std::map<std::string, Json> variables;
  /// How long to wait for an answer at the most.
  double timeout = 0.0;
  AllowedFindings findings;
  std::vector<Step> steps;
};

} // namespace norix::assistant::scenario

#endif
