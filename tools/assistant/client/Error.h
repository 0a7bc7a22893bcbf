// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_ERROR_H
#define NORIX_ASSISTANT_CLIENT_ERROR_H

#include <stdexcept>
#include <string>

namespace norix::assistant {

/** @brief What ends an exchange with an application, or keeps it from beginning. */
enum class Failure {
  CannotConnect, /**< No application listens under the id, or it turned the connection down. */
  Refused,       /**< The application's allow list does not name this process's app id. */
  NoAnswer,      /**< The deadline passed. */
  Disconnected,  /**< The connection ended: the application is gone, or closed it. */
  Malformed      /**< The application sent something that is not a message of the interface. */
};

/** @brief A failed exchange; what() says what happened and with which application. */
class Error : public std::runtime_error {
public:
  Error(Failure failure, const std::string &text) : std::runtime_error(text), _failure(failure) {}

  Failure failure() const { return _failure; }

private:
  Failure _failure;
};

} // namespace norix::assistant

#endif
