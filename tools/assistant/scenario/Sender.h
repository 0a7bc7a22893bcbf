// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_SENDER_H
#define NORIX_ASSISTANT_SCENARIO_SENDER_H

#include "assistant/scenario/Frames.h"
#include "assistant/scenario/Scenario.h"

#include <string>
#include <sys/types.h>
#include <vector>

namespace norix::assistant::scenario {

/// An assistant of a scenario: a process of its own, because the platform has one application id
/// for a process, and because it can be stopped and killed. SenderProcess.h says what goes to and
/// fro.
class Sender {
public:
  Sender(SenderSetup setup, std::string appId)
      : _setup(std::move(setup)), _appId(std::move(appId)) {}
  ~Sender() { kill(); }
  Sender(const Sender &) = delete;
  Sender &operator=(const Sender &) = delete;

  const SenderSetup &setup() const { return _setup; }

  /// Starts the process, unless it runs. @throw std::runtime_error
  void start();
  bool isRunning() const { return _process > 0; }
  bool isStopped() const { return _isStopped; }

  /// Readable when something has arrived; -1 without a process.
  int descriptor() const { return _frames.descriptor(); }
  /// False when the process has ended.
  bool send(const Frames::Json &command) const { return _frames.send(command); }
  std::vector<Frames::Json> receive();

  /// These return when it has happened.
  void kill();
  void stop();
  void resume();

private:
  SenderSetup _setup;
  // The application.
  std::string _appId;
  Frames _frames;
  pid_t _process = 0;
  bool _isStopped = false;
};

} // namespace norix::assistant::scenario

#endif
