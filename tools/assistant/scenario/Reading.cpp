// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Reading.h"

#include "assistant/actions/nearest.h"
#include "assistant/scenario/Variables.h"

#include <re2/re2.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace norix::assistant::scenario {
namespace {

// Beyond a day somebody has confused the unit.
constexpr double kLongest = 86400.0;
// The shortest time to give up after.
constexpr double kShortest = 0.001;

std::string listed(const std::vector<std::string> &words) {
  constexpr std::size_t kMost = 40;
  std::string text;
  for (std::size_t i = 0; i < std::min(words.size(), kMost); ++i) {
    text += (text.empty() ? "" : ", ") + words[i];
  }
  return text + (words.size() > kMost ? ", …" : "");
}

// A number in JSON that no double holds. It would be sent as a text.
bool isOutOfRange(const std::string &text) {
  const bool isNumber = !text.empty() && (text[0] == '-' || (text[0] >= '0' && text[0] <= '9'));
  double number = 0.0;
  const char *const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  return isNumber && rest == end && error == std::errc::result_out_of_range;
}

struct Unit {
  const char *name;
  double seconds;
};

constexpr Unit kUnits[] = {{"", 1.0}, {"s", 1.0}, {"ms", 0.001}, {"min", 60.0}};

// The number and the unit of "200 ms"; less than 0 for anything else.
double secondsIn(const std::string &text) {
  double number = 0.0;
  const char *const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || !std::isfinite(number)) {
    return -1.0;
  }
  const char *const unit = std::find_if(rest, end, [](char c) { return c != ' '; });
  for (const Unit &known : kUnits) {
    if (std::string(unit, end) == known.name) {
      return number * known.seconds;
    }
  }
  return -1.0;
}

} // namespace

void Reading::fail(const YamlNode &node, const std::string &text) const {
  throw FileError(_file, node.position, text);
}

void Reading::expected(const YamlNode &node, const std::string &what) const {
  fail(node, "expected " + what + ", got " + node.description());
}

std::string Reading::plainText(const YamlNode &node, const std::string &what) const {
  if (node.kind != YamlNode::Kind::Scalar) {
    expected(node, what);
  }
  return node.text;
}

std::string Reading::text(const YamlNode &node, const std::string &what) const {
  std::string text = plainText(node, what);
  checkNames(node);
  if (text.find('\0') != std::string::npos) {
    fail(node, "a text with a NUL character: what follows it would not be sent; take it out");
  }
  return text;
}

std::vector<std::string> Reading::texts(const YamlNode &node, const std::string &what) const {
  if (node.kind == YamlNode::Kind::Scalar) {
    return {text(node, what)};
  }
  if (node.kind != YamlNode::Kind::Sequence) {
    expected(node, what + ", or a list of such");
  }
  std::vector<std::string> texts;
  for (const YamlNode &element : node.elements) {
    texts.push_back(text(element, what));
  }
  return texts;
}

Json Reading::value(const YamlNode &node) const {
  checkNames(node);
  checkNumbers(node);
  return toJson(node);
}

double Reading::seconds(const YamlNode &node) const {
  const double seconds = node.kind == YamlNode::Kind::Scalar ? secondsIn(node.text) : -1.0;
  if (seconds < 0.0 || seconds > kLongest) {
    expected(node, "a time of at most a day: 200 ms, 1.5 s, 2 min, or a number of seconds");
  }
  return seconds;
}

double Reading::timeout(const YamlNode &node) const {
  const double time = seconds(node);
  if (time < kShortest) {
    expected(node, "a time of at least 1 ms");
  }
  return time;
}

bool Reading::boolean(const YamlNode &node) const {
  if (!node.isPlain || (node.text != "true" && node.text != "false")) {
    expected(node, "true or false");
  }
  return node.text == "true";
}

std::string Reading::word(const YamlNode &node, const std::vector<std::string> &words) const {
  std::string text = plainText(node, "one of: " + listed(words));
  if (std::find(words.begin(), words.end(), text) == words.end()) {
    fail(node, "expected one of: " + listed(words) + "; got " + shown(text)
                   + actions::suggestion(text, words));
  }
  return text;
}

std::string Reading::newVariable(const YamlNode &node) {
  if (!isName(node.text)) {
    expected(node, "a name of letters, digits, '-', '_' and '.'");
  }
  _variables.insert(node.text);
  return node.text;
}

std::string Reading::pattern(const YamlNode &node, int groups) const {
  std::string text = plainText(node, "a regular expression");
  const re2::RE2 expression(text, re2::RE2::Quiet);
  if (!expression.ok()) {
    fail(node, "not a regular expression of RE2: " + expression.error());
  }
  if (expression.NumberOfCapturingGroups() < groups) {
    expected(node, "a regular expression with a group in parentheses");
  }
  return text;
}

std::string Reading::pointer(const YamlNode &node) const {
  std::string text = plainText(node, "a JSON pointer");
  try {
    (void)Json::json_pointer(text);
  } catch (const Json::exception &) {
    expected(node, "a JSON pointer, like /tracks/0/title");
  }
  return text;
}

void Reading::failUnknownName(const YamlNode &node, const std::string &name) const {
  fail(node, "nothing is called " + shown(name) + " here"
                 + actions::suggestion(name, {_variables.begin(), _variables.end()})
                 + "; capture it in an earlier step, or give it a value with --set NAME=VALUE; "
                   "write $${ for ${ itself");
}

void Reading::checkNames(const YamlNode &node) const {
  for (const std::string &name : namesIn(node.text)) {
    if (_variables.count(name) == 0) {
      failUnknownName(node, name);
    }
  }
  for (const YamlNode &element : node.elements) {
    checkNames(element);
  }
  for (const YamlMember &member : node.members) {
    checkNames(member.value);
  }
}

void Reading::checkNumbers(const YamlNode &node) const {
  if (node.isPlain && isOutOfRange(node.text)) {
    fail(node, "the number " + shown(node.text) + " is out of range; in quotes it is a text");
  }
  for (const YamlNode &element : node.elements) {
    checkNumbers(element);
  }
  for (const YamlMember &member : node.members) {
    checkNumbers(member.value);
  }
}

void refuseUnknown(const Reading &reading, const YamlNode &map,
                   const std::vector<std::string> &known) {
  for (const YamlMember &member : map.members) {
    const std::string &key = member.key.text;
    if (std::find(known.begin(), known.end(), key) == known.end()) {
      reading.fail(member.key, shown(key) + " is not known here" + actions::suggestion(key, known)
                                   + "; expected one of: " + listed(known));
    }
  }
}

const YamlNode *find(const YamlNode &map, const std::string &key) {
  for (const YamlMember &member : map.members) {
    if (member.key.text == key) {
      return &member.value;
    }
  }
  return nullptr;
}

} // namespace norix::assistant::scenario
