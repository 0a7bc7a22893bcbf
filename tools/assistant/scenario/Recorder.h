// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_RECORDER_H
#define NORIX_ASSISTANT_SCENARIO_RECORDER_H

#include "assistant/trace/Event.h"

#include <cstdint>
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
  /// What the application was asked, and what came of it.
  struct Recorded {
    std::string sender;
    std::string action;
    std::string type;
    std::string params;
    // Until something comes of it, it counts as replaced by the next one.
    std::string outcome = "superseded";
    std::string text;
    double seconds = 0.0;
    std::uint64_t received = 0; ///< The time of the event; only while its end is to come.
  };

  /// The events of the application, in the order in which they happened.
  void see(const trace::Event &event);

  /// An exchange as its sender saw it. Of the application's mistakes a sender knows nothing, so
  /// they are allowed when the scenario is played.
  void add(Recorded exchange);

  std::size_t requests() const { return _requests.size(); }

  /// The scenario as a text.
  /// @param folder  the application's folder; empty to leave it to the command line
  std::string write(const std::string &folder) const;

private:
  void seeLog(const trace::Event &event);
  void finish(const std::string &outcome, const std::string &text, std::uint64_t time);

  std::string _sender;
  std::vector<Recorded> _requests;
  bool _allowsFindings = false;

  friend class RecordingWriter;
};

} // namespace norix::assistant::scenario

#endif
