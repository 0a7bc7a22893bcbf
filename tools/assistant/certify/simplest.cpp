// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/simplest.h"

#include <algorithm>
#include <cmath>

namespace norix::assistant::certify {
namespace {

using actions::Json;

constexpr std::size_t kLongest = std::size_t{1} << 20U;

Json simplestNumber(const Json &form, bool isInteger) {
  double number = 0.0;
  const double step = form.value("multipleOf", isInteger ? 1.0 : 0.5);
  if (form.contains("minimum")) {
    number = std::max(number, std::ceil(form["minimum"].get<double>() / step) * step);
  }
  if (form.contains("exclusiveMinimum")) {
    number =
        std::max(number, (std::floor(form["exclusiveMinimum"].get<double>() / step) + 1) * step);
  }
  if (form.contains("maximum")) {
    number = std::min(number, std::floor(form["maximum"].get<double>() / step) * step);
  }
  if (form.contains("exclusiveMaximum")) {
    number =
        std::min(number, (std::ceil(form["exclusiveMaximum"].get<double>() / step) - 1) * step);
  }
  return isInteger ? Json(static_cast<std::int64_t>(number)) : Json(number);
}

Json simplestArray(const Json &form) {
  Json array = Json::array();
  const auto count = form.value("minItems", std::size_t{0});
  while (array.size() < count) {
    array.push_back(form.contains("items") ? simplest(form["items"]) : Json(array.size()));
  }
  return array;
}

Json simplestObject(const Json &form) {
  Json object = Json::object();
  const Json properties = form.value("properties", Json::object());
  for (const auto &name : form.value("required", Json::array())) {
    const std::string member = name;
    object[member] = properties.contains(member) ? simplest(properties[member]) : Json("");
  }
  return object;
}

} // namespace

Json simplest(const Json &form) {
  if (form.contains("const")) {
    return form["const"];
  }
  if (form.contains("enum")) {
    return form["enum"].front();
  }
  const std::string type = form.value("type", "object");
  if (type == "string") {
    return std::string(std::min(form.value("minLength", std::size_t{0}), kLongest), 'a');
  }
  if (type == "boolean") {
    return false;
  }
  if (type == "array") {
    return simplestArray(form);
  }
  return type == "object" ? simplestObject(form) : simplestNumber(form, type == "integer");
}

} // namespace norix::assistant::certify
