// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_ORDINARYUSE_H
#define NORIX_ASSISTANT_CERTIFY_ORDINARYUSE_H

#include "assistant/actions/Declarations.h"
#include "assistant/certify/Application.h"
#include "assistant/certify/Reply.h"
#include "assistant/trace/Event.h"
#include "assistant/trace/Finding.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace norix::assistant::certify {

/// An action that was executed with each of its declared examples, or with the simplest parameters
/// that have the declared form.
struct ActionUse {
  actions::Action action;
  /// The parameters, as they were sent.
  std::vector<std::string> params;
  /// What came of each.
  std::vector<Reply> replies;
  std::vector<std::uint64_t> requestIds;
  /// The longest time that an answer took.
  double seconds = 0.0;

  bool isAnswered() const;
};

/// What came of a process of the application that was asked for its state, had its declared actions
/// executed, and was ended.
struct OrdinaryUse {
  Reply state;
  std::vector<ActionUse> actions;
  /// Actions that were left out, because they destroy.
  std::vector<std::string> leftOut;
  /// The actions that the application registered.
  std::set<std::string> registered;
  /// What the probe found, until the end.
  std::vector<trace::Finding> findings;
  /// What happened in it.
  std::vector<trace::Event> events;
  /// How it ended when it was told to.
  int endStatus = 0;
};

/// What happened in the application from this request to the next.
std::vector<trace::Event> eventsOf(const OrdinaryUse &use, std::uint64_t requestId);

/// Uses an application, and ends it.
OrdinaryUse useOrdinarily(std::unique_ptr<Application> application,
                          const actions::Declarations &declared, bool executesDestructive);

} // namespace norix::assistant::certify

#endif
