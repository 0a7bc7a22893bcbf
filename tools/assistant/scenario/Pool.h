// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_POOL_H
#define NORIX_ASSISTANT_SCENARIO_POOL_H

#include "assistant/report/Suite.h"
#include "assistant/scenario/Frames.h"
#include "assistant/scenario/Scenario.h"

#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <vector>

namespace norix::assistant::scenario {

/// Plays scenarios in processes of their own, several at once. One that starts its application has
/// a runtime folder of its own, so that nothing of one is seen by another; those whose application
/// runs already share it, and are played one at a time.
class Pool {
public:
  /// Takes what came of a scenario, in the order of the scenarios. False: start no more.
  using Done = std::function<bool(report::Case)>;

  /// @param jobs  how many to play at once
  explicit Pool(std::size_t jobs) : _jobs(jobs) {}
  ~Pool();
  Pool(const Pool &) = delete;
  Pool &operator=(const Pool &) = delete;

  /// Plays all. Those that are not started any more are reported as skipped.
  void play(const std::vector<Scenario> &scenarios, const Done &done);

  /// Ends everything that it has started, at once. May be called from another thread before the
  /// process ends.
  void abandon();

private:
  struct Worker {
    pid_t process = 0;
    std::size_t index = 0;
    Frames frames;
    bool isShared = false;
  };

  void startWhatMay();
  bool mayStart(const Scenario &scenario) const;
  void start(std::size_t index);
  [[noreturn]] void become(const Scenario &scenario, const Frames &frames) const;
  void awaitSome();
  bool takeResult(Worker &worker);
  void report(const Done &done);

  // Held while the workers change.
  std::mutex _mutex;
  std::string _folder;
  std::size_t _jobs;
  const std::vector<Scenario> *_scenarios = nullptr;
  std::list<Worker> _workers;
  std::vector<bool> _isStarted;
  std::map<std::size_t, report::Case> _results;
  std::size_t _reported = 0;
  bool _isStopping = false;
  bool _isAbandoned = false;
};

} // namespace norix::assistant::scenario

#endif
