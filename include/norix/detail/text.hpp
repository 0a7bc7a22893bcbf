/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_TEXT_HPP
#define NORIX_DETAIL_TEXT_HPP

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace norix {
namespace detail {

// False, but not before a template is used: for static_assert.
template <class...>
struct Never : std::false_type {};

template <class Value>
using Bare = std::remove_cv_t<std::remove_reference_t<Value>>;

// C texts, std::string and std::string_view. Nothing that only converts to one of them: a JSON
// value does, and would throw.
template <class Value>
struct IsText
    : std::bool_constant<
          std::is_same_v<
              Value,
              const char
                  *> || std::is_same_v<Value, char *> || std::is_same_v<Value, std::string> || std::is_same_v<Value, std::string_view>> {
};

// How a value becomes the text of an answer. norix/json.hpp adds what converts to JSON.
template <class Value, class = void>
struct TextOf {
  static constexpr bool kIsKnown = false;
  static std::string of(const Value & /*value*/) {
    static_assert(!std::is_same_v<Value, std::nullptr_t>,
                  "norix: null is no answer; the assistant would be sent the word \"null\"");
    static_assert(
        std::is_same_v<Value, std::nullptr_t> || Never<Value>::value,
        "norix: an answer is a text (std::string, std::string_view, const char *); include "
        "<norix/json.hpp> to answer with a value that converts to JSON");
    return {};
  }
};

template <class Value>
struct TextOf<Value, std::enable_if_t<IsText<Value>::value>> {
  static constexpr bool kIsKnown = true;
  // A C text or a std::string is used as it is, a std::string_view has no end that C could find.
  static decltype(auto) of(const Value &value) {
    if constexpr (std::is_same_v<Value, std::string>) {
      return static_cast<const std::string &>(value);
    } else if constexpr (std::is_same_v<Value, std::string_view>) {
      return std::string(value);
    } else {
      return static_cast<const char *>(value);
    }
  }
};

inline const char *cText(const char *text) noexcept {
  return text;
}
inline const char *cText(const std::string &text) noexcept {
  return text.c_str();
}

} // namespace detail
} // namespace norix

#endif
