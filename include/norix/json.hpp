/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_JSON_HPP
#define NORIX_JSON_HPP

/**
 * @file json.hpp
 * @brief The part of norix.hpp that needs nlohmann-json: typed parameters, states and answers as
 *        JSON, and declarations.
 *
 * @code
 * assistant.onState([&player] {
 *   return nlohmann::json{{"title", player.title()}, {"volume", player.volume()}};
 * });
 * assistant.onAction(norix::Action("musicVolume").description("Sets the volume"),
 *                    norix::param<int>("volume").range(0, 100),
 *                    [&player](int volume) { return player.setVolume(volume); });
 * @endcode
 *
 * A callable that answers later takes the request first: `[](norix::Request request, int volume)`.
 */

#include <norix.hpp>
#include <norix/Param.hpp>
#include <norix/detail/Typed.hpp>
#include <norix/detail/declarations.hpp>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace norix {

namespace detail {

// Whatever converts to JSON is an answer, in one line. Bytes that are no UTF-8 are replaced.
template <class Value>
struct TextOf<
    Value,
    std::enable_if_t<!IsText<Value>::value
                     && !std::is_same_v<
                         Value, std::nullptr_t> && std::is_constructible_v<Json, const Value &>>> {
  static constexpr bool kIsKnown = true;
  static std::string of(const Value &value) { return jsonText(Json(value)); }
};

} // namespace detail

/**
 * @brief The form of a JSON object with these members, as a JSON Schema: for State::form().
 * @details Other members are not expected; a std::optional member, and one with a default, may be
 * left out.
 * @code
 * assistant.onState([&lamp] { return lamp.toJson(); },
 *                   norix::State("Whether the lamp is on, and how bright")
 *                       .form(norix::formOf(norix::param<bool>("on"),
 *                                           norix::param<int>("brightness").range(0, 100))));
 * @endcode
 */
template <class... Values>
std::string formOf(Param<Values>... members) {
  return detail::Form<Values...>({std::move(members)...}).schema();
}

/**
 * @brief Prints the declarations when the program was started for them, at build time.
 * @details The CMake function norix_write_declarations() starts the program with the argument
 * `--norix-declarations` and puts what it prints into norix-actions.json.
 * @param argc         What main() got
 * @param argv         What main() got
 * @param registerAll  Called with an Assistant& that is connected to nothing; registers everything
 * @return Whether the declarations were asked for and printed: the program is done then
 * @code
 * int main(int argc, char **argv) {
 *   Music music;
 *   const auto drive = [&music](norix::Assistant &assistant) { music.drive(assistant); };
 *   if (norix::printsDeclarations(argc, argv, drive)) {
 *     return 0;
 *   }
 *   return music.run();
 * }
 * @endcode
 */
template <class Register>
bool printsDeclarations(int argc, const char *const *argv, Register registerAll) {
  if (argc != 2 || std::string_view(argv[1]) != "--norix-declarations") {
    return false;
  }
  Assistant assistant = Assistant::declaring();
  registerAll(assistant);
  static_cast<void>(std::fputs(assistant.declarations().c_str(), stdout));
  return true;
}

} // namespace norix

#endif
