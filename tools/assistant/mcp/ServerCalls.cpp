// SPDX-License-Identifier: Apache-2.0
//
// Tool calls: checked, confirmed by the user where that is asked for, executed.
#include "assistant/mcp/Server.h"

#include "assistant/mcp/Pending.h"
#include "assistant/mcp/results.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace norix::assistant::mcp {
namespace {

constexpr const char *kQuestion = "confirm";

// Without any, some models write null.
Json argumentsOf(const Json &params) {
  Json arguments = params.value("arguments", Json());
  return arguments.is_null() ? Json::object() : arguments;
}

Json notConfirmed(const std::string &why) {
  return toolError("Not executed: " + why);
}

} // namespace

std::optional<Json> Server::callTool(const Caller &caller, const Json &params) {
  const Json name = params.value("name", Json());
  const auto tool = std::find_if(_catalogue.tools.begin(), _catalogue.tools.end(),
                                 [&name](const Tool &each) { return name == each.name; });
  if (tool == _catalogue.tools.end()) {
    throw RpcError(InvalidParams, "unknown tool: " + toLine(name));
  }
  const Json arguments = argumentsOf(params);
  if (const auto problem = tool->checkArguments(arguments)) {
    return toolError("Not executed, safe to retry: " + *problem);
  }
  if (tool->needsConsent && !_settings.consentGiven) {
    return withConsent(caller, *tool, params);
  }
  executeTool(caller, *tool, arguments);
  return std::nullopt;
}

std::optional<Json> Server::withConsent(const Caller &caller, const Tool &tool,
                                        const Json &params) {
  if (!caller.elicitation) {
    return notConfirmed("this action needs the user's confirmation, and this client cannot ask for "
                        "it. The user can allow all actions by starting norix-assistant mcp with "
                        "--yes.");
  }
  if (caller.modern) {
    return consentOfModern(caller, tool, params);
  }
  askUser(caller, tool, argumentsOf(params));
  return std::nullopt;
}

std::optional<Json> Server::consentOfModern(const Caller &caller, const Tool &tool,
                                            const Json &params) {
  const Json arguments = argumentsOf(params);
  const Json answers = params.value("inputResponses", Json::object());
  const Json state = params.value("requestState", Json());
  if (answers.is_object() && answers.contains(kQuestion)) {
    if (!state.is_string() || !_consent.redeem(state.get<std::string>(), tool, arguments)) {
      throw RpcError(InvalidParams, "\"requestState\" is not that of a question about this call");
    }
    if (!isConsent(answers.at(kQuestion))) {
      return notConfirmed("the user did not confirm it.");
    }
    executeTool(caller, tool, arguments);
    return std::nullopt;
  }
  const Json question = {{"method", "elicitation/create"},
                         {"params", consentForm(tool, arguments)}};
  return Json{{"resultType", "input_required"},
              {"inputRequests", {{kQuestion, question}}},
              {"requestState", _consent.issue(tool, arguments)}};
}

void Server::askUser(const Caller &caller, const Tool &tool, const Json &arguments) {
  Pending &pending = pend(caller);
  pending.question = "norix-" + std::to_string(++_lastQuestion);
  pending.userAnswered = [this, caller, tool, arguments](const Json &answer) {
    const std::unique_ptr<Pending> answered = unpend(caller.id);
    if (isConsent(answer)) {
      executeTool(caller, tool, arguments);
    } else {
      reply(caller, notConfirmed("the user did not confirm it."));
    }
  };
  pending.patience = std::make_unique<Timer>(_settings.consentSeconds, [this, caller] {
    const std::unique_ptr<Pending> expired = unpend(caller.id);
    reply(caller, notConfirmed("the user did not confirm it in time."));
  });
  _surroundings.send({{"jsonrpc", "2.0"},
                      {"id", pending.question},
                      {"method", "elicitation/create"},
                      {"params", consentForm(tool, arguments)}});
}

void Server::userAnswered(const Message &message) {
  for (const auto &[id, pending] : _pending) {
    if (!pending->question.empty() && message.id == pending->question) {
      const auto answered = pending->userAnswered;
      answered(message.result);
      return;
    }
  }
}

void Server::executeTool(const Caller &caller, const Tool &tool, const Json &arguments) {
  const bool isState = tool.actionId == kStateActionId;
  execute(caller, tool.appId, {tool.actionId, isState ? std::string() : toLine(arguments)},
          [this, caller, tool](const Outcome &outcome) {
            logCall(tool.name, outcome);
            reply(caller, toolResult(tool, outcome));
          });
}

void Server::execute(const Caller &caller, const std::string &appId, const Work &work, Done done) {
  pend(caller);
  const Ticket ticket =
      _surroundings.execute(appId, work, [this, id = caller.id, done](const Outcome &outcome) {
        if (const std::unique_ptr<Pending> pending = unpend(id)) {
          done(outcome);
        }
      });
  // The outcome may be here already: a full queue refuses at once.
  if (const auto pending = _pending.find(toLine(caller.id)); pending != _pending.end()) {
    pending->second->cancel = [this, appId, ticket] { _surroundings.cancel(appId, ticket); };
  }
}

void Server::logCall(const std::string &name, const Outcome &outcome) const {
  std::array<char, 96> times{};
  std::snprintf(times.data(), times.size(), "  waited %.0f ms  ran %.0f ms  ",
                outcome.waited * 1000, outcome.ran * 1000);
  _surroundings.log(name + times.data() + word(outcome.kind));
}

} // namespace norix::assistant::mcp
