// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_WORK_H
#define NORIX_ASSISTANT_MCP_WORK_H

#include <functional>
#include <string>

namespace norix::assistant::mcp {

/// What an application is asked: its state, or an action with its parameters as JSON.
struct Work {
  std::string actionId;
  std::string params;

  bool isState() const;
};

bool operator==(const Work &a, const Work &b);

/// What came of a piece of work, in the words that the agent reads.
struct Outcome {
  enum class Kind {
    Answered,    ///< The text is the application's answer.
    Failed,      ///< The library answered in the application's place: nothing was executed.
    NotExecuted, ///< The request never reached the application.
    Unknown      ///< It was sent, and there is no answer: it may have been executed.
  };

  Kind kind = Kind::NotExecuted;
  std::string text;
  double waited = 0; ///< Seconds in the queue.
  double ran = 0;    ///< Seconds with the application.
};

/// The kind as one word, for the log.
const char *word(Outcome::Kind kind);

using Done = std::function<void(const Outcome &)>;

} // namespace norix::assistant::mcp

#endif
