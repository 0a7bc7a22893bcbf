// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_MESSAGE_H
#define NORIX_ASSISTANT_MCP_MESSAGE_H

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>
#include <string_view>

namespace norix::assistant::mcp {

/// JSON whose members keep their order: what the declarations are read as.
using Json = nlohmann::ordered_json;

/// Error codes of JSON-RPC and of the protocol.
enum ErrorCode : int {
  ParseError = -32700,
  InvalidRequest = -32600,
  MethodNotFound = -32601,
  InvalidParams = -32602,
  InternalError = -32603,
  ResourceNotFound = -32002,
  UnsupportedVersion = -32022
};

/// A request that is answered with a JSON-RPC error.
class RpcError : public std::runtime_error {
public:
  RpcError(ErrorCode code, const std::string &text, Json data = nullptr)
      : std::runtime_error(text), _code(code), _data(std::move(data)) {}

  ErrorCode code() const { return _code; }
  /// Details for the client; null when there are none.
  const Json &data() const { return _data; }

private:
  ErrorCode _code;
  Json _data;
};

/// A line that is no message, with the id that its error carries: null when none could be read.
class BadMessage : public RpcError {
public:
  BadMessage(ErrorCode code, const std::string &text, Json id = nullptr)
      : RpcError(code, text), _id(std::move(id)) {}

  const Json &id() const { return _id; }

private:
  Json _id;
};

/// One message of the client.
struct Message { // NOLINT(bugprone-exception-escape): moving JSON asserts, and never throws.
  enum class Kind { Request, Notification, Response };

  Kind kind = Kind::Request;
  Json id;            ///< A string or an integer; null in a notification.
  std::string method; ///< Empty in a response.
  Json params;        ///< An object, empty when the message has none.
  Json result;        ///< Of a response; null when the client answered with an error.
};

/**
 * @brief Reads a JSON text whose nesting is bounded, for values that strangers send.
 * @throw RpcError with ParseError or InvalidRequest
 */
Json parseJson(std::string_view text);

/**
 * @brief Reads one line of the client.
 * @throw BadMessage when it is not JSON, nested too deeply, or not a message
 */
Message parseMessage(std::string_view line);

/// A response with a result.
Json resultMessage(const Json &id, Json result);
/// A response with an error.
Json errorMessage(const Json &id, const RpcError &error);
/// A notification of the server.
Json notificationMessage(const std::string &method, Json params);

/// One line, without its newline. Bytes that are not UTF-8 become U+FFFD.
std::string toLine(const Json &message);

} // namespace norix::assistant::mcp

#endif
