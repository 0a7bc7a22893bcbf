// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/read.h"

#include "assistant/actions/nearest.h"

#include <algorithm>
#include <array>
#include <yaml-cpp/binary.h>

namespace norix::assistant::scenario {
namespace {

using Kind = YamlNode::Kind;
using What = Control::What;

/// Everything that a step may say, whatever its verb is.
struct Draft {
  std::string name;
  Call call;
  std::string as;
  std::optional<Retry> retry;
  std::string id;
  std::vector<Call> calls;
  double seconds = 0.0;
  std::string target;
};

std::string readSender(const Reading &reading, const YamlNode &node) {
  return reading.word(node, reading.senders);
}

std::string readId(const Reading &reading, const YamlNode &node) {
  std::string id = reading.plainText(node, "a name for a request");
  return id.empty() ? (reading.expected(node, "a name for a request"), id) : id;
}

const std::vector<Field<Retry>> kRetryFields = {
    {"every", [](Reading &reading, const YamlNode &node,
                 Retry &retry) { retry.every = reading.seconds(node); }},
    {"within", [](Reading &reading, const YamlNode &node, Retry &retry) {
       retry.within = reading.seconds(node);
     }}};

void readRetry(Reading &reading, const YamlNode &node, Draft &draft) {
  constexpr const char *kForm = "a map like {every: 100 ms, within: 2 s}";
  Retry retry;
  readMap(reading, node, kForm, kRetryFields, retry);
  if (find(node, "within") == nullptr) {
    reading.expected(node, kForm);
  }
  draft.retry = retry;
}

void readKeys(Reading &reading, const YamlNode &node, Draft &draft) {
  if (node.kind != Kind::Map) {
    reading.expected(node, "a map from keys of the bundle to texts");
  }
  constexpr std::array<const char *, 4> kTaken = {"actionId", "actionType", "actionParams",
                                                  "requestId"};
  for (const YamlMember &member : node.members) {
    if (member.key.text.empty() || member.key.text.find('\0') != std::string::npos) {
      reading.expected(member.key, "a key of the bundle");
    }
    if (std::find(kTaken.begin(), kTaken.end(), member.key.text) != kTaken.end()) {
      reading.fail(member.key,
                   "the key '" + member.key.text + "' is in the bundle already; 'set' adds others");
    }
    draft.call.keys.emplace_back(member.key.text, reading.text(member.value, "a text"));
  }
}

// Checked here, because yaml-cpp's decoder takes anything, and reads outside of its table at a byte
// above 127.
bool isBase64(const std::string &text) {
  constexpr const char *kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  constexpr std::size_t kGroup = 4;
  constexpr std::size_t kMostPadding = 2;
  const std::size_t digits = std::min(text.find_first_not_of(kDigits), text.size());
  return text.size() % kGroup == 0 && text.size() - digits <= kMostPadding
         && text.find_first_not_of('=', digits) == std::string::npos;
}

// For parameters that are no text: bytes that are not UTF-8.
void readBytes(Reading &reading, const YamlNode &node, Draft &draft) {
  std::string text = reading.plainText(node, "bytes in Base64");
  text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == ' ' || c == '\n'; }),
             text.end());
  if (!isBase64(text)) {
    reading.expected(node, "bytes in Base64");
  }
  const std::vector<unsigned char> bytes = YAML::DecodeBase64(text);
  if (std::find(bytes.begin(), bytes.end(), 0) != bytes.end()) {
    reading.fail(node, "bytes with a NUL: what follows it would not be sent; take it out");
  }
  draft.call.paramsText = std::string(bytes.begin(), bytes.end());
}

void readBurst(Reading &reading, const YamlNode &node, Draft &draft);

