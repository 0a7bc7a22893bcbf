/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_PARAM_HPP
#define NORIX_PARAM_HPP

#include <norix/detail/Element.hpp>
#include <norix/detail/text.hpp>

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace norix {

namespace detail {

template <class Value>
struct OptionalOf {
  static constexpr bool kIsOptional = false;
  using Inner = Value;
};
template <class Value>
struct OptionalOf<std::optional<Value>> {
  static constexpr bool kIsOptional = true;
  using Inner = Value;
};

template <class Value>
struct ListOf {
  static constexpr bool kIsList = false;
  using Inner = Value;
};
template <class Value>
struct ListOf<std::vector<Value>> {
  static constexpr bool kIsList = true;
  using Inner = Value;
};

} // namespace detail

/**
 * @brief A parameter of an action: a member of the JSON object in the request, and its type.
 * @details Value is bool, an integer, a floating-point number, std::string, an enumeration with
 * oneOf(), a std::vector of one of these, or a std::optional of one of these. A request whose
 * parameters are not as they have to be is answered with a sentence that names the parameter, what
 * was expected and what came; the callable is not called. Members without a norix::Param are
 * ignored.
 * @code
 * assistant.onAction("musicVolume", norix::param<int>("volume").range(0, 100),
 *                    [&player](int volume) { return player.setVolume(volume); });
 * @endcode
 */
template <class Value>
class Param {
  using Present = typename detail::OptionalOf<Value>::Inner;
  using List = detail::ListOf<Present>;
  using Single = typename List::Inner;
  using Element = detail::Element<Single>;

  static_assert(std::is_same_v<Single, bool> || Element::kIsNumber || Element::kIsText
                    || std::is_enum_v<Single>,
                "norix: a parameter is a bool, a number, a std::string, an enumeration, a "
                "std::vector of one of these, or a std::optional of one of these");
  static_assert(!(List::kIsList && std::is_same_v<Single, bool>),
                "norix: a std::vector<bool> is no list of values; use std::vector<std::string>");

public:
  /** @brief A parameter of this name. */
  explicit Param(std::string name) : _name(std::move(name)) {}

  /** @brief What it means, for declarations(). */
  Param description(std::string text) && {
    _description = std::move(text);
    return std::move(*this);
  }

  /** @brief The bounds of a number, both included; in a list, of each. */
  Param range(Single least, Single greatest) && {
    static_assert(Element::kIsNumber, "norix: range() is for numbers; a text has a length()");
    _element.range.emplace(std::move(least), std::move(greatest));
    return std::move(*this);
  }

  /** @brief The bounds of a text's characters, or of a list's elements; both included. */
  Param length(std::size_t least, std::size_t greatest) && {
    static_assert(Element::kIsText || List::kIsList,
                  "norix: length() is for texts and lists; a number has a range()");
    (List::kIsList ? _length : _element.length).emplace(least, greatest);
    return std::move(*this);
  }

  /** @brief The only values there are; in a list, of each element. */
  template <class Chosen = Single, std::enable_if_t<!std::is_enum_v<Chosen>, int> = 0>
  Param oneOf(std::initializer_list<Chosen> values) && {
    for (const Chosen &value : values) {
      _element.choices.push_back({detail::Json(value), value});
    }
    return std::move(*this);
  }

  /** @brief The names of an enumeration's values; in a list, of each element. */
  template <class Chosen = Single, std::enable_if_t<std::is_enum_v<Chosen>, int> = 0>
  Param oneOf(std::initializer_list<std::pair<const char *, Chosen>> names) && {
    for (const auto &[name, value] : names) {
      _element.choices.push_back({detail::Json(name), value});
    }
    return std::move(*this);
  }

  /** @brief What the callable gets when the parameter does not come. */
  Param orElse(Present value) && {
    static_assert(!detail::OptionalOf<Value>::kIsOptional,
                  "norix: a std::optional parameter has no other value: it is empty then");
    _otherwise = std::move(value);
    return std::move(*this);
  }

  // For the interface's own use.
  /** @cond */
  const std::string &name() const noexcept { return _name; }
  bool isRequired() const noexcept {
    return !detail::OptionalOf<Value>::kIsOptional && !_otherwise.has_value();
  }
  std::string expected() const {
    return List::kIsList ? "a list" + listLength() + ", each " + _element.expected()
                         : _element.expected();
  }

  // False for what cannot be right; null means that the parameter did not come.
  bool read(const detail::Json *written, Value &value) const {
    if (written == nullptr) {
      if (_otherwise.has_value()) {
        value = *_otherwise;
      }
      return !isRequired();
    }
    Present present{};
    const bool isRight = readPresent(*written, present);
    if (isRight) {
      value = std::move(present);
    }
    return isRight;
  }

  detail::Json schema() const {
    detail::Json form = _element.schema();
    if (List::kIsList) {
      form = {{"type", "array"}, {"items", std::move(form)}};
      if (_length.has_value()) {
        form["minItems"] = _length->first;
        form["maxItems"] = _length->second;
      }
    }
    if (!_description.empty()) {
      form["description"] = _description;
    }
    if (_otherwise.has_value()) {
      form["default"] = written(*_otherwise);
    }
    return form;
  }

  // Why this parameter can never be right; empty when it can.
  std::string complaint() const {
    std::string why = _element.complaint();
    Present again{};
    if (why.empty() && _length.has_value() && _length->first > _length->second) {
      why = "nothing lies within its bounds";
    } else if (why.empty() && _otherwise.has_value() && !readPresent(written(*_otherwise), again)) {
      why = "the value of orElse() is not " + expected();
    }
    return why.empty() ? why : "the parameter \"" + _name + "\" can never be right: " + why;
  }
  /** @endcond */

private:
  bool readPresent(const detail::Json &written, Present &present) const {
    if constexpr (List::kIsList) {
      if (!written.is_array()
          || (_length.has_value()
              && (written.size() < _length->first || written.size() > _length->second))) {
        return false;
      }
      for (const detail::Json &element : written) {
        Single single{};
        if (!_element.read(element, single)) {
          return false;
        }
        present.push_back(std::move(single));
      }
      return true;
    } else {
      return _element.read(written, present);
    }
  }

  detail::Json written(const Present &value) const {
    if constexpr (List::kIsList) {
      detail::Json list = detail::Json::array();
      for (const Single &single : value) {
        list.push_back(writtenSingle(single));
      }
      return list;
    } else {
      return writtenSingle(value);
    }
  }

  detail::Json writtenSingle(const Single &value) const {
    if constexpr (std::is_enum_v<Single>) {
      for (const auto &choice : _element.choices) {
        if (choice.value == value) {
          return choice.written;
        }
      }
    }
    return Element::write(value);
  }

  std::string listLength() const {
    return _length.has_value() ? " of " + std::to_string(_length->first) + " to "
                                     + std::to_string(_length->second) + " elements"
                               : std::string();
  }

  std::string _name;
  std::string _description{};
  Element _element{};
  std::optional<std::pair<std::size_t, std::size_t>> _length{};
  std::optional<Present> _otherwise{};
};

/**
 * @brief A parameter of this name; see Param.
 * @code
 * auto title = norix::param<std::optional<std::string>>("title").length(1, 80);
 * auto tracks = norix::param<std::vector<int>>("tracks").range(1, 99).length(1, 10);
 * auto mode = norix::param<Repeat>("mode")
 *                 .oneOf({{"off", Repeat::Off}, {"all", Repeat::All}})
 *                 .orElse(Repeat::Off);
 * @endcode
 */
template <class Value>
Param<Value> param(std::string name) {
  return Param<Value>(std::move(name));
}

} // namespace norix

#endif
