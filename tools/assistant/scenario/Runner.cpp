// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Runner.h"

#include "assistant/client/Request.h"
#include "assistant/scenario/judge.h"

#include <algorithm>

namespace norix::assistant::scenario {
namespace {

using report::Outcome;
using Messages = std::vector<report::Message>;

constexpr double kPerSecond = 1e9;
// How long a log line or a finding may take to come: a finding takes up to a second.
constexpr double kTimeToTell = 2.0;
constexpr const char *kSkipped = "an earlier step failed";
constexpr const char *kUnwatched = "the application was not started by norix-assistant: nobody "
                                   "sees what it does wrong";
constexpr const char *kFindings = "findings";

double secondsSince(std::uint64_t begin) {
  return static_cast<double>(trace::monotonicNow() - begin) / kPerSecond;
}

std::string startName(const Scenario &scenario) {
  return scenario.application.running.empty() ? "start the application"
                                              : "find " + scenario.application.running;
}

std::string numbered(std::size_t number, const Step &step) {
  return std::to_string(number) + " " + step.name;
}

void append(Messages &messages, Messages more, const std::string &prefix = {}) {
  for (report::Message &message : more) {
    message.text = prefix + message.text;
    messages.push_back(std::move(message));
  }
}

} // namespace

Runner::Runner(const Scenario &scenario, const std::string &folder)
    : _scenario(scenario), _stage(scenario, folder), _conversation(_stage, scenario.timeout),
      _variables(scenario.variables) {
  _case.name = scenario.name;
  _case.file = scenario.file;
}

report::Case Runner::run() {
  const std::uint64_t begin = trace::monotonicNow();
  play(startName(_scenario), _scenario.application.line,
       [this](report::Step &step) { return start(step); });
  for (const Step &step : _scenario.steps) {
    play(numbered(_case.steps.size(), step), step.line,
         [this, &step](report::Step &reported) { return perform(step, reported); });
  }
  judgeFindings();
  distributeEvents();
  _case.seconds = secondsSince(begin);
  return std::move(_case);
}

void Runner::play(const std::string &name, int line,
                  const std::function<Messages(report::Step &)> &body) {
  report::Step step;
  step.name = name;
  step.line = line;
  _begins.push_back(trace::monotonicNow());
  _firstEvent = _stage.events().size();
  if (_hasFailed) {
    step.messages = {{kSkipped, ""}};
  } else {
    try {
      step.messages = body(step);
      step.outcome = step.messages.empty() ? Outcome::Passed : Outcome::Failed;
    } catch (const std::exception &error) {
      step.outcome = Outcome::Broken;
      step.messages = {{error.what(), ""}};
    }
    step.seconds = secondsSince(_begins.back());
  }
  _hasFailed = _hasFailed || isFailure(step.outcome);
  _case.steps.push_back(std::move(step));
}

Messages Runner::start(report::Step &step) {
  _stage.start(_scenario);
  const Application &application = _stage.application();
  step.output =
      application.id()
      + (application.process() > 0 ? ", process " + std::to_string(application.process()) : "");
  _case.properties.emplace_back("application", application.id());
  return {};
}

Messages Runner::perform(const Step &step, report::Step &reported) {
  struct Visitor {
    Runner &runner;
    report::Step &reported;
    Messages operator()(const Ask &ask) const { return runner.ask(ask, reported); }
    Messages operator()(const Send &send) const {
      runner._sent[send.id] = runner.send(send.call);
      return {};
    }
    Messages operator()(const Await &await) const { return runner.await(await, reported); }
    Messages operator()(const Burst &burst) const { return runner.burst(burst, reported); }
    Messages operator()(const Pause &pause) const {
      (void)runner._stage.waitUntil([] { return false; }, pause.seconds);
      return {};
    }
    Messages operator()(const Control &control) const { return runner.control(control, reported); }
  };
  return std::visit(Visitor{*this, reported}, step.action);
}

Messages Runner::ask(const Ask &ask, report::Step &reported) {
  const std::uint64_t begin = trace::monotonicNow();
  int attempts = 0;
  while (true) {
    ++attempts;
    reported.output.clear();
    Messages messages = settle(send(ask.call), ask.call.expectation, ask.call.captures, reported);
    if (!ask.retry) {
      return messages;
    }
    if (messages.empty() || secondsSince(begin) + ask.retry->every > ask.retry->within) {
      reported.properties.emplace_back("attempts", std::to_string(attempts));
      return messages;
    }
    (void)_stage.waitUntil([] { return false; }, ask.retry->every);
  }
}

Messages Runner::burst(const Burst &burst, report::Step &reported) {
  std::vector<std::size_t> numbers;
  for (const Call &call : burst.calls) {
    numbers.push_back(send(call));
  }
  Messages messages;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const Call &call = burst.calls[i];
    append(messages, settle(numbers[i], call.expectation, call.captures, reported),
           "request " + std::to_string(i + 1) + " of the burst: ");
  }
  return messages;
}

