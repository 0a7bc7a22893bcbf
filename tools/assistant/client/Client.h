// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_CLIENT_H
#define NORIX_ASSISTANT_CLIENT_CLIENT_H

#include "assistant/client/Answer.h"
#include "assistant/client/Error.h"
#include "assistant/client/Request.h"

#include <rpc-port.h>

#include <functional>
#include <string>

namespace norix::assistant {

/**
 * @brief One connection to an application, driven by the Ecore main loop.
 * @details Connect, set the callback, send requests; the answers come as events. Everything is
 *          called, and every handler is called, on the thread that runs the loop. A handler may
 *          destroy the client. The app id that the application sees is the platform's for this
 *          process (on a desktop the environment variable AUL_APPID).
 */
class Client {
public:
  /** @brief What the client tells. Handlers that are left out are not called. */
  struct Handlers {
    /** The connection stands. */
    std::function<void()> connected;
    /** There is no connection (any more): Failure::CannotConnect or Failure::Disconnected. */
    std::function<void(const Error &)> ended;
    /** A response arrived. */
    std::function<void(Answer)> answered;
    /** Something else arrived: Failure::Malformed. The connection stays. */
    std::function<void(const Error &)> malformed;
  };

  explicit Client(Handlers handlers);
  /** @brief Disconnects; no handler is called. */
  ~Client();
  Client(const Client &) = delete;
  Client &operator=(const Client &) = delete;

  /**
   * @brief Starts connecting to an application; the outcome comes as connected or ended.
   * @throw Error with Failure::CannotConnect when it is known at once
   */
  void connect(const std::string &appId);

  /**
   * @brief Registers the delegate through which the application answers; replaces an earlier one.
   * @details Waits for the application's result: the method is synchronous in the interface.
   * @throw Error with Failure::Refused, Failure::Disconnected or Failure::Malformed
   */
  void setCallback(const Delegate &delegate);

  /** @brief Takes the delegate back; otherwise like setCallback(). */
  void unsetCallback();

  /**
   * @brief Sends a request; the application never confirms it.
   * @throw Error with Failure::Disconnected
   */
  void send(const Request &request);

  /** @brief Sends any bundle as a request, borrowed. For requests that are wrong on purpose. */
  void send(bundle *content);

  /** @brief The port for messages that the interface does not have; null when not connected. */
  rpc_port_h mainPort() const;

private:
  static void onConnected(const char *receiver, const char *portName, rpc_port_h port,
                          void *userData);
  static void onRejected(const char *receiver, const char *portName, void *userData);
  static void onDisconnected(const char *receiver, const char *portName, void *userData);
  static void onReceived(const char *receiver, const char *portName, void *userData);

  void listen();
  void end(const Error &error);
  int awaitResult(const char *method);
  void require(int result);
  Answer receiveAnswer();
  rpc_port_h port(rpc_port_port_type_e type) const;
  Error error(Failure failure, const std::string &what) const;

  Handlers _handlers;
  std::string _appId;
  rpc_port_proxy_h _proxy = nullptr;
  Delegate _delegate;
};

} // namespace norix::assistant

#endif
