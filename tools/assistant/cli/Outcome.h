// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_OUTCOME_H
#define NORIX_ASSISTANT_CLI_OUTCOME_H

#include <string>
#include <vector>

namespace norix::assistant::cli {

/// How a command ends. The table in Outcome.cpp gives each its exit status, its word and its text.
enum class Outcome {
  Answered,
  ActionNotRegistered,
  ActionTimedOut,
  StateNotRegistered,
  StateTimedOut,
  Failed,
  WrongUsage,
  NobodyListens,
  NotLaunched,
  Refused,
  NoAnswer,
  ConnectionLost,
  Malformed,
  CannotLaunch,
  Internal,
  Superseded,
  Busy,
  Crowded,
  Findings,
  TestsFailed,
  FileRefused,
  HungUp,
  Interrupted,
  Terminated
};

/// One row of the table.
struct OutcomeRow {
  Outcome outcome;
  /// The exit status. Scripts rely on the numbers; the man page lists them.
  int status;
  /// The outcome in --json.
  const char *word;
  /// What it means, for --help.
  const char *meaning;
  /// What happened. {app}, {request}, {action}, {sender}, {seconds} and {detail} are
  /// filled in, and {lines}, the detail line by line.
  const char *sentence;
  /// What to do about it.
  const char *advice;
};

const OutcomeRow &rowOf(Outcome outcome);
/// The outcome with this word; Internal for any other.
Outcome outcomeNamed(const std::string &word);
std::vector<OutcomeRow> allOutcomes();

/// What the placeholders of a row stand for.
struct Subject {
  std::string app;
  /// "action 'musicPlay'" or "state request".
  std::string request;
  std::string action;
  std::string sender;
  std::string detail;
  double seconds = 0.0;
};

/// A sentence or an advice with its placeholders filled in; what others sent is made visible.
std::string fill(const char *text, const Subject &subject);

} // namespace norix::assistant::cli

#endif
