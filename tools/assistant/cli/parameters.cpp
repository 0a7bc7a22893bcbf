// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/parameters.h"

#include <nlohmann/json.hpp>
#include <set>

namespace norix::assistant::cli {
namespace {

using nlohmann::json;

std::string quoted(const std::string &text) {
  try {
    return json(text).dump();
  } catch (const json::exception &) {
    throw ParameterError("a parameter is not UTF-8 text; JSON cannot carry it, give --params");
  }
}

bool isScalar(const std::string &text) {
  const bool isOtherJson = text.find_first_of("{[\" \t\r\n") != std::string::npos;
  return !isOtherJson && json::accept(text);
}

} // namespace

std::string toJsonObject(const std::vector<std::string> &pairs) {
  std::set<std::string> keys;
  std::string object = "{";
  for (const std::string &pair : pairs) {
    const size_t equals = pair.find('=');
    if (equals == std::string::npos || equals == 0) {
      throw ParameterError("'" + pair + "' is no parameter; give KEY=VALUE");
    }
    const std::string key = pair.substr(0, equals);
    const std::string value = pair.substr(equals + 1);
    if (!keys.insert(key).second) {
      throw ParameterError("the parameter '" + key + "' is given twice; give it once");
    }

    object += (keys.size() == 1 ? "" : ",") + quoted(key) + ":";
    object += isScalar(value) ? value : quoted(value);
  }
  return object + "}";
}

} // namespace norix::assistant::cli
