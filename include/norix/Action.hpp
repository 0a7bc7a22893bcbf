/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_ACTION_HPP
#define NORIX_ACTION_HPP

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace norix {

/**
 * @brief What an action is called, and, if it is to be declared, what it does.
 * @details Made from an id, or from several that share a callable. The texts are for people and for
 * language models; Assistant::declarations() writes them.
 * @code
 * assistant.onAction({"musicPlay", "musicResume"}, [&player] { return player.play(); });
 * assistant.onAction(norix::Action("musicPause").description("Pauses the music"),
 *                    [&player] { return player.pause(); });
 * @endcode
 */
class Action {
public:
  /** @name Actions of one id, or of several
   * @{ */
  /** @brief Ids as the assistant sends them. */
  Action(const char *id) : _ids{id} {}
  Action(std::string_view id) : _ids{std::string(id)} {}
  Action(const std::string &id) : _ids{id} {}
  Action(std::initializer_list<std::string_view> ids) : _ids(ids.begin(), ids.end()) {}
  /** @} */

  /** @brief A few words for a list of actions: "Volume". */
  Action title(std::string text) && {
    _title = std::move(text);
    return std::move(*this);
  }
  /** @brief What the action does, in a sentence. */
  Action description(std::string text) && {
    _description = std::move(text);
    return std::move(*this);
  }
  /** @brief What a user might say; "{volume}" stands for a parameter. May be called repeatedly. */
  Action utterance(std::string text) && {
    _utterances.push_back(std::move(text));
    return std::move(*this);
  }
  /** @brief Parameters to call the action with, a JSON object. May be called repeatedly. */
  Action example(std::string json) && {
    _examples.push_back(std::move(json));
    return std::move(*this);
  }
  /** @brief Declares that the action changes nothing. */
  Action readOnly() && {
    _isReadOnly = true;
    return std::move(*this);
  }
  /** @brief Declares that what the action changes cannot be had back. */
  Action destructive() && {
    _isDestructive = true;
    return std::move(*this);
  }
  /** @brief Declares that the user is to be asked before. */
  Action confirm() && {
    _needsConfirmation = true;
    return std::move(*this);
  }

  /** @name What was said above
   * @{ */
  /** @brief As declared; owned by the action. */
  const std::vector<std::string> &ids() const noexcept { return _ids; }
  const std::string &title() const &noexcept { return _title; }
  const std::string &description() const &noexcept { return _description; }
  const std::vector<std::string> &utterances() const noexcept { return _utterances; }
  const std::vector<std::string> &examples() const noexcept { return _examples; }
  bool isReadOnly() const noexcept { return _isReadOnly; }
  bool isDestructive() const noexcept { return _isDestructive; }
  bool needsConfirmation() const noexcept { return _needsConfirmation; }
  /** @} */

private:
  std::vector<std::string> _ids;
  std::string _title{};
  std::string _description{};
  std::vector<std::string> _utterances{};
  std::vector<std::string> _examples{};
  bool _isReadOnly = false;
  bool _isDestructive = false;
  bool _needsConfirmation = false;
};

} // namespace norix

#endif
