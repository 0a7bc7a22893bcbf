// SPDX-License-Identifier: Apache-2.0
//
// The lists, and what is read by its name.
#include "assistant/mcp/Server.h"

#include "assistant/mcp/Pending.h"
#include "assistant/mcp/results.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace norix::assistant::mcp {
namespace {

constexpr std::size_t kPageSize = 100;
constexpr std::string_view kCursorPrefix = "from-";

std::size_t firstOf(const Json &params, std::size_t count) {
  const auto cursor = params.find("cursor");
  if (cursor == params.end()) {
    return 0;
  }
  std::size_t first = 0;
  if (cursor->is_string()) {
    const auto text = cursor->get<std::string>();
    const char *end = text.data() + text.size();
    const bool ours = text.compare(0, kCursorPrefix.size(), kCursorPrefix) == 0;
    const char *digits = text.data() + (ours ? kCursorPrefix.size() : text.size());
    const auto parsed = std::from_chars(digits, end, first);
    if (parsed.ec == std::errc() && parsed.ptr == end && first < count) {
      return first;
    }
  }
  throw RpcError(InvalidParams, "the cursor is not one of this list's");
}

template <typename Item>
Json listed(const char *key, const std::vector<Item> &items, const Json &params) {
  const std::size_t first = firstOf(params, items.size());
  const std::size_t last = std::min(items.size(), first + kPageSize);
  Json page = Json::array();
  for (std::size_t index = first; index < last; ++index) {
    page.push_back(items[index].descriptor);
  }
  Json result = {{key, std::move(page)}};
  if (last < items.size()) {
    result["nextCursor"] = std::string(kCursorPrefix) + std::to_string(last);
  }
  return result;
}

std::string requiredString(const Json &params, const char *key) {
  const Json value = params.value(key, Json());
  if (!value.is_string()) {
    throw RpcError(InvalidParams, std::string("\"") + key + "\" must be a string");
  }
  return value.get<std::string>();
}

} // namespace

std::optional<Json> Server::listTools(const Caller & /*caller*/, const Json &params) {
  return listed("tools", _catalogue.tools, params);
}

std::optional<Json> Server::listResources(const Caller & /*caller*/, const Json &params) {
  return listed("resources", _catalogue.resources, params);
}

std::optional<Json> Server::listTemplates(const Caller & /*caller*/, const Json &params) {
  return listed("resourceTemplates", std::vector<Resource>(), params);
}

std::optional<Json> Server::listPrompts(const Caller & /*caller*/, const Json &params) {
  return listed("prompts", _catalogue.prompts, params);
}

std::optional<Json> Server::getPrompt(const Caller & /*caller*/, const Json &params) {
  const std::string name = requiredString(params, "name");
  for (const Prompt &prompt : _catalogue.prompts) {
    if (prompt.name == name) {
      const std::string text = promptText(prompt, params.value("arguments", Json::object()));
      const Json content = {{"type", "text"}, {"text", text}};
      return Json{{"messages", Json::array({{{"role", "user"}, {"content", content}}})}};
    }
  }
  throw RpcError(InvalidParams, "there is no prompt \"" + name + "\"");
}

std::optional<Json> Server::readResource(const Caller &caller, const Json &params) {
  const std::string uri = requiredString(params, "uri");
  const auto found = std::find_if(_catalogue.resources.begin(), _catalogue.resources.end(),
                                  [&uri](const Resource &each) { return each.uri == uri; });
  if (found == _catalogue.resources.end()) {
    throw RpcError(caller.modern ? InvalidParams : ResourceNotFound,
                   "there is no resource \"" + uri + "\"", {{"uri", uri}});
  }
  execute(caller, found->appId, {kStateActionId, {}},
          [this, caller, resource = *found](const Outcome &outcome) {
            logCall(resource.uri, outcome);
            try {
              reply(caller, resourceContents(resource, outcome));
            } catch (const RpcError &error) {
              _surroundings.send(errorMessage(caller.id, error));
            }
          });
  return std::nullopt;
}

} // namespace norix::assistant::mcp
