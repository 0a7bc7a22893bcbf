/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_REQUEST_HPP
#define NORIX_REQUEST_HPP

#include <norix/Outcome.hpp>
#include <norix/detail/Exchange.hpp>
#include <norix/detail/text.hpp>
#include <norix/detail/usedOnce.hpp>

#include <memory>
#include <string>
#include <utility>

namespace norix {

namespace detail {
class Incoming;
}

/**
 * @brief A request of the assistant that waits for its answer.
 * @details A callable that takes a Request answers it when it likes: inside, or later, within the
 * 30 seconds that the assistant waits. Until then the request may be moved: into a member, a
 * lambda, a timer, a thread. It is answered once. The library holds one request at a time, so a
 * newer one of either kind replaces it; its answer is then dropped, and never taken for the newer
 * one's.
 *
 * A request that is destroyed without an answer while somebody waits says so in the platform log
 * (tag NORIX-CPP), and answers with a text of the application's when it was given one:
 * answerIfForgotten().
 *
 * Thread: one thread at a time may use the object, whichever it is. An answer from another thread
 * than the main loop's finds its way there, and is harmless when the Assistant is gone by then.
 * @code
 * assistant.onAction("musicNext", [&player](norix::Request request) {
 *   std::thread([&player, request = std::move(request)]() mutable {
 *     request.answer("Playing " + player.loadNext());
 *   }).detach();
 * });
 * @endcode
 */
class NORIX_USED_ONCE Request {
public:
  /** @brief Takes the request over; the other one can no longer be answered. */
  Request(Request &&other) noexcept
      : _id(std::exchange(other._id, 0)), _actionId(std::move(other._actionId)),
        _params(std::move(other._params)), _forgottenAnswer(std::move(other._forgottenAnswer)) {}

  /** @brief The request that this object held is destroyed. */
  Request &operator=(Request &&other) noexcept {
    if (this != &other) {
      forget();
      _id = other._id;
      _actionId = std::move(other._actionId);
      _params = std::move(other._params);
      _forgottenAnswer = std::move(other._forgottenAnswer);
      // Last, so that the compiler still knows it when the other one is answered.
      other._id = 0;
    }
    return *this;
  }

  Request(const Request &) = delete;
  Request &operator=(const Request &) = delete;

  ~Request() {
    forget();
    detail::Exchange::instance().recycle(_params);
  }

  /**
   * @brief Answers the request. Afterwards this object is spent.
   * @details A second answer does not compile where the compiler sees it, and is refused otherwise.
   * @param text  A std::string, std::string_view or C text, in UTF-8, copied at once; it ends at
   * its first NUL. For the user, unless the application and the assistant have agreed otherwise.
   * With norix/json.hpp also whatever converts to JSON
   * @return What became of it; everything but Outcome::Sent and Outcome::OnItsWay is in the log
   */
  template <class Text>
  // Inlined, so that GCC sees a request that is spent.
  __attribute__((always_inline)) NORIX_USES Outcome answer(const Text &text) {
    detail::refuseSpent(_id == 0);
    auto &&answered = detail::TextOf<detail::Bare<std::decay_t<const Text &>>>::of(text);
    const Outcome outcome = give(detail::cText(answered));
    _id = 0;
    return outcome;
  }

  /**
   * @brief Whether somebody still waits: not answered, not replaced, not timed out.
   * @details On the main loop's thread the library is asked, which costs a line in its log. Another
   * thread is told what the main loop knew last: there, a time-out is not seen.
   * An assistant that has disconnected is not noticed; answer() returns Outcome::Failed then.
   */
  bool isCurrent() const noexcept { return detail::Exchange::instance().isCurrent(_id, _actionId); }

  /**
   * @brief False for a request that arrived before its action was registered, and for a spent one.
   * @details The library can have such a request executed, but not answered: the assistant is told
   * after 30 seconds that it timed out. Register actions right after the Assistant is made.
   */
  bool canBeAnswered() const noexcept { return _id != 0 && !detail::isEarly(_id); }

  /** @brief The id of the action, "getAppContext" for the state; empty in a moved-from request. */
  const std::string &actionId() const noexcept {
    return _actionId != nullptr ? *_actionId : none();
  }

  /**
   * @brief The parameters of the action, a text; empty for the state, and when there are none.
   * @details A copy that lives as long as this object. What is in it is between the assistant and
   * the application; usually JSON: norix/json.hpp.
   */
  const std::string &params() const noexcept { return _params; }

  /** @brief Should this request be destroyed without an answer, it is answered with this text. */
  void answerIfForgotten(std::string text) {
    _forgottenAnswer = std::make_unique<std::string>(std::move(text));
  }

private:
  friend class detail::Incoming;

  // For good: a thread may still ask while the process ends.
  static const std::string &none() {
    static const std::string *const text = new std::string;
    return *text;
  }

  Request(detail::RequestId id, const detail::SharedId &actionId, const char *params)
      : _id(id), _actionId(actionId), _params(detail::Exchange::instance().copied(params)) {}

  Outcome give(const char *text) noexcept {
    return detail::Exchange::instance().answer(_id, _actionId, text);
  }

  void forget() noexcept {
    if (canBeAnswered()) {
      detail::Exchange::instance().forgotten(
          _id, _actionId,
          _forgottenAnswer != nullptr ? std::move(*_forgottenAnswer) : std::string());
    }
  }

  detail::RequestId _id;
  detail::SharedId _actionId;
  std::string _params;
  // Most requests have none, and pay for a pointer.
  std::unique_ptr<std::string> _forgottenAnswer{};
};

} // namespace norix

#endif
