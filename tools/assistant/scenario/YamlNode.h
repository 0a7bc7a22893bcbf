// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_YAMLNODE_H
#define NORIX_ASSISTANT_SCENARIO_YAMLNODE_H

#include "assistant/scenario/FileError.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace norix::assistant::scenario {

struct YamlMember;

/// A value of a YAML document, and where it stands.
struct YamlNode {
  enum class Kind { Null, Scalar, Sequence, Map };

  Kind kind = Kind::Null;
  Position position;
  /// Of a scalar.
  std::string text;
  /// Whether a scalar stands there without quotes, so that it may be a number, true or false.
  bool isPlain = false;
  std::vector<YamlNode> elements;
  std::vector<YamlMember> members;

  /// What the value is, for a message: "a list".
  std::string description() const;
};

/// A key of a map, and its value.
struct YamlMember {
  YamlNode key;
  YamlNode value;
};

/// A text in quotes for a message: the beginning of it when it is long.
std::string shown(const std::string &text);

/// Reads a document. Keys are texts and stand in a map once; aliases, tags and further documents
/// are refused: no scenario needs them, and each surprises somebody.
/// @throw FileError
YamlNode parseYaml(const std::string &file, const std::string &text);

/// The value in JSON. What stands there without quotes is null, true, false or a number as in JSON,
/// and any other word a text: `yes` and `on` are texts, and so is `0x10`.
nlohmann::ordered_json toJson(const YamlNode &node);

} // namespace norix::assistant::scenario

#endif
