// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Generator.h"

#include "assistant/actions/check.h"
#include "assistant/certify/simplest.h"

#include <iterator>
#include <limits>
#include <utility>
#include <vector>

namespace norix::assistant::certify {
namespace {

using actions::Json;

constexpr std::size_t kLong = 5000;

const std::vector<std::string> &texts() {
  static const std::vector<std::string> kTexts = {"",
                                                  " ",
                                                  "a",
                                                  "0",
                                                  "null",
                                                  "Rain on Tin",
                                                  "\"quoted\" \\ and/or 'not'",
                                                  "two\nlines\tand a tab",
                                                  "%s%n%d",
                                                  "../../etc/passwd",
                                                  "Gr\u00fc\u00dfe \U0001f3b5",
                                                  "\u202eright to left",
                                                  std::string("a\0b", 3),
                                                  "\x7f\x1b[31m"};
  return kTexts;
}

const std::vector<double> &numbers() {
  static const std::vector<double> kNumbers = {
      0, 1, -1, 2, 7, 10, 99, 100, 101, 255, 256, 1000, 32768, 0.5, -0.5, 1e9, -1e9, 1e308, -1e308};
  return kNumbers;
}

Json integerOf(double number) {
  constexpr double kLimit = 9e18;
  return number > -kLimit && number < kLimit ? Json(static_cast<std::int64_t>(number))
                                             : Json(number);
}

} // namespace

// Not by the standard's distributions, which differ between libraries.
std::size_t Generator::below(std::size_t count) {
  return static_cast<std::size_t>(_random() % count);
}

std::string Generator::params(const Json &form) {
  constexpr std::size_t kKinds = 10;
  constexpr std::size_t kValid = 3;
  constexpr std::size_t kNearly = 8;
  const std::size_t kind = below(kKinds);
  if (kind == kKinds - 1) {
    return odd().dump(-1, ' ', false, Json::error_handler_t::replace);
  }
  Json object = validObject(form);
  if (kind >= kValid && kind < kNearly) {
    spoil(object, form);
  }
  std::string text = object.dump(-1, ' ', false, Json::error_handler_t::replace);
  return kind == kNearly ? spoiled(std::move(text)) : text;
}

Json Generator::valid(const Json &form) {
  if (form.contains("const")) {
    return form["const"];
  }
  if (form.contains("enum")) {
    return form["enum"][below(form["enum"].size())];
  }
  const std::string type = form.value("type", "object");
  Json value;
  if (type == "object") {
    value = validObject(form);
  } else if (type == "array") {
    value = validArray(form);
  } else if (type == "string") {
    value = validText(form);
  } else if (type == "boolean") {
    value = happens(2);
  } else {
    value = validNumber(form);
  }
  return value;
}

Json Generator::validObject(const Json &form) {
  Json object = simplest(form);
  const Json properties = form.value("properties", Json::object());
  for (const auto &[name, member] : properties.items()) {
    if (object.contains(name) || happens(2)) {
      object[name] = valid(member);
    }
  }
  return object;
}

Json Generator::validArray(const Json &form) {
  constexpr std::size_t kMost = 4;
  Json array = simplest(form);
  for (std::size_t count = below(kMost); count > 0 && form.contains("items"); --count) {
    array.push_back(valid(form["items"]));
  }
  return array;
}

Json Generator::validText(const Json &form) {
  Json text = texts()[below(texts().size())];
  return actions::check(form, text).empty() ? text : simplest(form);
}

// The bounds are where mistakes are.
Json Generator::validNumber(const Json &form) {
  std::vector<double> candidates = numbers();
  for (const char *const bound : {"minimum", "maximum"}) {
    if (form.contains(bound)) {
      candidates.insert(candidates.end(), candidates.size() / 2, form[bound].get<double>());
    }
  }
  const double number = candidates[below(candidates.size())];
  Json value = form.value("type", "") == "integer" ? integerOf(number) : Json(number);
  return actions::check(form, value).empty() ? value : simplest(form);
}

Json Generator::odd() {
  constexpr std::size_t kKinds = 4;
  static const std::vector<Json> kValues = {nullptr,
                                            true,
                                            false,
                                            Json::array(),
                                            Json::object(),
                                            Json::array({Json::array()}),
                                            Json::object({{"a", nullptr}}),
                                            std::numeric_limits<std::int64_t>::min(),
                                            std::numeric_limits<std::int64_t>::max(),
                                            std::numeric_limits<std::uint64_t>::max(),
                                            std::string(kLong, 'x')};
  switch (below(kKinds)) {
  case 0:
    return texts()[below(texts().size())];
  case 1:
    return integerOf(numbers()[below(numbers().size())]);
  case 2:
    return numbers()[below(numbers().size())];
  default:
    return kValues[below(kValues.size())];
  }
}

void Generator::spoil(Json &object, const Json &form) {
  const Json properties = form.value("properties", Json::object());
  std::vector<std::string> names = {"norixUnknown", ""};
  for (const auto &member : properties.items()) {
    names.insert(names.end(), 4, member.key());
  }
  do {
    const std::string name = names[below(names.size())];
    if (object.contains(name) && happens(4)) {
      object.erase(name);
    } else {
      object[name] = odd();
    }
  } while (happens(3));
}

std::string Generator::spoiled(std::string text) {
  const std::size_t at = below(text.size());
  switch (below(4)) {
  case 0:
    return text.substr(0, at);
  case 1:
    return text.erase(at, 1);
  case 2:
    // NUL ends a text in C: it cannot be sent.
    text[at] = static_cast<char>(1 + below(255));
    return text;
  default:
    return text.insert(at, text.substr(at));
  }
}

} // namespace norix::assistant::certify
