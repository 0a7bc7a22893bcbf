// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/judge.h"

#include "assistant/actions/parseShallow.h"
#include "assistant/scenario/difference.h"
#include "assistant/trace/utf8.h"

#include <re2/re2.h>

#include <array>
#include <cstdio>
#include <string_view>

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

std::string shortened(const std::string &text) {
  const std::string_view beginning = trace::beginningOf(text, kLongestQuote);
  return std::string(beginning) + (beginning.size() < text.size() ? "…" : "");
}

std::string quoted(const std::string &text) {
  return "'" + shortened(text) + "'";
}

// An answer is the application's text, everything else is a sentence of this program.
std::string described(const Observed &observed) {
  if (observed.text.empty()) {
    return "'" + observed.outcome + "'";
  }
  return "'" + observed.outcome + "': "
         + (observed.outcome == "answered" ? quoted(observed.text) : shortened(observed.text));
}

// Null when there is nothing.
template <typename Value>
const Value *valueAt(const Value &answer, const std::string &pointer) {
  try {
    return &answer.at(typename Value::json_pointer(pointer));
  } catch (const typename Value::exception &) {
    return nullptr;
  }
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
  const nlohmann::json *const value = valueAt(answer, pointer);
  if (value == nullptr) {
    messages.push_back({"the answer has nothing at " + pointer, textOf(answer)});
  } else if (*value != nlohmann::json(expected)) {
    messages.push_back({"another value than expected (-) at " + pointer,
                        difference(textOf(expected), textOf(*value))});
  }
}

void judgeJson(const Expectation &expectation, const Observed &observed, const Variables &variables,
               Messages &messages) {
  if (expectation.json.empty()) {
    return;
  }
  const auto answer = actions::parseShallow<nlohmann::json>(observed.text);
  if (answer.is_discarded()) {
    messages.push_back({"the answer is not JSON, or too deep: " + quoted(observed.text), ""});
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
  const Json answer = actions::parseShallow<Json>(text);
  const Json *const value = answer.is_discarded() ? nullptr : valueAt(answer, capture.pointer);
  if (value == nullptr) {
    throw std::runtime_error(answer.is_discarded() ? "it is not JSON, or too deep"
                                                   : "it has nothing at " + capture.pointer);
  }
  return *value;
}

} // namespace

Messages judge(const Expectation &expectation, const Observed &observed,
               const Variables &variables) {
  Messages messages;
  if (observed.outcome != expectation.outcome) {
    messages.push_back({"expected '" + expectation.outcome + "', got " + described(observed), ""});
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
