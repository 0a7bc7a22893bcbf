/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_STATE_HPP
#define NORIX_STATE_HPP

#include <string>
#include <utility>
#include <vector>

namespace norix {

/**
 * @brief What is declared about the application's state; Assistant::declarations() writes it.
 * @code
 * assistant.onState([&lamp] { return lamp.toJson(); },
 *                   norix::State("Whether the lamp is on").example(R"({"lamp":"on"})"));
 * @endcode
 */
class State {
public:
  /** @brief Nothing is declared. */
  State() = default;
  /** @param description  What the state tells, in a sentence */
  State(std::string description) : _description(std::move(description)) {}

  /** @brief The form of the state's text, a JSON Schema; without it, the text is free. */
  State form(std::string schema) && {
    _form = std::move(schema);
    return std::move(*this);
  }
  /** @brief A state, in JSON. May be called repeatedly. */
  State example(std::string json) && {
    _examples.push_back(std::move(json));
    return std::move(*this);
  }

  /** @name What was said above
   * @{ */
  /** @brief As declared; owned by the state. */
  const std::string &description() const noexcept { return _description; }
  const std::string &form() const &noexcept { return _form; }
  const std::vector<std::string> &examples() const noexcept { return _examples; }
  /** @} */

private:
  std::string _description{};
  std::string _form{};
  std::vector<std::string> _examples{};
};

} // namespace norix

#endif
