// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_UNIT_ASSISTANT_MCP_DESK_H
#define NORIX_TESTS_UNIT_ASSISTANT_MCP_DESK_H

#include "assistant/client/MainLoop.h"
#include "assistant/mcp/Server.h"

#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::mcp::testing {

/// A server between a test that plays the client and a test that plays the applications.
class Desk {
public:
  /// A request that an application is asked to execute.
  struct Execution {
    std::string appId;
    Work work;
    Done done;
    bool cancelled = false;
  };

  explicit Desk(Server::Settings settings = {"1.2.3"});

  /// Hands the server one line.
  void line(const std::string &text) { _server.receive(text); }
  /// Sends a request of the legacy protocol, after its handshake.
  void legacy(const Json &id, const std::string &method, const Json &params = Json::object());
  /// Sends a request of the modern protocol.
  void modern(const Json &id, const std::string &method, Json params = Json::object(),
              const Json &capabilities = Json::object());
  void notify(const std::string &method, const Json &params);
  void handshake(const Json &capabilities = Json::object());
  void cancel(const Json &id) { notify("notifications/cancelled", {{"requestId", id}}); }

  /// The last message of the server; null when it has sent none since the last look.
  Json last();
  /// The error code of the last message, and 0 when it is no error.
  int lastError();
  /// The text of the last message, a tool's result.
  std::string lastText();

  /// Lets the main loop turn until the server has sent a message.
  void turnUntilSent();

  Server &server() { return _server; }
  std::vector<Execution> &executions() { return _executions; }
  const std::vector<std::string> &log() const { return _log; }

private:
  MainLoop _loop;
  std::vector<Json> _sent;
  std::vector<Execution> _executions;
  std::vector<std::string> _log;
  Server _server;
};

/// Declarations of a small player: play (plain), volume (a number), wipe (to be confirmed).
Catalogue playerCatalogue();

} // namespace norix::assistant::mcp::testing

#endif
