// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_LAUNCH_SUPERVISOR_H
#define NORIX_ASSISTANT_LAUNCH_SUPERVISOR_H

#include "assistant/launch/Probes.h"
#include "assistant/launch/Report.h"
#include "assistant/launch/Target.h"
#include "assistant/launch/Watchers.h"
#include "assistant/trace/Findings.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace norix::assistant::launch {

/// What launch was asked for.
struct LaunchOptions {
  std::string target;
  std::vector<std::string> arguments;
  /// Added to this process's environment.
  std::map<std::string, std::string> environment;
  bool traces = false;
  bool isJson = false;
  /// Findings make a status of their own.
  bool isStrict = false;
  /// Returns when the application listens, and leaves it running.
  bool waits = false;
  /// After how many seconds the library gives up waiting for an answer, instead of 30.
  std::optional<double> completionTimeout;
  /// The allow list that the library reads, instead of the device's.
  std::optional<std::string> allowList;
  /// Ends with the process that launched it, when it runs in the background.
  bool endsWithStarter = false;
};

/// How a launched application ended.
struct Ending {
  /// What wait() gave.
  int status = 0;
  /// The signal that this process was told to end with; 0 for none.
  int signal = 0;
  std::size_t findings = 0;
  /// Whether norix_initialize() was called and never succeeded.
  bool neverListened = false;
};

/// Starts an application with the probe in it, and stays with it until it ends: reads its events,
/// draws findings, passes everything on to watchers. SIGINT, SIGTERM and SIGHUP end both.
class Supervisor {
public:
  Supervisor(const Target &target, const LaunchOptions &options);
  ~Supervisor();
  Supervisor(const Supervisor &) = delete;
  Supervisor &operator=(const Supervisor &) = delete;

  /// To be called once, with the application's process id, when it listens.
  void onListening(std::function<void(pid_t)> handler) { _listening = std::move(handler); }

  /// @throw LaunchError when the application cannot be started
  Ending run();

private:
  void blockSignals();
  void startApplication();
  void checkBefore();
  void waitForSomething();
  void readProbes();
  void see(const std::string &line);
  void add(const trace::Finding &finding);
  void takeSignal();
  void passOn(int signal, int code);
  std::string greeting() const;

  const Target &_target;
  const LaunchOptions &_options;
  Probes _probes;
  Watchers _watchers;
  Report _report;
  trace::Findings _findings;
  std::vector<trace::Finding> _found;
  std::function<void(pid_t)> _listening;
  Descriptor _signals;
  pid_t _application = 0;
  std::optional<int> _status;
  std::uint64_t _startedAt = 0;
  std::uint64_t _killAt = 0;
  std::uint64_t _giveUpAt = 0;
  int _signal = 0;
};

} // namespace norix::assistant::launch

#endif
