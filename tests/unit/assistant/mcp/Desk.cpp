// SPDX-License-Identifier: Apache-2.0
#include "unit/assistant/mcp/Desk.h"

#include "assistant/mcp/versions.h"

#include <Ecore.h>

#include <utility>

namespace norix::assistant::mcp::testing {
namespace {

constexpr const char *kDeclarations = R"({
  "version": 1,
  "state": {
    "description": "What plays",
    "form": {"type": "object", "properties": {"volume": {"type": "integer", "description": "0 to 100"}},
             "required": ["volume"]}
  },
  "actions": [
    {"id": "play", "title": "Play", "description": "Starts the music", "readOnly": false,
     "utterances": ["play something"]},
    {"id": "volume", "title": "Volume", "description": "Sets the volume",
     "parameters": {"type": "object",
                    "properties": {"volume": {"type": "integer", "description": "How loud", "maximum": 100}},
                    "required": ["volume"]},
     "utterances": ["set the volume to {volume}"]},
    {"id": "wipe", "title": "Wipe", "description": "Deletes all music", "destructive": true,
     "confirm": true}
  ]
})";

Json request(const Json &id, const std::string &method, const Json &params) {
  return {{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", params}};
}

} // namespace

Catalogue playerCatalogue() {
  actions::Reading reading = actions::parse(kDeclarations);
  if (!reading.isUsable()) {
    throw std::logic_error(reading.findings.front().toString());
  }
  return makeCatalogue({{"org.example.player", reading.declarations}}, false);
}

Desk::Desk(Server::Settings settings)
    : _server(std::move(settings),
              {[this](const Json &message) { _sent.push_back(message); },
               [this](const std::string &text) { _log.push_back(text); },
               [this](const std::string &appId, const Work &work, Done done) -> Server::Ticket {
                 _executions.push_back({appId, work, std::move(done)});
                 return _executions.size() - 1;
               },
               [this](const std::string & /*appId*/, Server::Ticket ticket) {
                 _executions.at(ticket).cancelled = true;
               }},
              playerCatalogue()) {}

void Desk::legacy(const Json &id, const std::string &method, const Json &params) {
  line(toLine(request(id, method, params)));
}

void Desk::modern(const Json &id, const std::string &method, Json params,
                  const Json &capabilities) {
  params["_meta"][kVersionKey] = kModernVersion;
  params["_meta"][kCapabilitiesKey] = capabilities;
  line(toLine(request(id, method, params)));
}

void Desk::notify(const std::string &method, const Json &params) {
  line(toLine(Json{{"jsonrpc", "2.0"}, {"method", method}, {"params", params}}));
}

void Desk::handshake(const Json &capabilities) {
  legacy("handshake", "initialize",
         {{"protocolVersion", "2025-11-25"}, {"capabilities", capabilities}});
  notify("notifications/initialized", Json::object());
  _sent.clear();
}

Json Desk::last() {
  Json message = _sent.empty() ? Json() : _sent.back();
  _sent.clear();
  return message;
}

int Desk::lastError() {
  const Json message = last();
  return message.contains("error") ? message.at("error").at("code").get<int>() : 0;
}

std::string Desk::lastText() {
  return last().at("result").at("content").at(0).at("text").get<std::string>();
}

void Desk::turnUntilSent() {
  while (_sent.empty()) {
    ecore_main_loop_iterate();
  }
}

} // namespace norix::assistant::mcp::testing
