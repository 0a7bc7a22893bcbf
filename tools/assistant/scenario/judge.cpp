// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/judge.h"

#include "assistant/scenario/difference.h"

#include <re2/re2.h>

#include <array>
#include <cstdio>

namespace norix::assistant::scenario {
namespace {

using Messages = std::vector<report::Message>;

constexpr std::size_t kLongestQuote = 500;
constexpr double kMilliseconds = 1000.0;

std::string millisecondsText(double seconds) {
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(), "%.1f ms", seconds * kMilliseconds);
  return text.data();
}

std::string quoted(const std::string &text) {
  return "'" + text.substr(0, kLongestQuote) + (text.size() > kLongestQuote ? "…'" : "'");
}

std::string textOf(const Json &value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void judgeText(const Expectation &expectation, const Observed &observed, const Variables &variables,
               Messages &messages) {
  if (expectation.text && variables.fill(*expectation.text) != observed.text) {
    messages.push_back({"the text is another one than expected (-)",
                        difference(variables.fill(*expectation.text), observed.text)});
  }
  for (const std::string &part : expectation.contains) {
    if (observed.text.find(variables.fill(part)) == std::string::npos) {
      messages.push_back({"the text does not contain " + quoted(variables.fill(part)) + ": "
                              + quoted(observed.text),
                          ""});
    }
  }
  for (const std::string &pattern : expectation.matches) {
    if (!re2::RE2::PartialMatch(observed.text, re2::RE2(pattern, re2::RE2::Quiet))) {
      messages.push_back(
          {"the text does not match " + quoted(pattern) + ": " + quoted(observed.text), ""});
    }
  }
}

void judgeMember(const std::string &pointer, const Json &expected, const nlohmann::json &answer,
                 Messages &messages) {
  const nlohmann::json::json_pointer place(pointer);
  if (!answer.contains(place)) {
    messages.push_back({"the answer has nothing at " + pointer, textOf(answer)});
  } else if (answer.at(place) != nlohmann::json(expected)) {
    messages.push_back({"another value than expected (-) at " + pointer,
                        difference(textOf(expected), textOf(answer.at(place)))});
  }
}

void judgeJson(const Expectation &expectation, const Observed &observed, const Variables &variables,
               Messages &messages) {
  if (expectation.json.empty()) {
    return;
  }
  const auto answer = nlohmann::json::parse(observed.text, nullptr, false);
  if (answer.is_discarded()) {
    messages.push_back({"the answer is not JSON: " + quoted(observed.text), ""});
    return;
  }
  for (const auto &[pointer, value] : expectation.json) {
    judgeMember(pointer, variables.fill(value), answer, messages);
  }
}

void judgeTime(const Expectation &expectation, const Observed &observed, Messages &messages) {
  const double seconds = observed.seconds();
  if (expectation.within && seconds > *expectation.within) {
    messages.push_back({"it took " + millisecondsText(seconds) + ", longer than the "
                            + millisecondsText(*expectation.within) + " allowed",
                        ""});
  }
  if (expectation.after && seconds < *expectation.after) {
    messages.push_back({"it took only " + millisecondsText(seconds) + ", shorter than the "
                            + millisecondsText(*expectation.after) + " expected",
                        ""});
  }
}

/// What a capture keeps of a text.
Json valueOf(const Capture &capture, const std::string &text) {
  if (!capture.pattern.empty()) {
    std::string group;
    if (!re2::RE2::PartialMatch(text, re2::RE2(capture.pattern, re2::RE2::Quiet), &group)) {
      throw std::runtime_error("it does not match " + quoted(capture.pattern));
    }
    return group;
  }
  if (capture.pointer.empty()) {
    return text;
  }
  const Json answer = Json::parse(text, nullptr, false);
  const Json::json_pointer place(capture.pointer);
  if (answer.is_discarded() || !answer.contains(place)) {
    throw std::runtime_error(answer.is_discarded() ? "it is not JSON"
                                                   : "it has nothing at " + capture.pointer);
  }
  return answer.at(place);
}

} // namespace

Messages judge(const Expectation &expectation, const Observed &observed,
               const Variables &variables) {
  Messages messages;
  if (observed.outcome != expectation.outcome) {
    messages.push_back({"expected '" + expectation.outcome + "', got '" + observed.outcome + "'"
                            + (observed.text.empty() ? "" : ": " + quoted(observed.text)),
                        ""});
    return messages;
  }
  judgeText(expectation, observed, variables, messages);
  judgeJson(expectation, observed, variables, messages);
  judgeTime(expectation, observed, messages);
  return messages;
}

Messages capture(const std::vector<Capture> &captures, const std::string &text,
                 Variables &variables) {
  Messages messages;
  for (const Capture &capture : captures) {
    try {
      variables.set(capture.name, valueOf(capture, text));
    } catch (const std::runtime_error &error) {
      messages.push_back({"'" + capture.name + "' cannot be captured from the answer "
                              + quoted(text) + ": " + error.what(),
                          ""});
    }
  }
  return messages;
}

} // namespace norix::assistant::scenario
