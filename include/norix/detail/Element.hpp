/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_ELEMENT_HPP
#define NORIX_DETAIL_ELEMENT_HPP

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace norix {
namespace detail {

using Json = nlohmann::json;

inline std::string jsonText(const Json &value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// What stands in a message for what came: enough to recognise it by.
inline std::string brief(const Json &value) {
  constexpr std::size_t kLongest = 60;
  std::string text = jsonText(value);
  if (text.size() > kLongest) {
    std::size_t end = kLongest;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
      --end;
    }
    text = text.substr(0, end) + "…";
  }
  return text;
}

// Characters, not bytes: what JSON Schema counts.
inline std::size_t lengthOf(const std::string &text) noexcept {
  std::size_t length = 0;
  for (const char byte : text) {
    length += (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U ? 1 : 0;
  }
  return length;
}

template <class Number>
bool readInteger(const Json &written, Number &number) {
  using Limits = std::numeric_limits<Number>;
  if (const auto *positive = written.get_ptr<const Json::number_unsigned_t *>()) {
    number = static_cast<Number>(*positive);
    return *positive <= static_cast<std::make_unsigned_t<Number>>(Limits::max());
  }
  if (const auto *whole = written.get_ptr<const Json::number_integer_t *>()) {
    number = static_cast<Number>(*whole);
    // A positive one is unsigned, and was seen above, unless a program has made it.
    return *whole >= 0 ? readInteger(Json(static_cast<Json::number_unsigned_t>(*whole)), number)
                       : *whole >= static_cast<Json::number_integer_t>(Limits::min());
  }
  if (const auto *real = written.get_ptr<const Json::number_float_t *>()) {
    // 40.0 is a whole number, as far as doubles hold every one.
    constexpr double kExact = 9007199254740992.0;
    return std::trunc(*real) == *real && std::abs(*real) <= kExact
           && readInteger(Json(static_cast<Json::number_integer_t>(*real)), number);
  }
  return false;
}

// One value as it stands in JSON. False when it is of another type.
template <class Value>
bool readValue(const Json &written, Value &value) {
  if constexpr (std::is_same_v<Value, bool>) {
    const auto *truth = written.get_ptr<const Json::boolean_t *>();
    value = truth != nullptr && *truth;
    return truth != nullptr;
  } else if constexpr (std::is_integral_v<Value>) {
    return readInteger(written, value);
  } else if constexpr (std::is_floating_point_v<Value>) {
    if (!written.is_number()) {
      return false;
    }
    const auto number = written.get<double>();
    value = static_cast<Value>(number);
    return std::isfinite(value) != 0;
  } else {
    const auto *text = written.get_ptr<const Json::string_t *>();
    if (text != nullptr) {
      value = *text;
    }
    return text != nullptr;
  }
}

// What one value of a parameter may be.
template <class Value>
class Element {
public:
  struct Choice {
    Json written;
    Value value;
  };

  static constexpr bool kIsNumber = std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>;
  static constexpr bool kIsText = std::is_same_v<Value, std::string>;

  static Json write(const Value &value) {
    if constexpr (std::is_enum_v<Value>) {
      return Json(static_cast<std::underlying_type_t<Value>>(value));
    } else {
      return Json(value);
    }
  }

  bool read(const Json &written, Value &value) const {
    if (!choices.empty()) {
      for (const Choice &choice : choices) {
        if (choice.written == written) {
          value = choice.value;
          return true;
        }
      }
      return false;
    }
    if constexpr (std::is_enum_v<Value>) {
      return false;
    } else {
      return readValue(written, value) && isInRange(value) && hasLength(value);
    }
  }

  // Behind "has to be".
  std::string expected() const {
    if (!choices.empty()) {
      std::string list;
      for (const Choice &choice : choices) {
        list += (list.empty() ? "one of " : ", ") + jsonText(choice.written);
      }
      return list;
    }
    if constexpr (std::is_same_v<Value, bool>) {
      return "true or false";
    } else if constexpr (kIsNumber) {
      return std::string(std::is_integral_v<Value> ? "a whole number" : "a number") + bounds();
    } else {
      return "a text" + lengths("characters");
    }
  }

  Json schema() const {
    Json form = {{"type", typeName()}};
    for (const Choice &choice : choices) {
      form["enum"].push_back(choice.written);
    }
    if constexpr (kIsNumber) {
      if (range.has_value()) {
        form["minimum"] = range->first;
        form["maximum"] = range->second;
      } else if (choices.empty() && std::is_unsigned_v<Value>) {
        form["minimum"] = 0;
      }
    }
    if (length.has_value()) {
      form["minLength"] = length->first;
      form["maxLength"] = length->second;
    }
    return form;
  }

  // Why nothing can ever be right; empty when something can.
  std::string complaint() const {
    if (std::is_enum_v<Value> && choices.empty()) {
      return "an enumeration needs oneOf(), with the name of each value";
    }
    if ((range.has_value() && !(range->first <= range->second))
        || (length.has_value() && length->first > length->second)) {
      return "nothing lies within its bounds";
    }
    return {};
  }

  std::string lengths(const char *unit) const {
    if (!length.has_value()) {
      return {};
    }
    return " of " + std::to_string(length->first) + " to " + std::to_string(length->second) + " "
           + unit;
  }

  std::optional<std::pair<Value, Value>> range{};
  // Of a text.
  std::optional<std::pair<std::size_t, std::size_t>> length{};
  std::vector<Choice> choices{};

private:
  bool isInRange(const Value &value) const {
    return !range.has_value() || (range->first <= value && value <= range->second);
  }

  bool hasLength(const Value &value) const {
    if constexpr (kIsText) {
      return !length.has_value()
             || (length->first <= lengthOf(value) && lengthOf(value) <= length->second);
    } else {
      return true;
    }
  }

  std::string bounds() const {
    if (range.has_value()) {
      return " from " + jsonText(write(range->first)) + " to " + jsonText(write(range->second));
    }
    if constexpr (std::is_integral_v<Value>) {
      using Limits = std::numeric_limits<Value>;
      return " from " + std::to_string(Limits::min()) + " to " + std::to_string(Limits::max());
    } else {
      return {};
    }
  }

  const char *typeName() const {
    if constexpr (std::is_same_v<Value, bool>) {
      return "boolean";
    } else if constexpr (kIsNumber) {
      return std::is_integral_v<Value> ? "integer" : "number";
    } else {
      return "string";
    }
  }
};

} // namespace detail
} // namespace norix

#endif
