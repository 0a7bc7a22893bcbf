// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/message.h"

namespace norix::assistant::mcp {
namespace {

// Writing and copying a JSON value recurse once per level; deeper values could exhaust the stack.
constexpr int kDepth = 64;

bool isId(const Json &value) {
  return value.is_string() || value.is_number_integer();
}

Json idOf(const Json &object) {
  const auto id = object.find("id");
  return id != object.end() && isId(*id) ? *id : Json();
}

void readResponse(const Json &object, Message &message) {
  if (!object.contains("result") && !object.contains("error")) {
    throw BadMessage(InvalidRequest, "a message has a \"method\", a \"result\" or an \"error\"",
                     message.id);
  }
  message.kind = Message::Kind::Response;
  message.result = object.value("result", Json());
}

void readCall(const Json &object, Message &message) {
  const Json &method = object.at("method");
  if (!method.is_string()) {
    throw BadMessage(InvalidRequest, "\"method\" must be a string", message.id);
  }
  message.method = method.get<std::string>();
  message.kind = object.contains("id") ? Message::Kind::Request : Message::Kind::Notification;
  message.params = object.value("params", Json::object());
  if (!message.params.is_object()) {
    throw BadMessage(InvalidParams, "\"params\" must be an object", message.id);
  }
}

} // namespace

Json parseJson(std::string_view text) {
  const auto bounded = [](int depth, Json::parse_event_t /*event*/, Json & /*value*/) {
    if (depth > kDepth) {
      throw RpcError(InvalidRequest, "nested deeper than " + std::to_string(kDepth) + " levels");
    }
    return true;
  };
  try {
    return Json::parse(text, bounded);
  } catch (const Json::exception &error) {
    throw RpcError(ParseError, std::string("not JSON: ") + error.what());
  }
}

Message parseMessage(std::string_view line) {
  Json object;
  try {
    object = parseJson(line);
  } catch (const RpcError &error) {
    throw BadMessage(error.code(), error.what());
  }
  if (!object.is_object()) {
    throw BadMessage(InvalidRequest, "a message is one JSON object; batches are not supported");
  }
  Message message;
  message.id = idOf(object);
  const auto version = object.find("jsonrpc");
  if (version == object.end() || *version != "2.0") {
    throw BadMessage(InvalidRequest, "\"jsonrpc\" must be \"2.0\"", message.id);
  }
  if (object.contains("id") && message.id.is_null()) {
    throw BadMessage(InvalidRequest, "\"id\" must be a string or an integer");
  }
  if (object.contains("method")) {
    readCall(object, message);
  } else {
    readResponse(object, message);
  }
  return message;
}

Json resultMessage(const Json &id, Json result) {
  return {{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}};
}

Json errorMessage(const Json &id, const RpcError &error) {
  Json body = {{"code", error.code()}, {"message", error.what()}};
  if (!error.data().is_null()) {
    body["data"] = error.data();
  }
  return {{"jsonrpc", "2.0"}, {"id", id}, {"error", std::move(body)}};
}

Json notificationMessage(const std::string &method, Json params) {
  return {{"jsonrpc", "2.0"}, {"method", method}, {"params", std::move(params)}};
}

std::string toLine(const Json &message) {
  return message.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace norix::assistant::mcp
