// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/Consent.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>

namespace norix::assistant::mcp {
namespace {

// Questions nobody ever answers must not pile up.
constexpr std::size_t kOpenQuestions = 64;

// A call as a text that does not depend on the order in which a client writes the arguments.
std::string callOf(const Tool &tool, const Json &arguments) {
  return tool.name + nlohmann::json::parse(toLine(arguments)).dump();
}

std::string randomToken() {
  std::random_device random;
  std::array<char, 33> text{};
  std::snprintf(text.data(), text.size(), "%08x%08x%08x%08x", random(), random(), random(),
                random());
  return text.data();
}

} // namespace

Json consentForm(const Tool &tool, const Json &arguments) {
  const std::string with = arguments.empty() ? "" : " with " + toLine(arguments);
  const Json confirm = {{"type", "boolean"},
                        {"title", "Execute it"},
                        {"description", "Whether the application may execute this action now"}};
  return {{"message", "Execute \"" + tool.title + "\" (" + tool.actionId + " of " + tool.appId + ")"
                          + with + "?"},
          {"requestedSchema",
           {{"type", "object"},
            {"properties", {{"confirm", confirm}}},
            {"required", Json::array({"confirm"})}}}};
}

bool isConsent(const Json &answer) {
  if (!answer.is_object() || answer.value("action", Json()) != "accept") {
    return false;
  }
  const Json content = answer.value("content", Json::object());
  return content.is_object() && content.value("confirm", Json()) == true;
}

std::string Consent::issue(const Tool &tool, const Json &arguments) {
  if (_open.size() >= kOpenQuestions) {
    _open.pop_front();
  }
  _open.emplace_back(randomToken(), callOf(tool, arguments));
  return _open.back().first;
}

bool Consent::redeem(const std::string &token, const Tool &tool, const Json &arguments) {
  const auto found =
      std::find(_open.begin(), _open.end(), std::make_pair(token, callOf(tool, arguments)));
  if (found == _open.end()) {
    return false;
  }
  _open.erase(found);
  return true;
}

} // namespace norix::assistant::mcp
