// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_SESSION_H
#define NORIX_ASSISTANT_CLIENT_SESSION_H

#include "assistant/client/Answer.h"
#include "assistant/client/Client.h"
#include "assistant/client/Request.h"

#include <memory>
#include <string>

namespace norix::assistant {

/**
 * @brief A connection for those who do one thing after the other: every call returns when it is
 *        done, and runs the Ecore main loop meanwhile.
 * @details Not to be called from inside a handler of that loop, and a MainLoop (or ecore_init())
 *          must be there. Move-only; destroying it disconnects.
 * @code
 * MainLoop loop;
 * Session session("org.example.music");
 * Answer answer = session.ask(stateRequest(), 32.0);
 * @endcode
 */
class Session {
public:
  /**
   * @brief Connects to an application and registers a delegate.
   * @param[in] seconds  How long the connection may take
   * @throw Error with any Failure but NoAnswer
   */
  explicit Session(const std::string &appId, double seconds = 10.0, const Delegate &delegate = {});
  Session(Session &&other) noexcept;
  Session &operator=(Session &&other) noexcept;
  ~Session();

  /** @brief Connects without registering a delegate. @throw Error with Failure::CannotConnect */
  static Session connected(const std::string &appId, double seconds = 10.0);

  /**
   * @brief Sends a request and waits for its answer.
   * @throw Error with any Failure but CannotConnect and Refused
   */
  Answer ask(const Request &request, double seconds);

  /**
   * @brief Waits for the answer to a request that was sent before.
   * @details Answers to other requests are dropped.
   * @throw Error with Failure::NoAnswer, Failure::Disconnected or Failure::Malformed
   */
  Answer await(std::uint64_t requestId, double seconds);

  /** @brief Waits for the next answer, whichever request it is for; otherwise like await(). */
  Answer next(double seconds);

  /**
   * @brief Waits for the connection to end; answers that come before are kept for next().
   * @throw Error with Failure::NoAnswer when it does not
   */
  void awaitEnd(double seconds);

  /** @brief The connection itself: to send, to register again, to take the delegate back. */
  Client &client();

private:
  struct State;
  explicit Session(std::unique_ptr<State> state);

  std::unique_ptr<State> _state;
};

} // namespace norix::assistant

#endif
