/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_ASSISTANT_HPP
#define NORIX_ASSISTANT_HPP

#include <norix/Action.hpp>
#include <norix/Error.hpp>
#include <norix/Request.hpp>
#include <norix/State.hpp>
#include <norix/detail/Handler.hpp>
#include <norix/detail/Registry.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace norix {

/**
 * @brief The voice assistant, as long as the application wants to be driven by it.
 * @details Making one initialises the library, destroying it deinitialises the library and destroys
 * the callables. A process has one at a time. It may be moved, and may be destroyed inside one of
 * its own callables.
 *
 * A callable has one of these forms, and may capture what it likes, move-only values included:
 *
 * | Form | Answer |
 * |---|---|
 * | `[] { return "The lamp is off"; }` | the text returned, at once |
 * | `[](norix::Request request) { … }` | request.answer(), at once or later, from any thread |
 *
 * An exception that leaves a callable is logged with the action's id, and answered with the id and
 * " failed".
 *
 * Thread: made, used and destroyed on the thread of the application's main loop, which exists from
 * the platform's create callback to its terminate callback.
 *
 * Errors: norix::Error is thrown. An application that is compiled without exceptions makes the
 * object with create(); its later failures are logged, and the first is kept: failure().
 * @code
 * norix::Assistant assistant;
 * assistant.onState([&lamp] { return lamp.isOn() ? "on" : "off"; });
 * assistant.onAction("lampOff", [&lamp] {
 *   lamp.switchOff();
 *   return "The lamp is off";
 * });
 * @endcode
 */
class Assistant {
public:
  /**
   * @brief As the constructor, for applications without exceptions.
   * @return The object, or why there is none
   */
  static Result<Assistant> create() {
    Assistant made(Connection::None);
    if (std::optional<Error> error = made._registry->connect()) {
      return Result<Assistant>(std::move(*error));
    }
    return Result<Assistant>(std::move(made));
  }

  /**
   * @brief An object that is nobody's: it takes registrations, and calls nothing of the library.
   * @details For declarations() at build time, where there is no main loop and no platform.
   */
  static Assistant declaring() { return Assistant(Connection::None); }

  /**
   * @brief Makes the application reachable for the assistant.
   * @throw Error  The library could not be initialised, or there is an Assistant already
   */
  Assistant() : Assistant(Connection::None) { fail(_registry->connect()); }

  /** @brief Takes the connection over. */
  Assistant(Assistant &&) noexcept = default;
  /** @brief What this object was, ends. */
  Assistant &operator=(Assistant &&) noexcept = default;
  Assistant(const Assistant &) = delete;
  Assistant &operator=(const Assistant &) = delete;
  /**
   * @brief Answers that threads gave in time are sent; then nobody is called any more.
   * @details On another thread than the main loop's it says so in the log and leaves everything as
   * it is, for the main loop may be inside one of the callables.
   */
  ~Assistant() {
    if (_registry != nullptr && !_registry->mayEndHere()) {
      dlog_print(DLOG_ERROR, detail::kLogTag,
                 "the Assistant was destroyed outside the main loop's thread: it stays as it is");
      static_cast<void>(_registry.release());
    }
  }

  /**
   * @brief Says who answers when the assistant asks for the application's state.
   * @details There is one: a second one replaces the first.
   * @param callable  See the class; with norix/json.hpp it may return whatever converts to JSON
   * @param about     What is declared
   * @throw Error  The library is not initialised any more, memory is short, or this is another
   * thread
   */
  template <class Callable>
  void onState(Callable callable, State about = {}) {
    fail(registry().setState(detail::HandlerFor<Callable>::make(std::move(callable)),
                             std::move(about)));
  }

  /**
   * @brief Says who executes an action, or several.
   * @details There is one callable per action id: a second one replaces the first.
   * @param action     Its id, `{"several", "ids"}`, or an Action
   * @param arguments  The callable, see the class; with norix/json.hpp any number of norix::param
   *                   before it, whose values are its last parameters
   * @throw Error  An id is empty or reserved, the library is not initialised any more, memory is
   *               short, or this is another thread
   */
  template <class... Arguments>
  void onAction(Action action, Arguments &&...arguments) {
    fail(registry().setAction(std::move(action),
                              detail::HandlerFor<detail::Bare<Arguments>...>::make(
                                  std::forward<Arguments>(arguments)...)));
  }

  /** @brief From now on state requests are answered with a failure. @throw Error As onState() */
  void forgetState() { fail(registry().unsetState()); }

  /** @brief From now on the action is unknown. @throw Error As onAction() */
  void forgetAction(const std::string &actionId) { fail(registry().unsetAction(actionId)); }

  /**
   * @brief Says what a request is answered with that is destroyed without an answer.
   * @details Without this, and with an empty text, the assistant waits until its 30 seconds are
   * over. Request::answerIfForgotten() goes first.
   */
  void answerIfForgotten(std::string text) {
    detail::Exchange::instance().setForgottenAnswer(std::move(text));
  }

  /** @brief The first failure of an application that is compiled without exceptions, or null. */
  const Error *failure() const noexcept { return _failure.has_value() ? &*_failure : nullptr; }

  /**
   * @brief The contents of the file norix-actions.json: what was registered, for tools and agents.
   * @details Defined in norix/json.hpp. The actions are sorted by their ids.
   */
  template <class Json = detail::NeedsJson>
  std::string declarations() const {
    return _registry != nullptr ? detail::DeclarationsOf<Json>::text(*_registry)
                                : detail::DeclarationsOf<Json>::text(detail::Registry());
  }

private:
  enum class Connection { None };

  explicit Assistant(Connection /*none*/) : _registry(std::make_unique<detail::Registry>()) {}

  // A moved-from object gets a registry that is not connected, so that its use is an error.
  detail::Registry &registry() {
    if (_registry == nullptr) {
      _registry = std::make_unique<detail::Registry>(detail::Registry::Life::MovedFrom);
    }
    return *_registry;
  }

  void fail(const std::optional<Error> &error) {
    if (!error.has_value()) {
      return;
    }
#ifndef __cpp_exceptions
    if (!_failure.has_value()) {
      _failure = error;
    }
#endif
    detail::raise(*error);
  }

  std::unique_ptr<detail::Registry> _registry;
  std::optional<Error> _failure{};
};

} // namespace norix

#endif
