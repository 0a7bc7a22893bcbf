// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_MESSAGE_EXCEPTION_H
#define NORIX_MESSAGE_EXCEPTION_H

namespace rpc_port::message::stub {

/// Base of the channel's exceptions. They are told apart by their type: the classes are empty, and
/// do not derive from std::exception.
class Exception {};

/// The delegate has no callback port, or the connection that registered it is gone.
class NotConnectedSocketException : public Exception {};

/// A once-only delegate was invoked before.
class InvalidCallbackException : public Exception {};

/// The stub could not be created or could not listen.
class InvalidIOException : public Exception {};

} // namespace rpc_port::message::stub

#endif
