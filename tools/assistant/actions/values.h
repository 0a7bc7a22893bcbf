// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_ACTIONS_VALUES_H
#define NORIX_ASSISTANT_ACTIONS_VALUES_H

#include "assistant/actions/LocatedJson.h"

#include <cmath>
#include <string>

namespace norix::assistant::actions {

/// A JSON number; long double holds every 64-bit integer exactly where it has 64 bits or more.
inline long double numberOf(const Json &value) {
  if (value.is_number_unsigned()) {
    return static_cast<long double>(value.get<Json::number_unsigned_t>());
  }
  if (value.is_number_integer()) {
    return static_cast<long double>(value.get<Json::number_integer_t>());
  }
  return value.get<double>();
}

/// Whether 0.3 is a multiple of 0.1, which no binary fraction is to the last bit.
inline bool isMultiple(long double number, long double of) {
  constexpr long double kTolerance = 1e-9L;
  const long double quotient = number / of;
  return std::fabs(quotient - std::round(quotient)) <= kTolerance;
}

/// Whether a value is of a type that schemas name. 5.0 is an integer, as JSON Schema has it.
inline bool hasType(const Json &value, const std::string &type) {
  if (type == "integer") {
    return value.is_number_integer()
           || (value.is_number() && std::trunc(value.get<double>()) == value.get<double>());
  }
  return (type == "object" && value.is_object()) || (type == "array" && value.is_array())
         || (type == "string" && value.is_string()) || (type == "number" && value.is_number())
         || (type == "boolean" && value.is_boolean());
}

} // namespace norix::assistant::actions

#endif
