// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/Server.h"

#include "assistant/mcp/Pending.h"
#include "assistant/mcp/versions.h"

#include <utility>

namespace norix::assistant::mcp {
namespace {

constexpr const char *kInstructions =
    "Each tool has an application on this computer execute an action, as if the user had asked for "
    "it by voice, and returns what the application says. An application does one thing at a time; "
    "requests wait for one another. Read an application's state with its _state tool before and "
    "after acting. When an outcome is unknown, read the state before repeating anything.";

Json capabilities() {
  const Json changes = {{"listChanged", true}};
  return {{"tools", changes}, {"resources", changes}, {"prompts", changes}};
}

bool canFillForms(const Json &clientCapabilities) {
  const Json elicitation = clientCapabilities.value("elicitation", Json());
  return elicitation.is_object() && (elicitation.empty() || elicitation.contains("form"));
}

Json progressTokenOf(const Json &meta) {
  const Json token = meta.is_object() ? meta.value("progressToken", Json()) : Json();
  return token.is_string() || token.is_number() ? token : Json();
}

// Results that a client of the modern protocol may keep for a while carry how long.
bool isCacheable(const Json &result) {
  for (const char *key :
       {"tools", "resources", "resourceTemplates", "prompts", "contents", "supportedVersions"}) {
    if (result.contains(key)) {
      return true;
    }
  }
  return false;
}

} // namespace

Server::Server(Settings settings, Surroundings surroundings, Catalogue catalogue)
    : _settings(std::move(settings)), _surroundings(std::move(surroundings)),
      _catalogue(std::move(catalogue)) {}

Server::~Server() = default;

void Server::receive(std::string_view line) {
  try {
    dispatch(parseMessage(line));
  } catch (const BadMessage &error) {
    _surroundings.send(errorMessage(error.id(), error));
  }
}

void Server::refuseLongLine(std::size_t bound) {
  _surroundings.send(errorMessage(
      nullptr, RpcError(InvalidRequest, "the line is longer than " + std::to_string(bound)
                                            + " bytes; it was skipped")));
}

void Server::dispatch(const Message &message) {
  switch (message.kind) {
  case Message::Kind::Request:
    answer(message);
    break;
  case Message::Kind::Notification:
    if (message.method == "notifications/cancelled") {
      cancelled(message.params);
    }
    break;
  case Message::Kind::Response:
    userAnswered(message);
    break;
  }
}

void Server::answer(const Message &message) {
  try {
    const Caller caller = callerOf(message);
    if (_pending.count(toLine(caller.id)) != 0 || _subscriptions.count(toLine(caller.id)) != 0) {
      throw RpcError(InvalidRequest, "the id " + toLine(caller.id)
                                         + " is that of a request in "
                                           "progress");
    }
    const Handler handler = handlerFor(caller, message.method);
    if (handler == nullptr) {
      throw RpcError(MethodNotFound, "there is no method \"" + message.method + "\"");
    }
    if (std::optional<Json> result = (this->*handler)(caller, message.params)) {
      reply(caller, std::move(*result));
    }
  } catch (const RpcError &error) {
    _surroundings.send(errorMessage(message.id, error));
  } catch (const Json::exception &error) {
    _surroundings.send(errorMessage(message.id, RpcError(InvalidParams, error.what())));
  }
}

Caller Server::callerOf(const Message &message) const {
  const Json meta = message.params.value("_meta", Json());
  Caller caller{message.id, false, _legacyElicitation, progressTokenOf(meta)};
  if (meta.is_object() && meta.contains(kVersionKey)) {
    requireModern(meta);
    caller.modern = true;
    caller.elicitation = canFillForms(meta.at(kCapabilitiesKey));
    return caller;
  }
  const bool needsNoSession = message.method == "initialize" || message.method == "ping";
  if (!_initialized && !needsNoSession) {
    throw RpcError(InvalidParams, std::string("begin with \"initialize\", or carry \"")
                                      + kVersionKey
                                      + "\" in _meta; supported there: " + kModernVersion);
  }
  return caller;
}

Server::Handler Server::handlerFor(const Caller &caller, const std::string &method) {
  static const std::map<std::string, Handler> both = {
      {"tools/list", &Server::listTools},
      {"tools/call", &Server::callTool},
      {"resources/list", &Server::listResources},
      {"resources/templates/list", &Server::listTemplates},
      {"resources/read", &Server::readResource},
      {"prompts/list", &Server::listPrompts},
      {"prompts/get", &Server::getPrompt}};
  // Some clients subscribe to resources unasked and fail when that is an error.
  static const std::map<std::string, Handler> legacy = {
      {"initialize", &Server::initialize},
      {"ping", &Server::acknowledge},
      {"resources/subscribe", &Server::acknowledge},
      {"resources/unsubscribe", &Server::acknowledge}};
  static const std::map<std::string, Handler> modern = {{"server/discover", &Server::discover},
                                                        {"subscriptions/listen", &Server::listen}};

  for (const auto *methods : {&both, caller.modern ? &modern : &legacy}) {
    if (const auto found = methods->find(method); found != methods->end()) {
      return found->second;
    }
  }
  return nullptr;
}

void Server::reply(const Caller &caller, Json result) {
  if (caller.modern) {
    if (isCacheable(result)) {
      result["ttlMs"] = 0;
      result["cacheScope"] = "private";
    }
    if (!result.contains("resultType")) {
      result["resultType"] = "complete";
    }
    result["_meta"][kServerInfoKey] = serverInfo(_settings.version);
  }
  _surroundings.send(resultMessage(caller.id, std::move(result)));
}

std::optional<Json> Server::initialize(const Caller & /*caller*/, const Json &params) {
  const Json requested = params.value("protocolVersion", Json());
  if (!requested.is_string()) {
    throw RpcError(InvalidParams, "\"protocolVersion\" must be a string");
  }
  const Json client = params.value("capabilities", Json());
  _legacyElicitation = client.is_object() && canFillForms(client);
  _initialized = true;
  return Json{{"protocolVersion", legacyVersionFor(requested.get<std::string>())},
              {"capabilities", capabilities()},
              {"serverInfo", serverInfo(_settings.version)},
              {"instructions", kInstructions}};
}

std::optional<Json> Server::discover(const Caller & /*caller*/, const Json & /*params*/) {
  return Json{{"supportedVersions", supportedVersions()},
              {"capabilities", capabilities()},
              {"instructions", kInstructions}};
}

std::optional<Json> Server::acknowledge(const Caller & /*caller*/, const Json & /*params*/) {
  return Json::object();
}

Server::Pending &Server::pend(const Caller &caller) {
  auto &pending = _pending[toLine(caller.id)];
  pending = std::make_unique<Pending>();
  if (!caller.progressToken.is_null()) {
    pending->heartbeat.emplace(_settings.progressSeconds,
                               [this, caller](int step) { progress(caller, step); });
  }
  return *pending;
}

std::unique_ptr<Server::Pending> Server::unpend(const Json &id) {
  const auto found = _pending.find(toLine(id));
  if (found == _pending.end()) {
    return nullptr;
  }
  std::unique_ptr<Pending> pending = std::move(found->second);
  _pending.erase(found);
  return pending;
}

void Server::cancelled(const Json &params) {
  const Json id = params.value("requestId", Json());
  _subscriptions.erase(toLine(id));
  if (const std::unique_ptr<Pending> pending = unpend(id); pending != nullptr && pending->cancel) {
    pending->cancel();
  }
}

void Server::progress(const Caller &caller, int step) {
  _surroundings.send(
      notificationMessage("notifications/progress", {{"progressToken", caller.progressToken},
                                                     {"progress", step},
                                                     {"message", "waiting for the application"}}));
}

std::optional<Json> Server::listen(const Caller &caller, const Json &params) {
  const Json wanted = params.value("notifications", Json());
  if (!wanted.is_object()) {
    throw RpcError(InvalidParams, "\"notifications\" must be an object");
  }
  Json granted = Json::object();
  for (const char *kind : {"toolsListChanged", "resourcesListChanged", "promptsListChanged"}) {
    if (wanted.value(kind, Json()) == true) {
      granted[kind] = true;
    }
  }
  _surroundings.send(notificationMessage(
      "notifications/subscriptions/acknowledged",
      {{"_meta", {{kSubscriptionKey, caller.id}}}, {"notifications", granted}}));
  _subscriptions[toLine(caller.id)] = granted;
  return std::nullopt;
}

void Server::replaceCatalogue(Catalogue catalogue) {
  _catalogue = std::move(catalogue);
  announce("notifications/tools/list_changed", "toolsListChanged");
  announce("notifications/resources/list_changed", "resourcesListChanged");
  announce("notifications/prompts/list_changed", "promptsListChanged");
}

void Server::announce(const char *kind, const char *filter) {
  if (_initialized) {
    _surroundings.send(notificationMessage(kind, Json::object()));
  }
  for (const auto &[id, granted] : _subscriptions) {
    if (granted.contains(filter)) {
      _surroundings.send(
          notificationMessage(kind, {{"_meta", {{kSubscriptionKey, Json::parse(id)}}}}));
    }
  }
}

} // namespace norix::assistant::mcp
