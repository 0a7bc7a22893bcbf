// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_VERDICTS_H
#define NORIX_ASSISTANT_CERTIFY_VERDICTS_H

#include "assistant/report/Suite.h"

#include <chrono>
#include <string>
#include <vector>

namespace norix::assistant::certify {

/// What a check found: a verdict for the application, or one for each of its actions.
class Verdicts {
public:
  /// @param check  its id, which the names of the verdicts begin with
  explicit Verdicts(std::string check) : _check(std::move(check)) {}

  /// @param about  the action, or whatever else the verdict is about; empty for the application
  void pass(const std::string &about = {});
  /// @param seen  a sentence that says what was seen instead of what should have been
  /// @param events  what happened in the application meanwhile
  void fail(const std::string &seen, const std::string &about = {},
            std::vector<trace::Event> events = {});
  /// @param why  a sentence
  void skip(const std::string &why, const std::string &about = {});

  /// The verdicts, each with the time since the one before.
  std::vector<report::Step> take() { return std::move(_steps); }

private:
  using Clock = std::chrono::steady_clock;

  void add(report::Outcome outcome, const std::string &about, const std::string &text);

  std::string _check;
  Clock::time_point _begin = Clock::now();
  std::vector<report::Step> _steps;
};

} // namespace norix::assistant::certify

#endif
