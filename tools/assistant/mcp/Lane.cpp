// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/Lane.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace norix::assistant::mcp {
namespace {

double secondsBetween(std::chrono::steady_clock::time_point from,
                      std::chrono::steady_clock::time_point to) {
  return std::chrono::duration<double>(to - from).count();
}

std::string seconds(double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%g", value);
  return text.data();
}

} // namespace

Lane::Lane(Limits limits, Run run) : _limits(limits), _run(std::move(run)) {}

Lane::Ticket Lane::submit(Work work, Done done) {
  const Ticket ticket = ++_lastTicket;
  if (Entry *shared = findShared(work); shared != nullptr) {
    addCaller(*shared, ticket, std::move(done));
    return ticket;
  }
  if (_waiting.size() >= _limits.waiting || _closed) {
    done({Outcome::Kind::NotExecuted,
          "Not executed, safe to retry: " + std::to_string(_waiting.size())
              + " requests wait for this application already. Wait for their answers first."});
    return ticket;
  }
  _waiting.push_back({std::move(work), {}, {}});
  addCaller(_waiting.back(), ticket, std::move(done));
  beginNext();
  return ticket;
}

Lane::Entry *Lane::findShared(const Work &work) {
  if (!work.isState()) {
    return nullptr;
  }
  const auto found = std::find_if(_waiting.begin(), _waiting.end(),
                                  [&work](const Entry &entry) { return entry.work == work; });
  return found != _waiting.end() ? &*found : nullptr;
}

void Lane::addCaller(Entry &entry, Ticket ticket, Done done) {
  entry.callers.push_back(
      {ticket, std::move(done), Clock::now(),
       std::make_unique<Timer>(_limits.waitSeconds, [this, ticket] { giveUp(ticket); })});
}

void Lane::beginNext() {
  if (_running || _waiting.empty() || _closed) {
    return;
  }
  _running.emplace(std::move(_waiting.front()));
  _waiting.pop_front();
  _running->begun = Clock::now();
  for (Caller &caller : _running->callers) {
    caller.patience.reset();
  }
  _run(_running->work, [this](const Outcome &outcome) { ended(outcome); });
}

void Lane::ended(Outcome outcome) {
  const Entry finished = *std::exchange(_running, std::nullopt);
  outcome.ran = secondsBetween(finished.begun, Clock::now());
  for (const Caller &caller : finished.callers) {
    outcome.waited = secondsBetween(caller.received, finished.begun);
    caller.done(outcome);
  }
  beginNext();
}

void Lane::cancel(Ticket ticket) {
  take(ticket);
}

void Lane::giveUp(Ticket ticket) {
  if (const std::optional<Caller> caller = take(ticket)) {
    Outcome outcome{Outcome::Kind::NotExecuted, "Not executed, safe to retry: it waited "
                                                    + seconds(_limits.waitSeconds)
                                                    + " s for its turn, behind other requests."};
    outcome.waited = _limits.waitSeconds;
    caller->done(outcome);
  }
}

std::optional<Lane::Caller> Lane::take(Ticket ticket) {
  const auto takeFrom = [ticket](Entry &entry) -> std::optional<Caller> {
    for (auto caller = entry.callers.begin(); caller != entry.callers.end(); ++caller) {
      if (caller->ticket == ticket) {
        std::optional<Caller> taken(std::move(*caller));
        entry.callers.erase(caller);
        return taken;
      }
    }
    return std::nullopt;
  };

  if (_running) {
    if (std::optional<Caller> taken = takeFrom(*_running)) {
      return taken;
    }
  }
  for (auto entry = _waiting.begin(); entry != _waiting.end(); ++entry) {
    if (std::optional<Caller> taken = takeFrom(*entry)) {
      if (entry->callers.empty()) {
        _waiting.erase(entry);
      }
      return taken;
    }
  }
  return std::nullopt;
}

void Lane::close() {
  _closed = true;
  _waiting.clear();
}

} // namespace norix::assistant::mcp
