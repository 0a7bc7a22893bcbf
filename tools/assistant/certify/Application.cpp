// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Application.h"
#include "assistant/launch/exitStatus.h"

#include <csignal>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::certify {
namespace {

constexpr double kLibrarysTimeout = 30.0;
// How much later than the library an answer may come, and how long a connection may take: far more
// than anything takes, on a busy machine too.
constexpr double kPatience = 10.0;
// What an application may take for dying once its connection is gone.
constexpr int kTimeToDie = 2000;

std::string secondsText(double seconds) {
  std::ostringstream text;
  text << seconds << (seconds == 1.0 ? " second" : " seconds");
  return text.str();
}

Reply::Kind kindOf(const std::string &statusMessage) {
  if (statusMessage.find("not registered") != std::string::npos) {
    return Reply::Kind::NotRegistered;
  }
  return statusMessage.find("timed out") != std::string::npos ? Reply::Kind::TimedOut
                                                              : Reply::Kind::Other;
}

} // namespace

Application::Application(const launch::Target &target, const launch::LaunchOptions &options)
    : _id(target.id), _completionTimeout(options.completionTimeout.value_or(kLibrarysTimeout)),
      _running(launch::launchInBackground(target, options)) {}

Application::~Application() {
  _session.reset();
  (void)end();
}

void Application::reap(int flags) {
  int status = 0;
  if (!_status && waitpid(_running.supervisor, &status, flags) == _running.supervisor) {
    _status = launch::exitStatus(status);
  }
}

bool Application::isRunning() {
  reap(WNOHANG);
  return !_status;
}

bool Application::endsWithin(int milliseconds) {
  const launch::Descriptor process(
      static_cast<int>(syscall(SYS_pidfd_open, _running.supervisor, 0)));
  pollfd polled = {process.get(), POLLIN, 0};
  (void)poll(&polled, 1, milliseconds);
  return !isRunning();
}

int Application::end() {
  if (!_status) {
    ::kill(_running.supervisor, SIGTERM);
    reap(0);
  }
  return _status.value_or(0);
}

void Application::kill() {
  if (isRunning()) {
    ::kill(_running.application, SIGKILL);
    reap(0);
  }
  hangUp();
}

double Application::patience() const {
  return _completionTimeout + kPatience;
}

Session &Application::session() {
  if (!_session) {
    _session.emplace(Session(_id, kPatience));
  }
  return *_session;
}

Reply Application::ask(const Request &request) {
  return ask(request.toBundle().get(), request.requestId);
}

Reply Application::ask(bundle *content, std::uint64_t requestId) {
  try {
    session().client().send(content);
  } catch (const Error &error) {
    return asReply(error);
  }
  return await(requestId);
}

Reply Application::await(std::uint64_t requestId) {
  try {
    return asReply(session().await(requestId, patience()));
  } catch (const Error &error) {
    return asReply(error);
  }
}

Reply Application::pulse() {
  Reply reply = ask(stateRequest());
  if (reply.kind == Reply::Kind::NotRegistered) {
    reply.kind = Reply::Kind::Answered;
  }
  return reply;
}

Reply Application::asReply(const Answer &answer) const {
  const Response &response = answer.response;
  if (response.succeeded()) {
    return {Reply::Kind::Answered, response.text()};
  }
  const Reply::Kind kind = kindOf(response.statusMessage());
  if (kind == Reply::Kind::TimedOut) {
    return {kind, "was not answered within " + secondsText(_completionTimeout)};
  }
  return {kind, kind == Reply::Kind::NotRegistered
                    ? "found no callback registered for it"
                    : "failed with '" + response.statusMessage() + "'"};
}

Reply Application::asReply(const Error &error) {
  hangUp();
  switch (error.failure()) {
  case Failure::Refused:
    return {Reply::Kind::Refused, "was refused: the allow list does not name the assistant"};
  case Failure::NoAnswer:
    return {Reply::Kind::Silent,
            "got no answer, not even the library's: the main loop stands still"};
  case Failure::Malformed:
    return {Reply::Kind::Other, std::string("got no valid answer: ") + error.what()};
  default:
    return lost();
  }
}

Reply Application::lost() {
  std::string text = "was lost: the application ";
  text += endsWithin(kTimeToDie) ? launch::describeExit(*_status)
                                 : "runs, and took the connection down";
  const std::string found = findings();
  return {Reply::Kind::Lost, text + (found.empty() ? "" : "; " + found)};
}

std::string Application::findings() const {
  constexpr const char *kMark = "norix-assistant: finding ";
  std::ifstream log(_running.log);
  std::string found;
  for (std::string line; std::getline(log, line);) {
    const std::size_t at = line.find(kMark);
    if (at != std::string::npos) {
      found += (found.empty() ? "" : "; ") + line.substr(at + std::string(kMark).size());
    }
  }
  return found;
}

} // namespace norix::assistant::certify
