// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/YamlNode.h"

#include "assistant/trace/utf8.h"

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/mark.h>
#include <yaml-cpp/parser.h>

#include <set>
#include <sstream>
#include <string_view>

namespace norix::assistant::scenario {
namespace {

using Json = nlohmann::ordered_json;

// Deeper nesting than this is a mistake, or an attack on the stack.
constexpr std::size_t kDeepest = 64;
// More than somebody writes; reading a megabyte of nothing but commas takes seconds.
constexpr std::size_t kMostValues = 100000;
constexpr std::size_t kLongestShown = 80;

Position positionOf(const YAML::Mark &mark) {
  return {mark.line + 1, mark.column + 1};
}

/// Builds the tree from the parser's events.
class Builder : public YAML::EventHandler {
public:
  explicit Builder(const std::string &file) : _file(file) {}

  YamlNode take() { return std::move(_root); }

  void OnDocumentStart(const YAML::Mark & /*mark*/) override {}
  void OnDocumentEnd() override {}
  void OnNull(const YAML::Mark &mark, YAML::anchor_t /*anchor*/) override {
    add(node(YamlNode::Kind::Null, mark));
  }
  void OnAlias(const YAML::Mark &mark, YAML::anchor_t /*anchor*/) override {
    fail(mark, "aliases (*name) are not supported: write the value again");
  }
  void OnScalar(const YAML::Mark &mark, const std::string &tag, YAML::anchor_t /*anchor*/,
                const std::string &value) override {
    // "?" stands for no tag, "!" for quotes.
    if (tag != "?" && tag != "!" && !tag.empty()) {
      refuseTag(mark, tag);
    }
    YamlNode scalar = node(YamlNode::Kind::Scalar, mark);
    scalar.text = value;
    scalar.isPlain = tag == "?";
    add(std::move(scalar));
  }
  void OnSequenceStart(const YAML::Mark &mark, const std::string &tag, YAML::anchor_t /*anchor*/,
                       YAML::EmitterStyle::value /*style*/) override {
    begin(YamlNode::Kind::Sequence, mark, tag);
  }
  void OnSequenceEnd() override { end(); }
  void OnMapStart(const YAML::Mark &mark, const std::string &tag, YAML::anchor_t /*anchor*/,
                  YAML::EmitterStyle::value /*style*/) override {
    begin(YamlNode::Kind::Map, mark, tag);
  }
  void OnMapEnd() override { end(); }

private:
  /// A map or a sequence that has not ended.
  struct Open {
    YamlNode node;
    std::set<std::string> keys;
    // The key whose value comes next.
    bool hasKey = false;
    YamlNode key;
  };

  [[noreturn]] void fail(const YAML::Mark &mark, const std::string &text) const {
    throw FileError(_file, positionOf(mark), text);
  }
  [[noreturn]] void refuseTag(const YAML::Mark &mark, const std::string &tag) const {
    fail(mark, "tags (" + shown(tag) + ") are not supported: take it out");
  }

  YamlNode node(YamlNode::Kind kind, const YAML::Mark &mark) {
    if (++_count > kMostValues) {
      fail(mark, "too large: " + std::to_string(kMostValues) + " values are the most");
    }
    YamlNode made;
    made.kind = kind;
    made.position = positionOf(mark);
    return made;
  }

  void begin(YamlNode::Kind kind, const YAML::Mark &mark, const std::string &tag) {
    if (tag != "?" && !tag.empty()) {
      refuseTag(mark, tag);
    }
    if (_open.size() >= kDeepest) {
      fail(mark, "nested too deeply: " + std::to_string(kDeepest) + " levels are the most");
    }
    _open.emplace_back();
    _open.back().node = node(kind, mark);
  }

  void end() {
    YamlNode done = std::move(_open.back().node);
    _open.pop_back();
    add(std::move(done));
  }

  void add(YamlNode value) {
    if (_open.empty()) {
      _root = std::move(value);
    } else if (Open &open = _open.back(); open.node.kind == YamlNode::Kind::Sequence) {
      open.node.elements.push_back(std::move(value));
    } else if (open.hasKey) {
      open.node.members.push_back({std::move(open.key), std::move(value)});
      open.hasKey = false;
    } else {
      addKey(open, std::move(value));
    }
  }

  void addKey(Open &open, YamlNode key) const {
    if (key.kind != YamlNode::Kind::Scalar) {
      throw FileError(_file, key.position, "expected a name, got " + key.description());
    }
    if (!open.keys.insert(key.text).second) {
      throw FileError(_file, key.position, shown(key.text) + " stands here twice: keep one");
    }
    open.key = std::move(key);
    open.hasKey = true;
  }

  const std::string &_file;
  std::size_t _count = 0;
  YamlNode _root;
  std::vector<Open> _open;
};

Json plainValue(const std::string &text) {
  const bool mayBeValue = text.find_first_of("{[\" \t") == std::string::npos;
  Json value = mayBeValue ? Json::parse(text, nullptr, false) : Json(Json::value_t::discarded);
  return value.is_discarded() ? Json(text) : value;
}

} // namespace

std::string YamlNode::description() const {
  switch (kind) {
  case Kind::Null:
    return "nothing";
  case Kind::Sequence:
    return "a list";
  case Kind::Map:
    return "a map";
  case Kind::Scalar:
    break;
  }
  return shown(text);
}

std::string shown(const std::string &text) {
  const std::string_view beginning = trace::beginningOf(text, kLongestShown);
  return "'" + std::string(beginning) + (beginning.size() < text.size() ? "…'" : "'");
}

YamlNode parseYaml(const std::string &file, const std::string &text) {
  Builder builder(file);
  std::istringstream stream(text);
  try {
    YAML::Parser parser(stream);
    if (!parser.HandleNextDocument(builder)) {
      throw FileError(file, Position{}, "the file is empty: expected a scenario, with 'steps'");
    }
    YamlNode root = builder.take();
    Builder second(file);
    if (parser.HandleNextDocument(second)) {
      throw FileError(file, second.take().position,
                      "a second document: write one scenario into a file");
    }
    return root;
  } catch (const YAML::Exception &error) {
    throw FileError(file, positionOf(error.mark), "not YAML: " + error.msg);
  }
}

nlohmann::ordered_json toJson(const YamlNode &node) {
  Json value;
  switch (node.kind) {
  case YamlNode::Kind::Null:
    break;
  case YamlNode::Kind::Scalar:
    return node.isPlain ? plainValue(node.text) : Json(node.text);
  case YamlNode::Kind::Sequence:
    value = Json::array();
    for (const YamlNode &element : node.elements) {
      value.push_back(toJson(element));
    }
    break;
  case YamlNode::Kind::Map:
    value = Json::object();
    for (const YamlMember &member : node.members) {
      // They are known to differ: looking for each would take the square of their number.
      value.get_ref<Json::object_t &>().emplace_back(member.key.text, toJson(member.value));
    }
    break;
  }
  return value;
}

} // namespace norix::assistant::scenario