Messages Runner::await(const Await &await, report::Step &reported) {
  return settle(_sent.at(await.id), await.expectation, await.captures, reported);
}

std::size_t Runner::send(const Call &call) {
  Message message;
  message.sender = call.sender;
  message.action = call.action.empty() ? kStateActionId : _variables.fill(call.action);
  message.type = _variables.fill(call.type);
  if (call.paramsText) {
    message.params = _variables.fill(*call.paramsText);
  } else if (!call.action.empty()) {
    message.params =
        _variables.fill(call.params).dump(-1, ' ', false, Json::error_handler_t::replace);
  }
  for (const auto &[key, value] : call.keys) {
    message.keys.emplace_back(key, _variables.fill(value));
  }
  return _conversation.send(message);
}

// Waits for what comes of a request, and judges all of it.
Messages Runner::settle(std::size_t number, const Expectation &expectation,
                        const std::vector<Capture> &captures, report::Step &reported) {
  const Observed observed = _conversation.await(number);
  reported.output += observed.text + "\n";
  Messages messages = judge(expectation, observed, _variables);
  if (!messages.empty() && observed.outcome == "connection-lost") {
    append(messages, awaitEnd());
  }
  append(messages, awaitLog(expectation));
  append(messages, awaitFindings(expectation));
  if (messages.empty()) {
    append(messages, capture(captures, observed.text, _variables));
  }
  return messages;
}

bool Runner::hasArrived(const char *event, const char *member, const std::string &part) const {
  const auto &events = _stage.events();
  return std::any_of(events.begin() + static_cast<std::ptrdiff_t>(_firstEvent), events.end(),
                     [&](const trace::Event &arrived) {
                       return arrived.name == event
                              && arrived.text(member).find(part) != std::string::npos;
                     });
}

// How the application ended, if that is why the connection was lost.
Messages Runner::awaitEnd() {
  Application &application = _stage.application();
  const bool hasEnded =
      application.isLaunched()
      && _stage.waitUntil([&application] { return application.hasEnded(); }, kTimeToTell);
  return hasEnded ? Messages{{"the application " + application.howItEnded(), ""}} : Messages();
}

Messages Runner::awaitLog(const Expectation &expectation) {
  Messages messages;
  for (const std::string &expected : expectation.log) {
    const std::string part = _variables.fill(expected);
    if (!_stage.waitUntil([&] { return hasArrived("log", "text", part); }, kTimeToTell)) {
      messages.push_back({"the application logged no line with '" + part + "'", ""});
    }
  }
  return messages;
}

Messages Runner::awaitFindings(const Expectation &expectation) {
  Messages messages;
  for (const std::string &word : expectation.findings) {
    _expectedFindings.insert(word);
    if (!_stage.waitUntil([&] { return hasArrived("finding", "finding", word); }, kTimeToTell)) {
      messages.push_back({"the finding '" + word + "' did not come", ""});
    }
  }
  return messages;
}

