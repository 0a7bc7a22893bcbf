// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/names.h"

#include <cstddef>
#include <string_view>

namespace norix::assistant::mcp {
namespace {

constexpr std::size_t kLength = 40;
constexpr std::string_view kLetters =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

std::string plain(std::string text) {
  for (char &character : text) {
    if (kLetters.find(character) == std::string_view::npos) {
      character = '_';
    }
  }
  return text;
}

} // namespace

std::string Names::make(const std::string &appId, const std::string &action) {
  const std::string last = appId.substr(appId.rfind('.') + 1);
  const std::string name = plain(last + "_" + action).substr(0, kLength);
  std::string candidate = name;
  for (int number = 2; !_taken.insert(candidate).second; ++number) {
    const std::string suffix = "_" + std::to_string(number);
    candidate = name.substr(0, kLength - suffix.size()) + suffix;
  }
  return candidate;
}

} // namespace norix::assistant::mcp
