// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_ACTIONS_PARSESHALLOW_H
#define NORIX_ASSISTANT_ACTIONS_PARSESHALLOW_H

#include <nlohmann/json.hpp>

#include <string>

namespace norix::assistant::actions {

/// The JSON value of a text of strangers; a discarded one when it is not JSON, or nested deeper
/// than 64 levels: writing and comparing a value recurse once per level, and would exhaust the
/// stack.
template <typename Value>
Value parseShallow(const std::string &text) {
  constexpr int kDeepest = 64;
  bool isDeep = false;
  const auto keeps = [&isDeep](int depth, typename Value::parse_event_t /*event*/,
                               Value & /*value*/) {
    isDeep = isDeep || depth > kDeepest;
    return !isDeep;
  };
  Value value = Value::parse(text, keeps, false);
  return isDeep ? Value(Value::value_t::discarded) : value;
}

} // namespace norix::assistant::actions

#endif
