// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_APPLICATION_H
#define NORIX_ASSISTANT_SCENARIO_APPLICATION_H

#include "assistant/launch/Background.h"
#include "assistant/launch/Watch.h"
#include "assistant/scenario/Scenario.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace norix::assistant::scenario {

/// The application of a scenario: started from its folder with the probe in it, or found running.
class Application {
public:
  /// @param folder  where files for the application are put: its allow list
  Application(const ApplicationSetup &setup, std::string folder)
      : _setup(setup), _folder(std::move(folder)) {}
  ~Application();
  Application(const Application &) = delete;
  Application &operator=(const Application &) = delete;

  /// Starts it and waits until it listens, or finds the one that runs.
  /// @throw launch::LaunchError
  void start();
  /// Ends it the way `launch --stop` does. One that ran before is left alone.
  void end();

  const std::string &id() const { return _id; }
  pid_t process() const { return _process; }
  bool isStopped() const { return _isStopped; }
  /// Whether it was started here.
  bool isLaunched() const { return _left.has_value(); }
  /// Whether there are events of it, so that findings and log lines can be expected.
  bool isWatched() const { return _watch.has_value(); }

  /// Readable when there are events; -1 when nobody watches.
  int descriptor() const;
  /// The events that have arrived.
  std::vector<trace::Event> receive();
  bool hasEnded() const { return !_watch || _watch->hasEnded(); }
  /// How one that was started here has ended: "ended with status 3". To be called once it has.
  std::string howItEnded();

  /// These return when it has happened; kill() does not wait for the last events.
  void kill();
  void stop();
  void resume();

  /// What it has written so far, and the findings.
  std::string output() const;

private:
  void launch();
  void find();
  launch::LaunchOptions options() const;

  const ApplicationSetup &_setup;
  std::string _folder;
  std::string _id;
  pid_t _process = 0;
  std::optional<int> _status;
  std::optional<launch::LeftRunning> _left;
  std::optional<launch::Watch> _watch;
  bool _isStopped = false;
};

} // namespace norix::assistant::scenario

#endif