// The last step of every report. It is judged when the application has told everything.
void Runner::judgeFindings() {
  const bool isWatched = _stage.application().isWatched();
  const std::string output = _stage.application().output();
  _begins.push_back(trace::monotonicNow());
  _stage.end();

  report::Step step;
  step.name = kFindings;
  step.messages = unexpectedFindings();
  step.outcome = !step.messages.empty() ? Outcome::Failed
                 : isWatched            ? Outcome::Passed
                                        : Outcome::Skipped;
  if (step.outcome == Outcome::Skipped) {
    step.messages = {{_hasFailed ? kSkipped : kUnwatched, ""}};
  }
  step.seconds = secondsSince(_begins.back());
  if (_hasFailed || !step.messages.empty()) {
    step.output = output;
  }
  _case.steps.push_back(std::move(step));
}

Messages Runner::unexpectedFindings() {
  const AllowedFindings &allowed = _scenario.findings;
  std::set<std::string> missing(allowed.words.begin(), allowed.words.end());
  Messages messages;
  std::uint64_t cause = 0;
  for (const trace::Event &event : _stage.events()) {
    if (event.name != "finding") {
      cause = event.name == "assistant" ? cause : event.time;
      continue;
    }
    const std::string word = event.text("finding");
    const auto expected = _expectedFindings.find(word);
    missing.erase(word);
    if (expected != _expectedFindings.end()) {
      _expectedFindings.erase(expected);
    } else if (!allowed.allowsAll
               && std::find(allowed.words.begin(), allowed.words.end(), word)
                      == allowed.words.end()) {
      messages.push_back(
          {"finding " + word + " in '" + stepAt(cause) + "'", event.text("sentence")});
    }
  }
  for (const std::string &word : _hasFailed ? std::set<std::string>() : missing) {
    messages.push_back({"the finding '" + word + "' did not come", ""});
  }
  return messages;
}

// The name of the step that something happened in.
std::string Runner::stepAt(std::uint64_t time) const {
  const auto after = std::upper_bound(_begins.begin(), _begins.end(), time);
  const auto index = static_cast<std::size_t>(after - _begins.begin());
  return index == 0                   ? _case.steps.front().name
         : index > _case.steps.size() ? kFindings
                                      : _case.steps[index - 1].name;
}

// Events belong to the step in which they happened, whenever they arrived; a finding to that of the
// event that it was drawn from.
void Runner::distributeEvents() {
  std::uint64_t cause = 0;
  for (const trace::Event &event : _stage.events()) {
    cause = event.name == "finding" ? cause : event.time;
    const auto after = std::upper_bound(_begins.begin(), _begins.end(), cause);
    const auto index = static_cast<std::size_t>(after - _begins.begin());
    _case.steps[index == 0 ? 0 : index - 1].events.push_back(event);
  }
  for (report::Step &step : _case.steps) {
    std::stable_sort(step.events.begin(), step.events.end(),
                     [](const trace::Event &a, const trace::Event &b) { return a.time < b.time; });
  }
}

report::Case notPlayed(const Scenario &scenario, Outcome outcome, const std::string &why) {
  report::Case unplayed;
  unplayed.name = scenario.name;
  unplayed.file = scenario.file;
  const auto add = [&unplayed](const std::string &name, int line, const std::string &message) {
    report::Step step;
    step.name = name;
    step.line = line;
    step.messages = {{message, ""}};
    unplayed.steps.push_back(std::move(step));
  };
  const bool isFailure = report::isFailure(outcome);
  add(startName(scenario), scenario.application.line, why);
  unplayed.steps.front().outcome = outcome;
  for (const Step &step : scenario.steps) {
    add(numbered(unplayed.steps.size(), step), step.line, isFailure ? kSkipped : why);
  }
  add(kFindings, 0, isFailure ? kSkipped : why);
  return unplayed;
}

} // namespace norix::assistant::scenario
