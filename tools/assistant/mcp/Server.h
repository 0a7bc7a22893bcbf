// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_SERVER_H
#define NORIX_ASSISTANT_MCP_SERVER_H

#include "assistant/mcp/Caller.h"
#include "assistant/mcp/Catalogue.h"
#include "assistant/mcp/Consent.h"
#include "assistant/mcp/message.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace norix::assistant::mcp {

/**
 * @brief The protocol: takes the client's lines, answers them, and has tools executed.
 * @details Speaks both protocols, decided request by request: one that carries the modern _meta is
 *          served without a session; `initialize` begins the legacy one. It knows no descriptor and
 *          no application, so that a test can drive it line by line.
 */
class Server {
public:
  using Ticket = std::uint64_t;

  /// What the server needs of its surroundings.
  struct Surroundings {
    std::function<void(const Json &)> send;       ///< Writes one message.
    std::function<void(const std::string &)> log; ///< Writes one line for people.
    /// Has a request executed by an application; the outcome comes once, possibly at once.
    std::function<Ticket(const std::string &appId, const Work &, Done)> execute;
    /// Forgets a caller of execute.
    std::function<void(const std::string &appId, Ticket)> cancel;
  };

  struct Settings {
    std::string version;        ///< Of this program.
    bool consentGiven = false;  ///< The user allowed every action when starting the bridge.
    double consentSeconds = 25; ///< How long the user has for a confirmation.
    double progressSeconds = 5; ///< Between two progress notifications.
  };

  Server(Settings settings, Surroundings surroundings, Catalogue catalogue);
  ~Server();
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  /// Takes one line of the client.
  void receive(std::string_view line);

  /// Answers a line that was too long to be read.
  void refuseLongLine(std::size_t bound);

  /// Offers something else from now on, and tells the clients that want to be told.
  void replaceCatalogue(Catalogue catalogue);

private:
  struct Pending;
  /// Answers a request; nothing when the answer comes later.
  using Handler = std::optional<Json> (Server::*)(const Caller &, const Json &params);

  void dispatch(const Message &message);
  void answer(const Message &message);
  Caller callerOf(const Message &message) const;
  static Handler handlerFor(const Caller &caller, const std::string &method);
  void reply(const Caller &caller, Json result);

  std::optional<Json> initialize(const Caller &caller, const Json &params);
  std::optional<Json> discover(const Caller &caller, const Json &params);
  std::optional<Json> acknowledge(const Caller &caller, const Json &params);
  std::optional<Json> listTools(const Caller &caller, const Json &params);
  std::optional<Json> callTool(const Caller &caller, const Json &params);
  std::optional<Json> listResources(const Caller &caller, const Json &params);
  std::optional<Json> listTemplates(const Caller &caller, const Json &params);
  std::optional<Json> readResource(const Caller &caller, const Json &params);
  std::optional<Json> listPrompts(const Caller &caller, const Json &params);
  std::optional<Json> getPrompt(const Caller &caller, const Json &params);
  std::optional<Json> listen(const Caller &caller, const Json &params);

  std::optional<Json> withConsent(const Caller &caller, const Tool &tool, const Json &params);
  std::optional<Json> consentOfModern(const Caller &caller, const Tool &tool, const Json &params);
  void askUser(const Caller &caller, const Tool &tool, const Json &arguments);
  void userAnswered(const Message &message);
  void executeTool(const Caller &caller, const Tool &tool, const Json &arguments);
  void execute(const Caller &caller, const std::string &appId, const Work &work, Done done);

  Pending &pend(const Caller &caller);
  std::unique_ptr<Pending> unpend(const Json &id);
  void cancelled(const Json &params);
  void progress(const Caller &caller, int step);
  void announce(const char *kind, const char *filter);
  void logCall(const std::string &name, const Outcome &outcome) const;

  Settings _settings;
  Surroundings _surroundings;
  Catalogue _catalogue;
  Consent _consent;
  bool _initialized = false;
  bool _legacyElicitation = false;
  int _lastQuestion = 0;
  std::map<std::string, std::unique_ptr<Pending>> _pending; // By the id as JSON.
  std::map<std::string, Json> _subscriptions;               // The filter, by the id as JSON.
};

} // namespace norix::assistant::mcp

#endif
