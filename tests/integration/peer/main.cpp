// SPDX-License-Identifier: Apache-2.0
//
// One side of an exchange, written out byte by byte, so that it can be killed or stopped between
// any two of them.
//
//   norix_raw_peer assistant APP-ID          does a step for each line "next" on its standard
//   input,
//                                            and says "done"; for "end" it waits for the other
//                                            side's end. It says "ended" when that came.
//   norix_raw_peer application APP-ID STEP SIGNAL
//                                            listens, does all its steps, and sends itself the
//                                            signal after one of them
#include "integration/harness/wire.h"
#include "integration/peer/Line.h"
#include "integration/peer/steps.h"

#include <rpc-port-parcel.h>

#include <csignal>
#include <cstring>
#include <iostream>
#include <vector>

namespace integration {
namespace {

using norix::assistant::BundlePtr;

constexpr const char *kInstance = "raw-1";
constexpr const char *kSender = "org.example.raw";

class Assistant {
public:
  explicit Assistant(const std::string &appId) : _path(socketPath(appId)) {}

  void take(AssistantStep step);

  void awaitEnd() {
    for (Line *line : {&_main, &_callback}) {
      if (line->isOpen()) {
        line->awaitEnd();
      }
    }
  }

private:
  std::string _path;
  std::string _hello = helloFrame(RPC_PORT_PORT_MAIN, kInstance, kSender);
  std::string _setCb = setCallbackFrame();
  std::string _request = requestFrame(norix::assistant::actionRequest("play"));
  Line _main;
  Line _callback;
};

void Assistant::take(AssistantStep step) {
  switch (step) {
  case AssistantStep::MainConnected:
    _main = Line::connectTo(_path);
    break;
  case AssistantStep::HalfHelloSent:
    return _main.sendHalf(_hello);
  case AssistantStep::HelloSent:
    return _main.sendRest(_hello);
  case AssistantStep::CallbackConnected:
    _callback = Line::connectTo(_path);
    break;
  case AssistantStep::CallbackHelloSent:
    return _callback.send(helloFrame(RPC_PORT_PORT_CALLBACK, kInstance, kSender));
  case AssistantStep::Welcomed:
    _main.receive();
    _callback.receive();
    break;
  case AssistantStep::HalfSetCbSent:
    return _main.sendHalf(_setCb);
  case AssistantStep::SetCbSent:
    return _main.sendRest(_setCb);
  case AssistantStep::ResultRead:
    _main.receive();
    break;
  case AssistantStep::HalfRequestSent:
    return _main.sendHalf(_request);
  case AssistantStep::RequestSent:
    return _main.sendRest(_request);
  case AssistantStep::HalfAnswerRead:
    return _callback.receiveHalf();
  case AssistantStep::AnswerRead:
    _callback.receive();
    break;
  case AssistantStep::Answered:
  case AssistantStep::Count:
    break;
  }
}

void say(const char *word) {
  std::cout << word << std::endl;
}

int runAssistant(const std::string &appId) {
  Assistant assistant(appId);
  int step = 0;
  for (std::string line; std::getline(std::cin, line);) {
    try {
      if (line == "end") {
        assistant.awaitEnd();
        throw Ended();
      }
      assistant.take(static_cast<AssistantStep>(step++));
      say("done");
    } catch (const Ended &) {
      say("ended");
    }
  }
  return 0;
}

std::uint64_t requestIdIn(const std::string &message) {
  rpc_port_parcel_h parcel = nullptr;
  rpc_port_parcel_create_from_raw(&parcel, message.data(), static_cast<unsigned>(message.size()));
  int kind = 0;
  bundle *content = nullptr;
  rpc_port_parcel_read_int32(parcel, &kind);
  rpc_port_parcel_read_bundle(parcel, &content);
  rpc_port_parcel_destroy(parcel);
  const BundlePtr owned(content);
  void *bytes = nullptr;
  std::uint64_t id = 0;
  if (bundle_get_byte(content, "requestId", &bytes, nullptr) == BUNDLE_ERROR_NONE) {
    std::memcpy(&id, bytes, sizeof id);
  }
  return id;
}

class Application {
public:
  Application(std::string appId, ApplicationStep fatal, int signal)
      : _appId(std::move(appId)), _listening(Line::listenAt(socketPath(_appId))), _fatal(fatal),
        _signal(signal) {}

  void run() {
    for (int step = 0; step < static_cast<int>(ApplicationStep::Count); ++step) {
      take(static_cast<ApplicationStep>(step));
      if (static_cast<ApplicationStep>(step) == _fatal) {
        std::raise(_signal);
      }
    }
    _main.awaitEnd();
  }

private:
  void take(ApplicationStep step);

  std::string _appId;
  Line _listening;
  ApplicationStep _fatal;
  int _signal;
  std::string _welcome = welcomeFrame();
  std::string _result = resultFrame();
  std::string _answer;
  Line _main;
  Line _callback;
};

void Application::take(ApplicationStep step) {
  switch (step) {
  case ApplicationStep::MainAccepted:
    _main = _listening.accept();
    break;
  case ApplicationStep::BothAccepted:
    _callback = _listening.accept();
    break;
  case ApplicationStep::HellosRead:
    _main.receive();
    _callback.receive();
    break;
  case ApplicationStep::HalfWelcomeSent:
    return _main.sendHalf(_welcome);
  case ApplicationStep::MainWelcomed:
    return _main.sendRest(_welcome);
  case ApplicationStep::BothWelcomed:
    return _callback.send(_welcome);
  case ApplicationStep::SetCbRead:
    _main.receive();
    break;
  case ApplicationStep::HalfResultSent:
    return _main.sendHalf(_result);
  case ApplicationStep::ResultSent:
    return _main.sendRest(_result);
  case ApplicationStep::RequestRead:
    _answer = answerFrame(_appId, requestIdIn(_main.receive()), "played");
    break;
  case ApplicationStep::HalfAnswerSent:
    return _callback.sendHalf(_answer);
  case ApplicationStep::AnswerSent:
    return _callback.sendRest(_answer);
  case ApplicationStep::Count:
    break;
  }
}

int runApplication(const std::string &appId, const char *step, const char *signal) {
  Application application(appId, static_cast<ApplicationStep>(std::stoi(step)), std::stoi(signal));
  say("listening");
  application.run();
  return 0;
}

} // namespace
} // namespace integration

int main(int argc, char **argv) try {
  const std::string side = argc > 1 ? argv[1] : "";
  if (side == "assistant" && argc == 3) {
    return integration::runAssistant(argv[2]);
  }
  if (side == "application" && argc == 5) {
    return integration::runApplication(argv[2], argv[3], argv[4]);
  }
  return 2;
} catch (const std::exception &error) {
  std::cerr << error.what() << std::endl;
  return 1;
}