const std::vector<Field<Draft>> kDraftFields = {
    {"name", [](Reading &reading, const YamlNode &node,
                Draft &draft) { draft.name = reading.plainText(node, "a name for the step"); }},
    {"run", [](Reading &reading, const YamlNode &node,
               Draft &draft) { draft.call.action = reading.text(node, "the id of an action"); }},
    {"state",
     [](Reading &reading, const YamlNode &node, Draft & /*draft*/) {
       if (node.kind != Kind::Null) {
         reading.expected(node, "nothing after 'state:'");
       }
     }},
    {"sender", [](Reading &reading, const YamlNode &node,
                  Draft &draft) { draft.call.sender = readSender(reading, node); }},
    {"type", [](Reading &reading, const YamlNode &node,
                Draft &draft) { draft.call.type = reading.text(node, "the type of the action"); }},
    {"params", [](Reading &reading, const YamlNode &node,
                  Draft &draft) { draft.call.params = reading.value(node); }},
    {"params-text",
     [](Reading &reading, const YamlNode &node, Draft &draft) {
       draft.call.paramsText = reading.text(node, "the parameters as they are sent");
     }},
    {"params-base64", readBytes},
    {"set", readKeys},
    {"as",
     [](Reading &reading, const YamlNode &node, Draft &draft) {
       draft.as = readId(reading, node);
       if (!reading.sent.insert(draft.as).second) {
         reading.fail(node, "'" + draft.as + "' was sent in an earlier step and not awaited yet");
       }
     }},
    {"expect", [](Reading &reading, const YamlNode &node,
                  Draft &draft) { draft.call.expectation = readExpectation(reading, node); }},
    {"capture", [](Reading &reading, const YamlNode &node,
                   Draft &draft) { draft.call.captures = readCaptures(reading, node); }},
    {"retry", readRetry},
    {"await",
     [](Reading &reading, const YamlNode &node, Draft &draft) {
       draft.id = readId(reading, node);
       if (reading.sent.erase(draft.id) == 0) {
         reading.fail(node, "no earlier step has sent '" + draft.id + "' ('as: " + draft.id
                                + "'), or it was awaited already");
       }
     }},
    {"burst", readBurst},
    {"wait", [](Reading &reading, const YamlNode &node, Draft &draft) {
       draft.seconds = reading.seconds(node);
     }}};

/// What can be done to the application, or to a sender.
struct ControlVerb {
  const char *name;
  What what;
  bool toApplication;
  bool toSender;
};

constexpr ControlVerb kControls[] = {{"kill", What::Kill, true, true},
                                     {"stop", What::Stop, true, true},
                                     {"continue", What::Continue, true, true},
                                     {"restart", What::Restart, true, false},
                                     {"connect", What::Connect, false, true},
                                     {"register", What::Register, false, true},
                                     {"unregister", What::Unregister, false, true},
                                     {"disconnect", What::Disconnect, false, true}};

/// What makes a step what it is, and the keys that go with it.
struct Verb {
  const char *key;
  std::vector<const char *> keys;
};

const std::vector<Verb> kVerbs = {{"run",
                                   {"sender", "type", "params", "params-text", "params-base64",
                                    "set", "as", "expect", "capture", "retry"}},
                                  {"state", {"sender", "set", "as", "expect", "capture", "retry"}},
                                  {"await", {"expect", "capture"}},
                                  {"burst", {}},
                                  {"wait", {}}};

const ControlVerb *findControl(const std::string &key) {
  const auto *const found =
      std::find_if(std::begin(kControls), std::end(kControls),
                   [&key](const ControlVerb &control) { return key == control.name; });
  return found == std::end(kControls) ? nullptr : found;
}

const Verb *findVerb(const std::string &key) {
  const auto found = std::find_if(kVerbs.begin(), kVerbs.end(),
                                  [&key](const Verb &verb) { return key == verb.key; });
  return found == kVerbs.end() ? nullptr : &*found;
}

std::string allVerbs() {
  std::string text;
  for (const Verb &verb : kVerbs) {
    text += (text.empty() ? "" : ", ") + std::string(verb.key);
  }
  for (const ControlVerb &control : kControls) {
    text += ", " + std::string(control.name);
  }
  return text;
}

// The one member of a map that says what is done.
const YamlMember &verbOf(const Reading &reading, const YamlNode &node) {
  if (node.kind != Kind::Map) {
    reading.expected(node, "a step, a map like {run: musicPlay}");
  }
  const YamlMember *found = nullptr;
  for (const YamlMember &member : node.members) {
    if (findVerb(member.key.text) == nullptr && findControl(member.key.text) == nullptr) {
      continue;
    }
    if (found != nullptr) {
      reading.fail(member.key, "the step does '" + found->key.text + "' already: make '"
                                   + member.key.text + "' a step of its own");
    }
    found = &member;
  }
  if (found == nullptr) {
    reading.fail(node, "nothing says what this step does; expected one of: " + allVerbs());
  }
  return *found;
}

// The fields with these keys.
std::vector<Field<Draft>> fieldsFor(const std::vector<const char *> &keys) {
  std::vector<Field<Draft>> fields;
  for (const Field<Draft> &field : kDraftFields) {
    const std::string key = field.key;
    if (std::find(keys.begin(), keys.end(), key) != keys.end()) {
      fields.push_back(field);
    }
  }
  return fields;
}

Draft newDraft(const Reading &reading, const YamlNode &node) {
  Draft draft;
  draft.call.line = node.position.line;
  draft.call.sender = reading.senders.front();
  return draft;
}

