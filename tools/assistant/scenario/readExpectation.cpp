// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/outcomes.h"
#include "assistant/scenario/read.h"

namespace norix::assistant::scenario {
namespace {

void readJson(Reading &reading, const YamlNode &node, Expectation &expectation) {
  if (node.kind != YamlNode::Kind::Map) {
    reading.expected(node, "a map from JSON pointers to values, like {/volume: 40}");
  }
  for (const YamlMember &member : node.members) {
    expectation.json.emplace_back(reading.pointer(member.key), reading.value(member.value));
  }
}

// Without ${names}: '$' and '{' mean something else there.
void readMatches(Reading &reading, const YamlNode &node, Expectation &expectation) {
  if (node.kind != YamlNode::Kind::Sequence) {
    expectation.matches = {reading.pattern(node, 0)};
  }
  for (const YamlNode &element : node.elements) {
    expectation.matches.push_back(reading.pattern(element, 0));
  }
}

void readFindings(Reading &reading, const YamlNode &node, Expectation &expectation) {
  // "none" is what is expected anyway.
  if (node.kind != YamlNode::Kind::Scalar || node.text != "none") {
    expectation.findings = reading.texts(node, "none, or the word of a finding");
  }
}

const std::vector<Field<Expectation>> kExpectationFields = {
    {"outcome",
     [](Reading &reading, const YamlNode &node, Expectation &expectation) {
       expectation.outcome = reading.word(node, kOutcomeWords);
     }},
    {"text",
     [](Reading &reading, const YamlNode &node, Expectation &expectation) {
       expectation.text = reading.text(node, "the text of the answer");
     }},
    {"contains",
     [](Reading &reading, const YamlNode &node, Expectation &expectation) {
       expectation.contains = reading.texts(node, "a part of the answer");
     }},
    {"matches", readMatches},
    {"json", readJson},
    {"within", [](Reading &reading, const YamlNode &node,
                  Expectation &expectation) { expectation.within = reading.seconds(node); }},
    {"after", [](Reading &reading, const YamlNode &node,
                 Expectation &expectation) { expectation.after = reading.seconds(node); }},
    {"log",
     [](Reading &reading, const YamlNode &node, Expectation &expectation) {
       expectation.log = reading.texts(node, "a part of a line that the application logs");
     }},
    {"findings", readFindings}};

const std::vector<Field<Capture>> kCaptureFields = {
    {"matches", [](Reading &reading, const YamlNode &node, Capture &capture) {
       capture.pattern = reading.pattern(node, 1);
     }}};

constexpr const char *kCapture =
    "what to keep: a JSON pointer, 'text' for the whole answer, or {matches: EXPRESSION}";

Capture readCapture(Reading &reading, const YamlMember &member) {
  Capture capture;
  if (member.value.kind == YamlNode::Kind::Map) {
    readMap(reading, member.value, kCapture, kCaptureFields, capture);
  } else if (reading.plainText(member.value, kCapture) != "text") {
    capture.pointer = reading.pointer(member.value);
  }
  capture.name = reading.newVariable(member.key);
  return capture;
}

} // namespace

Expectation readExpectation(Reading &reading, const YamlNode &node) {
  Expectation expectation;
  readMap(reading, node, "a map of what to expect, like {text: Playing}", kExpectationFields,
          expectation);
  return expectation;
}

std::vector<Capture> readCaptures(Reading &reading, const YamlNode &node) {
  if (node.kind != YamlNode::Kind::Map) {
    reading.expected(node, "a map from names to what to keep, like {volume: /volume}");
  }
  std::vector<Capture> captures;
  for (const YamlMember &member : node.members) {
    captures.push_back(readCapture(reading, member));
  }
  return captures;
}

} // namespace norix::assistant::scenario
