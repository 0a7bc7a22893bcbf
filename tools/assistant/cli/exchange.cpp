// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/exchange.h"

#include "assistant/client/MainLoop.h"
#include "assistant/client/Session.h"

#include <cstdlib>
#include <iostream>

namespace norix::assistant::cli {
namespace {

ExitStatus statusOf(Failure failure) {
  switch (failure) {
  case Failure::CannotConnect:
    return ExitStatus::CannotConnect;
  case Failure::Refused:
    return ExitStatus::Refused;
  case Failure::NoAnswer:
    return ExitStatus::NoAnswer;
  case Failure::Disconnected:
    return ExitStatus::Disconnected;
  case Failure::Malformed:
    return ExitStatus::Malformed;
  }
  return ExitStatus::Internal;
}

std::string adviceFor(Failure failure, const Options &options) {
  switch (failure) {
  case Failure::CannotConnect:
    return "Start it: norix-assistant launch FOLDER. If it runs, it must have the same "
           "XDG_RUNTIME_DIR, must have called norix_initialize(), and must not be busy; "
           "DLOG_FILTER='*:W' shows what the platform has to say.";
  case Failure::Refused:
    return "Put '" + options.senderId
           + "' on a line of its own into the application's allow list, "
             "/usr/share/norix/allow_list.dat, or send as an app id that stands there: --id APPID.";
  case Failure::NoAnswer:
    return "The application answers nobody, or a newer request took this one's place. Give more "
           "time with --deadline SECONDS; the library itself gives up after 30.";
  case Failure::Disconnected:
    return "Look at the application's own output: it ended, or it deinitialised the library.";
  case Failure::Malformed:
    return "The application does not speak the protocol of libnorix.so: check what it links.";
  }
  return {};
}

Request makeRequest(const Options &options) {
  if (options.command == Command::State) {
    return stateRequest();
  }
  Request request = actionRequest(options.actionId, options.actionParams);
  request.actionType = options.actionType;
  return request;
}

ExitStatus report(const Response &response, const Options &options) {
  if (!response.succeeded()) {
    std::cerr << "norix-assistant: '" << options.appId << "': " << response.statusMessage() << '\n';
    return ExitStatus::FailureResponse;
  }

  std::cout << response.text() << std::endl;
  if (!std::cout) {
    std::cerr << "norix-assistant: cannot write the answer to standard output\n";
    return ExitStatus::Internal;
  }
  return ExitStatus::Answered;
}

} // namespace

ExitStatus exchange(const Options &options) {
  setenv("AUL_APPID", options.senderId.c_str(), 1);
  // The user wants the answer; who wants the log as well says which.
  setenv("DLOG_FILTER", "*:S", 0);

  const MainLoop loop;
  try {
    Session session(options.appId, options.deadline);
    const Answer answer = session.ask(makeRequest(options), options.deadline);
    return report(answer.response, options);
  } catch (const Error &error) {
    std::cerr << "norix-assistant: " << error.what() << '\n'
              << adviceFor(error.failure(), options) << '\n';
    return statusOf(error.failure());
  }
}

} // namespace norix::assistant::cli
