// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/shrink.h"

#include "assistant/actions/LocatedJson.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace norix::assistant::certify {
namespace {

using actions::Json;

std::vector<Json> smallerThan(const Json &value);

std::vector<std::string> shorterThan(const std::string &text) {
  std::vector<std::string> shorter;
  for (std::size_t length = text.size(); length > 0; length /= 2) {
    for (std::size_t at = 0; at < text.size(); at += length) {
      shorter.push_back(text.substr(0, at) + text.substr(std::min(text.size(), at + length)));
    }
  }
  return shorter;
}

std::vector<Json> smallerNumbers(const Json &value) {
  const double number = value.get<double>();
  if (number == 0.0) {
    return {};
  }
  std::vector<Json> smaller = {0};
  const double whole = std::trunc(number);
  constexpr double kExact = 9e15;
  const auto add = [&](double candidate) {
    if (std::fabs(candidate) < std::fabs(number) && std::fabs(candidate) < kExact) {
      smaller.emplace_back(static_cast<std::int64_t>(candidate));
    }
  };
  add(number < 0.0 ? -1.0 : 1.0);
  add(std::trunc(whole / 2.0));
  add(whole);
  add(whole - (number < 0.0 ? -1.0 : 1.0));
  return smaller;
}

// Without one of the parts, and with one of them smaller.
std::vector<Json> smallerContainers(const Json &value) {
  std::vector<Json> smaller;
  if (value.empty()) {
    return smaller;
  }
  smaller.push_back(value.is_array() ? Json::array() : Json::object());
  for (const auto &item : value.items()) {
    Json without = value;
    if (value.is_array()) {
      without.erase(std::stoul(item.key()));
    } else {
      without.erase(item.key());
    }
    smaller.push_back(std::move(without));
  }
  for (const auto &item : value.items()) {
    for (Json &part : smallerThan(item.value())) {
      Json with = value;
      (value.is_array() ? with[std::stoul(item.key())] : with[item.key()]) = std::move(part);
      smaller.push_back(std::move(with));
    }
  }
  return smaller;
}

std::vector<Json> smallerThan(const Json &value) {
  if (value.is_number()) {
    return smallerNumbers(value);
  }
  if (value.is_structured()) {
    return smallerContainers(value);
  }
  std::vector<Json> smaller;
  if (value.is_string()) {
    for (const std::string &text : shorterThan(value.get<std::string>())) {
      smaller.emplace_back(text);
    }
  }
  return smaller;
}

std::vector<std::string> candidatesFor(const std::string &text) {
  const Json value = Json::parse(text, nullptr, false);
  if (value.is_discarded()) {
    return shorterThan(text);
  }
  std::vector<std::string> candidates;
  for (const Json &smaller : smallerThan(value)) {
    candidates.push_back(smaller.dump(-1, ' ', false, Json::error_handler_t::replace));
  }
  return candidates;
}

} // namespace

std::string shrink(std::string text, const std::function<bool(const std::string &)> &fails,
                   int attempts) {
  bool isSmaller = true;
  while (isSmaller) {
    isSmaller = false;
    for (const std::string &candidate : candidatesFor(text)) {
      if (attempts-- <= 0) {
        return text;
      }
      if (fails(candidate)) {
        text = candidate;
        isSmaller = true;
        break;
      }
    }
  }
  return text;
}

} // namespace norix::assistant::certify
