// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_READING_H
#define NORIX_ASSISTANT_SCENARIO_READING_H

#include "assistant/scenario/Scenario.h"
#include "assistant/scenario/YamlNode.h"

#include <set>
#include <string>
#include <vector>

namespace norix::assistant::scenario {

/// What the readers of the parts of a file share: its name, the names that are known so far, and
/// how to read simple values. Every function throws FileError for something else than it reads.
class Reading {
public:
  /// @param variables  names that have values before the scenario begins
  Reading(std::string file, std::set<std::string> variables)
      : _file(std::move(file)), _variables(std::move(variables)) {}

  const std::string &file() const { return _file; }

  [[noreturn]] void fail(const YamlNode &node, const std::string &text) const;
  /// Fails with "expected …, got …".
  [[noreturn]] void expected(const YamlNode &node, const std::string &what) const;

  /// A text as it stands.
  std::string plainText(const YamlNode &node, const std::string &what) const;
  /// A text whose ${names} are all known.
  std::string text(const YamlNode &node, const std::string &what) const;
  /// One text, or a list of them.
  std::vector<std::string> texts(const YamlNode &node, const std::string &what) const;
  /// Anything, whose ${names} are all known.
  Json value(const YamlNode &node) const;
  /// "200 ms", "1.5 s", "2 min", or a number of seconds.
  double seconds(const YamlNode &node) const;
  /// The same, and more than nothing.
  double timeout(const YamlNode &node) const;
  bool boolean(const YamlNode &node) const;
  /// One of these words.
  std::string word(const YamlNode &node, const std::vector<std::string> &words) const;
  /// A name, which is known from now on.
  std::string newVariable(const YamlNode &node);
  /// A regular expression with at least so many groups.
  std::string pattern(const YamlNode &node, int groups) const;
  /// A JSON pointer.
  std::string pointer(const YamlNode &node) const;

  /// The names of the senders, the first of which is meant where none is named.
  std::vector<std::string> senders;
  /// The requests that were sent and not awaited yet.
  std::set<std::string> sent;

private:
  void checkNames(const YamlNode &node) const;
  void checkNumbers(const YamlNode &node) const;
  [[noreturn]] void failUnknownName(const YamlNode &node, const std::string &name) const;

  std::string _file;
  std::set<std::string> _variables;
};

/// A key that a map may have, and how its value is read.
template <typename Target>
struct Field {
  const char *key;
  void (*read)(Reading &reading, const YamlNode &value, Target &target);
};

/// The value of a key, null when the map has none.
const YamlNode *find(const YamlNode &map, const std::string &key);

/// Fails at a key of the map that is not known, with those that are, and the one that was probably
/// meant.
void refuseUnknown(const Reading &reading, const YamlNode &map,
                   const std::vector<std::string> &known);

/// Reads a map, whose keys are all in the table, in the order of the table.
///
/// @param what  what is expected there: "a map with name and id"
template <typename Target>
void readMap(Reading &reading, const YamlNode &node, const std::string &what,
             const std::vector<Field<Target>> &fields, Target &target) {
  if (node.kind != YamlNode::Kind::Map) {
    reading.expected(node, what);
  }
  std::vector<std::string> known;
  known.reserve(fields.size());
  for (const Field<Target> &field : fields) {
    known.emplace_back(field.key);
  }
  refuseUnknown(reading, node, known);
  for (const Field<Target> &field : fields) {
    if (const YamlNode *const value = find(node, field.key)) {
      field.read(reading, *value, target);
    }
  }
}

} // namespace norix::assistant::scenario

#endif
