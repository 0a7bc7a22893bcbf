// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/Variables.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace norix::assistant::scenario {
namespace {

using Replace = std::function<std::string(const std::string &)>;

// The text with every ${name} replaced, and every $${ by ${.
std::string replaceNames(const std::string &text, const Replace &replace) {
  std::string filled;
  std::size_t at = 0;
  for (std::size_t begin = text.find("${"); begin != std::string::npos;
       begin = text.find("${", at)) {
    if (begin > at && text[begin - 1] == '$') {
      filled += text.substr(at, begin - 1 - at) + "${";
      at = begin + 2;
      continue;
    }
    const std::size_t end = text.find('}', begin);
    filled += text.substr(at, begin - at);
    filled += replace(end == std::string::npos ? "" : text.substr(begin + 2, end - begin - 2));
    at = end == std::string::npos ? text.size() : end + 1;
  }
  return filled + text.substr(std::min(at, text.size()));
}

std::string textOf(const Json &value) {
  return value.is_string() ? value.get<std::string>()
                           : value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// The name, when the text is nothing but one.
std::string onlyName(const std::string &text) {
  const std::vector<std::string> names = namesIn(text);
  return names.size() == 1 && text == "${" + names.front() + "}" ? names.front() : "";
}

/// Puts values in the places of names, up to a bound: a value can be an answer of many megabytes,
/// and its name stand in a thousand places.
class Filling {
public:
  explicit Filling(const std::map<std::string, Json> &values) : _values(values) {}

  std::string fill(const std::string &text) {
    return replaceNames(text, [this](const std::string &name) { return spent(textOf(at(name))); });
  }

  Json fill(const Json &value) {
    if (value.is_string()) {
      const std::string text = value.get<std::string>();
      const std::string name = onlyName(text);
      return name.empty() ? Json(fill(text)) : (spent(textOf(at(name))), at(name));
    }
    Json filled = value;
    if (value.is_structured()) {
      for (Json &part : filled) {
        part = fill(part);
      }
    }
    return filled;
  }

private:
  static constexpr std::size_t kLargest = std::size_t{16} << 20U;

  const Json &at(const std::string &name) const { return _values.at(name); }

  std::string spent(std::string text) {
    if (text.size() > _left) {
      throw std::length_error("with the values of its ${names} it is larger than 16 MiB");
    }
    _left -= text.size();
    return text;
  }

  const std::map<std::string, Json> &_values;
  std::size_t _left = kLargest;
};

} // namespace

std::string Variables::fill(const std::string &text) const {
  return Filling(_values).fill(text);
}

Json Variables::fill(const Json &value) const {
  return Filling(_values).fill(value);
}

std::vector<std::string> namesIn(const std::string &text) {
  std::vector<std::string> names;
  (void)replaceNames(text, [&names](const std::string &name) {
    names.push_back(name);
    return std::string();
  });
  return names;
}

bool isName(const std::string &name) {
  constexpr const char *kAllowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                                   "-_.";
  return !name.empty() && name.find_first_not_of(kAllowed) == std::string::npos;
}

} // namespace norix::assistant::scenario
