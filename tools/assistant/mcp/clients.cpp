// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/clients.h"

#include "assistant/mcp/message.h"

#include <array>

namespace norix::assistant::mcp {
namespace {

constexpr const char *kProgram = "norix-assistant";

using Writer = std::string (*)(const Json &arguments);

struct Client {
  const char *name;
  const char *place; ///< Where the text belongs.
  Writer write;
};

std::string asMcpServers(const Json &arguments) {
  const Json entry = {{"command", kProgram}, {"args", arguments}};
  return Json{{"mcpServers", {{"norix", entry}}}}.dump(2);
}

std::string asServers(const Json &arguments) {
  const Json entry = {{"type", "stdio"}, {"command", kProgram}, {"args", arguments}};
  return Json{{"servers", {{"norix", entry}}}}.dump(2);
}

// TOML's basic strings and arrays of them are written as JSON's.
std::string asToml(const Json &arguments) {
  return "[mcp_servers.norix]\ncommand = " + Json(kProgram).dump() + "\nargs = " + arguments.dump();
}

std::string quoted(const std::string &word) {
  std::string text = "'";
  for (const char character : word) {
    text += character == '\'' ? std::string("'\\''") : std::string(1, character);
  }
  return text + "'";
}

std::string asCommand(const Json &arguments) {
  std::string text = std::string("claude mcp add norix -- ") + kProgram;
  for (const Json &argument : arguments) {
    text += ' ' + quoted(argument.get<std::string>());
  }
  return text;
}

constexpr std::array<Client, 6> kClients = {{
    {"claude-code", "a shell: run it once", asCommand},
    {"claude-desktop", "claude_desktop_config.json", asMcpServers},
    {"codex", "~/.codex/config.toml", asToml},
    {"cursor", "~/.cursor/mcp.json", asMcpServers},
    {"gemini", "~/.gemini/settings.json", asMcpServers},
    {"vscode", ".vscode/mcp.json", asServers},
}};

} // namespace

std::vector<std::string> knownClients() {
  std::vector<std::string> names;
  names.reserve(kClients.size());
  for (const Client &client : kClients) {
    names.emplace_back(client.name);
  }
  return names;
}

ClientConfig clientConfig(const std::string &client, const std::vector<std::string> &arguments) {
  Json all = Json::array({"mcp"});
  for (const std::string &argument : arguments) {
    all.push_back(argument);
  }
  for (const Client &known : kClients) {
    if (client == known.name) {
      return {known.place, known.write(all)};
    }
  }
  return {};
}

} // namespace norix::assistant::mcp
