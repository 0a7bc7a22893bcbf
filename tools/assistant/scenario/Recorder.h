// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_RECORDER_H
#define NORIX_ASSISTANT_SCENARIO_RECORDER_H

#include "assistant/trace/Event.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace norix::assistant::scenario {

/// Writes down what an application was asked and what came of it, as a scenario that passes when it
/// is played with the application as it was then.
///
/// Times become bounds. A text that one answer has at a place of its JSON, and that a later request
/// sends, becomes a capture: it may be another one next time.
class Recorder {
public:
  /// The events of the application, in the order in which they happened.
  void see(const trace::Event &event);

  std::size_t requests() const { return _requests.size(); }

  /// The scenario as a text.
  /// @param folder  the application's folder; empty to leave it to the command line
  std::string write(const std::string &folder) const;

private:
  struct Recorded {
    std::string sender;
    std::string action;
    std::string type;
    std::string params;
    std::uint64_t received = 0;
    // Until something comes of it, it counts as replaced by the next one.
    std::string outcome = "superseded";
    std::string text;
    double seconds = 0.0;
  };

  void seeLog(const trace::Event &event);
  void finish(const std::string &outcome, const std::string &text, std::uint64_t time);

  std::string _sender;
  std::vector<Recorded> _requests;
  std::set<std::string> _findings;

  friend class RecordingWriter;
};

} // namespace norix::assistant::scenario

#endif
