// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_APPLICATION_H
#define NORIX_ASSISTANT_CERTIFY_APPLICATION_H

#include "assistant/certify/Reply.h"
#include "assistant/client/Session.h"
#include "assistant/launch/Background.h"
#include "assistant/launch/Target.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

namespace norix::assistant::certify {

/// An application that runs with the probe in it as long as this object, and the assistant that
/// talks to it.
class Application {
public:
  /// Starts it, and waits until it listens.
  /// @throw launch::LaunchError when it does not
  Application(const launch::Target &target, const launch::LaunchOptions &options);
  ~Application();
  Application(const Application &) = delete;
  Application &operator=(const Application &) = delete;

  pid_t pid() const { return _running.application; }
  const std::string &id() const { return _id; }
  /// Whether it runs still.
  bool isRunning();

  /// Sends a request, and waits for what comes of it. Connects when it is not connected.
  Reply ask(const Request &request);
  Reply ask(bundle *content, std::uint64_t requestId);
  /// Waits for what comes of a request that was sent.
  Reply await(std::uint64_t requestId);
  /// The connection. @throw Error when there is none to be had
  Session &session();
  /// How long to wait for an answer, in seconds: longer than the library waits.
  double patience() const;
  /// Ends the connection.
  void hangUp() { _session.reset(); }

  /// Whether it is well: it answers a request for its state, be it that it knows of none.
  Reply pulse();

  /// Tells it to end, and waits for that. @return Its exit status, or 128 and a signal's number
  int end();
  /// Ends it with SIGKILL.
  void kill();

  /// The findings in its log so far, a sentence each.
  std::string findings() const;

private:
  Reply asReply(const Answer &answer) const;
  Reply asReply(const Error &error);
  Reply lost();
  bool endsWithin(int milliseconds);
  void reap(int flags);

  std::string _id;
  double _completionTimeout;
  launch::LeftRunning _running;
  std::optional<int> _status;
  std::optional<Session> _session;
};

} // namespace norix::assistant::certify

#endif
