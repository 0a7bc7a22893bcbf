// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/results.h"

#include <array>
#include <cstdio>
#include <utility>

namespace norix::assistant::mcp {
namespace {

// The text as UTF-8, through the one place that knows how to repair it: the JSON writer.
std::string repaired(const std::string &text) {
  return Json::parse(toLine(text)).get<std::string>();
}

// Where the text may be cut at the latest, without halving a character.
std::size_t cutBefore(const std::string &text, std::size_t bound) {
  while (bound > 0 && (static_cast<unsigned char>(text[bound]) & 0xC0U) == 0x80U) {
    --bound;
  }
  return bound;
}

// A control character at the start of the text: how many bytes it has, 0 when it is none. C1
// characters (two bytes in UTF-8) begin escape sequences as ESC does.
std::size_t controlBytes(const std::string &text, std::size_t at) {
  const auto code = static_cast<unsigned char>(text[at]);
  if (code == '\n' || code == '\t') {
    return 0;
  }
  if (code < 0x20 || code == 0x7F) {
    return 1;
  }
  const bool c1 =
      code == 0xC2 && at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0;
  return c1 ? 2 : 0;
}

std::string escaped(const std::string &text) {
  std::string visible;
  visible.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::size_t control = controlBytes(text, at);
    if (control == 0) {
      visible += text[at];
      continue;
    }
    at += control - 1;
    std::array<char, 5> escape{};
    std::snprintf(escape.data(), escape.size(), "\\x%02x", static_cast<unsigned char>(text[at]));
    visible += escape.data();
  }
  return visible;
}

void escapeStrings(Json &value) {
  if (value.is_string()) {
    value = escaped(value.get<std::string>());
  } else if (value.is_structured()) {
    for (Json &item : value) {
      escapeStrings(item);
    }
  }
}

Json textResult(const std::string &text) {
  return {{"content", Json::array({{{"type", "text"}, {"text", text}}})}};
}

Json jsonOrNull(const std::string &text) {
  try {
    return parseJson(text);
  } catch (const RpcError &) {
    return nullptr;
  }
}

// The answer as the declared form, or a sentence that says why it is not.
Json structured(const Tool &tool, const std::string &answer) {
  Json value = jsonOrNull(answer);
  if (!value.is_object()) {
    return toolError("The application answered, but not with a JSON object as it declares. It "
                     "said: "
                     + presentable(answer));
  }
  if (const auto problem = tool.checkAnswer(value)) {
    return toolError("The application answered, but not in the form that it declares: " + *problem
                     + ". It said: " + presentable(answer));
  }
  Json result = textResult(presentable(answer));
  escapeStrings(value);
  result["structuredContent"] = std::move(value);
  return result;
}

} // namespace

Json toolError(const std::string &text) {
  Json result = textResult(text);
  result["isError"] = true;
  return result;
}

Json toolResult(const Tool &tool, const Outcome &outcome) {
  if (outcome.kind != Outcome::Kind::Answered) {
    return toolError(presentable(outcome.text));
  }
  if (!tool.checkAnswer) {
    return textResult(presentable(outcome.text));
  }
  if (outcome.text.size() > kAnswerBytes) {
    return toolError("The application's answer is too long to be passed on whole. It begins: "
                     + presentable(outcome.text));
  }
  return structured(tool, outcome.text);
}

Json resourceContents(const Resource &resource, const Outcome &outcome) {
  if (outcome.kind != Outcome::Kind::Answered) {
    throw RpcError(InternalError, presentable(outcome.text));
  }
  const bool json = Json::accept(outcome.text);
  return {{"contents", Json::array({{{"uri", resource.uri},
                                     {"mimeType", json ? "application/json" : "text/plain"},
                                     {"text", presentable(outcome.text)}}})}};
}

std::string presentable(const std::string &text) {
  if (text.size() <= kAnswerBytes) {
    return escaped(repaired(text));
  }
  const std::string kept = text.substr(0, cutBefore(text, kAnswerBytes));
  return escaped(repaired(kept)) + "\n[cut: the answer has " + std::to_string(text.size())
         + " bytes, of which these are the first " + std::to_string(kept.size()) + "]";
}

} // namespace norix::assistant::mcp
