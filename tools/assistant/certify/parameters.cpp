// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/parameters.h"

#include "assistant/certify/simplest.h"
#include "assistant/client/Request.h"

#include <new>

namespace norix::assistant::certify {
namespace {

using actions::Action;
using actions::Json;

constexpr std::size_t kHuge = std::size_t{1} << 20U;
constexpr std::size_t kDeep = 10000;
constexpr const char *kUnknown = "norixUnknown";

Json valid(const Action &action) {
  return action.examples.empty() ? simplest(action.parameters) : action.examples.front();
}

Json propertiesOf(const Action &action) {
  return action.parameters.value("properties", Json::object());
}

// A member that takes any text; one that is not declared where there is none.
std::string nameOfText(const Action &action) {
  const Json properties = propertiesOf(action);
  for (const auto &[name, form] : properties.items()) {
    if (form.value("type", "") == "string") {
      return name;
    }
  }
  return kUnknown;
}

// Raw, because JSON that is made properly has none of what these texts are about.
std::string withText(const Action &action, const std::string &text) {
  Json object = valid(action);
  const std::string name = nameOfText(action);
  object.erase(name);
  std::string json = object.dump();
  json.pop_back();
  return json + (object.empty() ? "" : ",") + Json(name).dump() + ":\"" + text + "\"}";
}

std::string nested(const char *open, const char *close) {
  std::string text;
  for (std::size_t i = 0; i < kDeep; ++i) {
    text += open;
  }
  text += "1";
  for (std::size_t i = 0; i < kDeep; ++i) {
    text += close;
  }
  return text;
}

Json wrongValueFor(const Json &form) {
  const std::string type = form.value("type", "");
  return type == "string" ? Json(1) : Json("norix");
}

} // namespace

std::vector<Params> missingParams(const Action &action) {
  std::vector<Params> all = {{"no parameters at all", std::nullopt}};
  for (const auto &name : action.parameters.value("required", Json::array())) {
    Json object = valid(action);
    object.erase(name.get<std::string>());
    all.push_back({"'" + name.get<std::string>() + "' missing", object.dump()});
  }
  return all;
}

std::vector<Params> emptyParams(const Action & /*action*/) {
  return {{"an empty text as parameters", ""}};
}

std::vector<Params> unknownParams(const Action &action) {
  Json object = valid(action);
  object[kUnknown] = {1, 2, 3};
  return {{"a parameter that is not declared, '" + std::string(kUnknown) + "'", object.dump()}};
}

std::vector<Params> wronglyTypedParams(const Action &action) {
  std::vector<Params> all;
  const Json properties = propertiesOf(action);
  for (const auto &[name, form] : properties.items()) {
    for (const Json &wrong : {wrongValueFor(form), Json(nullptr), Json::object()}) {
      Json object = valid(action);
      object[name] = wrong;
      all.push_back({object.dump() + ", '" + name + "' being of another type", object.dump()});
    }
  }
  return all;
}

std::vector<Params> notJsonParams(const Action &action) {
  const std::string text = valid(action).dump();
  return {{"parameters that are not JSON", "volume=40"},
          {"JSON that is cut off", text.substr(0, text.size() - 1)},
          {"a list instead of an object", "[" + text + "]"},
          {"null instead of an object", "null"}};
}

std::vector<Params> hugeParams(const Action &action) {
  return {{"1 MiB of parameters", withText(action, std::string(kHuge, 'a'))}};
}

std::vector<Params> nestedParams(const Action &action) {
  Json object = valid(action);
  std::string json = object.dump();
  json.pop_back();
  return {{"10,000 lists in each other", nested("[", "]")},
          {"10,000 objects in each other", json + (object.empty() ? "" : ",") + "\"" + kUnknown
                                               + "\":" + nested("{\"a\":", "}") + "}"}};
}

std::vector<Params> notUtf8Params(const Action &action) {
  return {{"a text in Latin 1", withText(action, "Beyonc\xE9")},
          {"half a character", withText(action, "\xF0\x9F")},
          {"an overlong form", withText(action, "\xC0\xAF")}};
}

std::vector<Params> nulParams(const Action &action) {
  const std::string text = withText(action, "a");
  return {{"a NUL character in a text, '\\u0000'", withText(action, "a\\u0000b")},
          {"a text that ends at a NUL", text.substr(0, text.size() / 2)}};
}

BundlePtr toBundle(const Action &action, const Params &params, std::uint64_t requestId) {
  BundlePtr made = Request{action.id, {}, params.text.value_or(""), requestId}.toBundle();
  if (!params.text && bundle_del(made.get(), "actionParams") != BUNDLE_ERROR_NONE) {
    throw std::bad_alloc();
  }
  return made;
}

} // namespace norix::assistant::certify
