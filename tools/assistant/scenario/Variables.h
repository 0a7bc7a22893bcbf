// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_VARIABLES_H
#define NORIX_ASSISTANT_SCENARIO_VARIABLES_H

#include "assistant/scenario/Scenario.h"

#include <map>
#include <string>
#include <vector>

namespace norix::assistant::scenario {

/// The values that ${names} stand for in the texts of a scenario. `$${` stands for `${` itself.
class Variables {
public:
  Variables() = default;
  explicit Variables(std::map<std::string, Json> values) : _values(std::move(values)) {}

  void set(const std::string &name, Json value) { _values[name] = std::move(value); }

  /// The text with its names filled in; values that are no texts stand there as JSON.
  /// @throw std::out_of_range for a name that has no value
  /// @throw std::length_error when the values make it larger than 16 MiB
  std::string fill(const std::string &text) const;
  /// The value with the names in all its texts filled in. A text that is nothing but one ${name}
  /// becomes the value itself, whatever its type is.
  Json fill(const Json &value) const;

private:
  std::map<std::string, Json> _values;
};

/// The names that a text asks for. What begins with `${` and does not end is a name as well: "".
std::vector<std::string> namesIn(const std::string &text);

/// Whether a name can be asked for: letters, digits, '-', '_' and '.'.
bool isName(const std::string &name);

} // namespace norix::assistant::scenario

#endif
