// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_STAGE_H
#define NORIX_ASSISTANT_SCENARIO_STAGE_H

#include "assistant/scenario/Application.h"
#include "assistant/scenario/Sender.h"
#include "assistant/trace/Event.h"

#include <functional>
#include <list>
#include <string>
#include <vector>

namespace norix::assistant::scenario {

/// The processes of a scenario, the application and the senders, and everything that they tell. It
/// never blocks on one of them: all waiting has a bound and listens to the others meanwhile.
class Stage {
public:
  /// What to do with what a sender tells.
  using Listener = std::function<void(Sender &sender, const Frames::Json &message)>;

  Stage(const Scenario &scenario, const std::string &folder);

  Application &application() { return _application; }
  Sender &sender(const std::string &name);
  std::list<Sender> &senders() { return _senders; }
  void onMessage(Listener listener) { _listener = std::move(listener); }

  /// Starts the application; then there are senders.
  void start(const Scenario &scenario);
  /// Ends the application, and takes its last events.
  void end();
  /// Takes what the application tells until it has ended. False when it does not within a time.
  bool awaitApplicationsEnd();

  /// Listens until the condition holds; it is asked again after everything that arrives.
  /// @return whether it does
  bool waitUntil(const std::function<bool()> &condition, double seconds);

  /// A step of this side, at a time of CLOCK_MONOTONIC.
  void note(nlohmann::json members, std::uint64_t time);
  /// Everything that has happened, in the order in which it was told.
  const std::vector<trace::Event> &events() const { return _events; }

private:
  void listen(int milliseconds);
  void takeEvents();

  Application _application;
  std::list<Sender> _senders;
  Listener _listener;
  std::vector<trace::Event> _events;
};

} // namespace norix::assistant::scenario

#endif