void refuseTogether(const Reading &reading, const YamlNode &node,
                    const std::vector<const char *> &keys) {
  const YamlMember *first = nullptr;
  for (const YamlMember &member : node.members) {
    if (std::find(keys.begin(), keys.end(), member.key.text) == keys.end()) {
      continue;
    }
    if (first != nullptr) {
      reading.fail(member.key, "'" + member.key.text + "' does not go with '" + first->key.text
                                   + "': take one out");
    }
    first = &member;
  }
}

Call readBurstCall(Reading &reading, const YamlNode &node) {
  const YamlMember &verb = verbOf(reading, node);
  if (verb.key.text != "run" && verb.key.text != "state") {
    reading.fail(verb.key, "expected run or state in a burst, got '" + verb.key.text + "'");
  }
  Draft draft = newDraft(reading, node);
  std::vector<const char *> keys = findVerb(verb.key.text)->keys;
  keys.push_back(verb.key.text.c_str());
  keys.erase(std::remove_if(keys.begin(), keys.end(),
                            [](const std::string &key) { return key == "as" || key == "retry"; }),
             keys.end());
  readMap(reading, node, "a request", fieldsFor(keys), draft);
  refuseTogether(reading, node, {"params", "params-text", "params-base64"});
  return draft.call;
}

void readBurst(Reading &reading, const YamlNode &node, Draft &draft) {
  if (node.kind != Kind::Sequence || node.elements.empty()) {
    reading.expected(node, "a list of requests, like [{run: musicNext}, {state: }]");
  }
  for (const YamlNode &element : node.elements) {
    draft.calls.push_back(readBurstCall(reading, element));
  }
}

// "run musicVolume", unless the step has a name.
std::string nameOf(const Draft &draft, const YamlMember &verb) {
  if (!draft.name.empty()) {
    return draft.name;
  }
  return verb.value.kind == Kind::Scalar ? verb.key.text + " " + verb.value.text : verb.key.text;
}

Step makeStep(const YamlNode &node, const YamlMember &verb, Draft draft) {
  Step step;
  step.line = node.position.line;
  step.name = nameOf(draft, verb);
  if (!draft.as.empty()) {
    step.action = Send{draft.as, std::move(draft.call)};
  } else if (verb.key.text == "await") {
    step.action =
        Await{draft.id, std::move(draft.call.expectation), std::move(draft.call.captures)};
  } else if (verb.key.text == "burst") {
    step.action = Burst{std::move(draft.calls)};
  } else if (verb.key.text == "wait") {
    step.action = Pause{draft.seconds};
  } else {
    step.action = Ask{std::move(draft.call), draft.retry};
  }
  return step;
}

std::vector<std::string> targetsOf(const Reading &reading, const ControlVerb &control) {
  std::vector<std::string> targets;
  if (control.toApplication) {
    targets.emplace_back("application");
  }
  if (control.toSender) {
    targets.insert(targets.end(), reading.senders.begin(), reading.senders.end());
  }
  return targets;
}

Step readControl(Reading &reading, const YamlNode &node, const YamlMember &verb,
                 const ControlVerb &control) {
  std::vector<Field<Draft>> fields = fieldsFor({"name", "expect"});
  fields.push_back({control.name, [](Reading & /*reading*/, const YamlNode &value, Draft &draft) {
                      draft.target = value.text;
                    }});
  Draft draft = newDraft(reading, node);
  readMap(reading, node, "a step", fields, draft);
  (void)reading.word(verb.value, targetsOf(reading, control));

  Step step;
  step.line = node.position.line;
  step.name = nameOf(draft, verb);
  step.action = Control{control.what, draft.target, draft.call.expectation};
  return step;
}

} // namespace

Step readStep(Reading &reading, const YamlNode &node) {
  const YamlMember &verb = verbOf(reading, node);
  if (const ControlVerb *const control = findControl(verb.key.text)) {
    return readControl(reading, node, verb, *control);
  }
  Draft draft = newDraft(reading, node);
  std::vector<const char *> keys = findVerb(verb.key.text)->keys;
  keys.push_back("name");
  keys.push_back(verb.key.text.c_str());
  readMap(reading, node, "a step", fieldsFor(keys), draft);
  refuseTogether(reading, node, {"params", "params-text", "params-base64"});
  for (const char *const key : {"expect", "capture", "retry"}) {
    refuseTogether(reading, node, {"as", key});
  }
  return makeStep(node, verb, std::move(draft));
}

} // namespace norix::assistant::scenario
