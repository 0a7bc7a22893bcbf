// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/OrdinaryUse.h"

#include "assistant/certify/simplest.h"
#include "assistant/launch/Watch.h"
#include "assistant/launch/registered.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <poll.h>
#include <thread>

namespace norix::assistant::certify {
namespace {

using launch::Watch;

// What is done too late, as reading a lent bundle after the callback, is done soon after.
constexpr std::chrono::milliseconds kAftermath(200);
constexpr int kTimeToSee = 10000;

std::vector<std::string> exampleTexts(const actions::Action &action) {
  std::vector<std::string> texts;
  for (const actions::Json &example : action.examples) {
    texts.push_back(example.dump());
  }
  if (texts.empty()) {
    texts.push_back(simplest(action.parameters).dump());
  }
  return texts;
}

class Use {
public:
  Use(std::unique_ptr<Application> application, OrdinaryUse &use)
      : _application(std::move(application)), _watch(Watch::open(_application->id())), _use(use) {}

  void run(const actions::Declarations &declared, bool executesDestructive) {
    _use.state = _application->ask(stateRequest());
    for (const actions::Action &action : declared.actions) {
      if (action.destructive && !executesDestructive) {
        _use.leftOut.push_back(action.id);
      } else {
        execute(action);
      }
    }
    askWhatIsRegistered();
    std::this_thread::sleep_for(kAftermath);
    end();
  }

private:
  void execute(const actions::Action &action) {
    ActionUse use;
    use.action = action;
    use.params = exampleTexts(action);
    for (const std::string &params : use.params) {
      const auto begin = std::chrono::steady_clock::now();
      const Request request = actionRequest(action.id, params);
      use.requestIds.push_back(request.requestId);
      use.replies.push_back(_application->ask(request));
      const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
      use.seconds = std::max(use.seconds, taken.count());
    }
    _use.actions.push_back(std::move(use));
  }

  // The probe's events come in pieces: once it has reported this request, it has reported all that
  // came before.
  void askWhatIsRegistered() {
    const Request last = stateRequest();
    (void)_application->ask(last);
    const std::string id = std::to_string(last.requestId);
    while (_watch && !_watch->hasEnded() && _lastSeen != id && read(kTimeToSee)) {
    }
    _use.registered =
        launch::registeredActions(_application->id()).value_or(std::set<std::string>());
  }

  void end() {
    _use.endStatus = _application->end();
    while (_watch && !_watch->hasEnded()) {
      read(-1);
    }
  }

  bool read(int milliseconds) {
    const std::vector<trace::Event> events = _watch->read(milliseconds);
    for (const trace::Event &event : events) {
      if (event.name == "received") {
        _lastSeen = event.text("requestId");
      } else if (event.name == "finding") {
        _use.findings.push_back({event.text("finding"), event.text("sentence")});
      } else if (event.name == "launched") {
        addEarlier(event);
        continue;
      }
      _use.events.push_back(event);
    }
    return !events.empty();
  }

  // What was found before this process looked on.
  void addEarlier(const trace::Event &greeting) {
    for (const auto &finding : greeting.members.value("findings", nlohmann::json::array())) {
      _use.findings.push_back(
          {finding.value("finding", std::string()), finding.value("sentence", std::string())});
    }
  }

  std::unique_ptr<Application> _application;
  std::optional<Watch> _watch;
  OrdinaryUse &_use;
  std::string _lastSeen;
};

} // namespace

bool ActionUse::isAnswered() const {
  return std::all_of(replies.begin(), replies.end(),
                     [](const Reply &reply) { return reply.isAnswered(); });
}

std::vector<trace::Event> eventsOf(const OrdinaryUse &use, std::uint64_t requestId) {
  const auto isReceived = [](const trace::Event &event) { return event.name == "received"; };
  const auto begin =
      std::find_if(use.events.begin(), use.events.end(), [&](const trace::Event &event) {
        return isReceived(event) && event.text("requestId") == std::to_string(requestId);
      });
  const auto end = begin == use.events.end()
                       ? begin
                       : std::find_if(std::next(begin), use.events.end(), isReceived);
  return {begin, end};
}

OrdinaryUse useOrdinarily(std::unique_ptr<Application> application,
                          const actions::Declarations &declared, bool executesDestructive) {
  OrdinaryUse use;
  Use(std::move(application), use).run(declared, executesDestructive);
  return use;
}

} // namespace norix::assistant::certify
