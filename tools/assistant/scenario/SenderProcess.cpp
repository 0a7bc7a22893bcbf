// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/SenderProcess.h"

#include "assistant/client/MainLoop.h"
#include "assistant/client/words.h"
#include "assistant/trace/Event.h"

#include <utility>

namespace norix::assistant::scenario {

void SenderProcess::run() {
  const MainLoop loop;
  Ecore_Fd_Handler *const handler = ecore_main_fd_handler_add(_frames.descriptor(), ECORE_FD_READ,
                                                              onCommand, this, nullptr, nullptr);
  ecore_main_loop_begin();
  ecore_main_fd_handler_del(handler);
  _client.reset();
  _ended.reset();
}

Eina_Bool SenderProcess::onCommand(void *self, Ecore_Fd_Handler * /*handler*/) {
  auto *const process = static_cast<SenderProcess *>(self);
  for (const Json &command : process->_frames.receive()) {
    process->execute(command);
  }
  if (process->_frames.hasEnded()) {
    ecore_main_loop_quit();
  }
  return ECORE_CALLBACK_RENEW;
}

void SenderProcess::execute(const Json &command) {
  const std::string what = command.at("do").get<std::string>();
  const auto serial = command.at("serial").get<std::uint64_t>();
  try {
    if (what == "connect") {
      connect(serial); // Is done when the connection stands.
      return;
    }
    if (what == "disconnect") {
      _client.reset();
    } else if (!_client) {
      throw Error(Failure::Disconnected, "the sender is not connected");
    } else if (what == "register") {
      _client->setCallback({});
    } else if (what == "unregister") {
      _client->unsetCallback();
    } else if (what == "settle") {
      settle();
    } else {
      send(command);
    }
    tellDone(serial);
  } catch (const Error &error) {
    tellFailed(serial, error);
  }
}

void SenderProcess::connect(std::uint64_t serial) {
  _client = std::make_unique<Client>(handlers());
  _connecting = serial;
  try {
    _client->connect(_appId);
  } catch (const Error &) {
    _connecting.reset();
    throw;
  }
}

// The application answers a registration after it has sent the answers that it gave before. They
// are there then, on the other port, and are told first.
void SenderProcess::settle() {
  _client->setCallback({});
  ecore_main_loop_iterate();
}

void SenderProcess::send(const Json &command) {
  Request request;
  request.requestId = command.at("id").get<std::uint64_t>();
  request.actionId = command.at("action").get<std::string>();
  request.actionType = command.at("type").get<std::string>();
  request.actionParams = command.at("params").get<std::string>();
  for (const auto &[key, value] : command.at("keys").items()) {
    request.furtherKeys.emplace_back(key, value.get<std::string>());
  }
  _client->send(request);
}

Client::Handlers SenderProcess::handlers() {
  Client::Handlers made;
  made.connected = [this] { tellDone(*std::exchange(_connecting, std::nullopt)); };
  made.answered = [this](const Answer &answer) { onAnswered(answer); };
  made.ended = [this](const Error &error) { onEnded(error); };
  made.malformed = [this](const Error &error) { tell({{"malformed", error.what()}}); };
  return made;
}

void SenderProcess::onAnswered(const Answer &answer) const {
  const Response &response = answer.response;
  tell({{"answered", response.requestId()},
        {"outcome", wordOf(response)},
        {"text", response.succeeded() ? response.text() : response.statusMessage()}});
}

void SenderProcess::onEnded(const Error &error) {
  // It is called from inside the client, which is destroyed when the next one ends.
  _ended = std::move(_client);
  if (const auto connecting = std::exchange(_connecting, std::nullopt)) {
    tellFailed(*connecting, error);
  } else {
    tell({{"ended", error.what()}});
  }
}

void SenderProcess::tell(Json message) const {
  message["t"] = trace::monotonicNow();
  (void)_frames.send(message);
}

void SenderProcess::tellDone(std::uint64_t serial) const {
  tell({{"done", serial}});
}

void SenderProcess::tellFailed(std::uint64_t serial, const Error &error) const {
  tell({{"done", serial}, {"outcome", wordOf(error.failure())}, {"says", error.what()}});
}

} // namespace norix::assistant::scenario
