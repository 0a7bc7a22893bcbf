// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_ACTIONS_LOCATEDJSON_H
#define NORIX_ASSISTANT_ACTIONS_LOCATEDJSON_H

#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace norix::assistant::actions {

/** @brief JSON whose members keep the order in which they were written. */
using Json = nlohmann::ordered_json;

/** @brief A place in a text; both count from 1, columns in characters. */
struct Position {
  std::size_t line = 1;
  std::size_t column = 1;
};

/** @brief A text that is not JSON; what() says why. */
class SyntaxError : public std::runtime_error {
public:
  SyntaxError(Position position, const std::string &text)
      : std::runtime_error(text), _position(position) {}

  Position position() const { return _position; }

private:
  Position _position;
};

/** @brief A JSON document that knows where in the text each of its values stands. */
class LocatedJson {
public:
  /** Levels of objects and arrays in each other; nothing that is declared needs nearly as many. */
  static constexpr std::size_t kMaxDepth = 64;

  LocatedJson() = default;
  /** @throw SyntaxError for a text that is not JSON, is too deep, or names a member twice */
  explicit LocatedJson(const std::string &text);

  const Json &value() const { return _value; }

  /** @brief Where the value with this JSON pointer begins; the document's begin for others. */
  Position at(const std::string &pointer) const;
  /** @brief Where the name of the member with this JSON pointer begins; else like at(). */
  Position nameAt(const std::string &pointer) const;

private:
  friend class LocatedJsonBuilder;

  Json _value;
  std::map<std::string, Position> _values;
  std::map<std::string, Position> _names;
};

/** @brief The JSON pointer of a member or an element of what another pointer names. */
std::string child(const std::string &pointer, const std::string &name);
std::string child(const std::string &pointer, std::size_t index);

/** @brief A value as one short line for a message; long ones are cut. */
std::string brief(const Json &value);

} // namespace norix::assistant::actions

#endif
