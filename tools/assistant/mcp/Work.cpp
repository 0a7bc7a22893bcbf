// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/Work.h"

#include "assistant/client/Request.h"

namespace norix::assistant::mcp {

bool Work::isState() const {
  return actionId == kStateActionId;
}

bool operator==(const Work &a, const Work &b) {
  return a.actionId == b.actionId && a.params == b.params;
}

const char *word(Outcome::Kind kind) {
  switch (kind) {
  case Outcome::Kind::Answered:
    return "answered";
  case Outcome::Kind::Failed:
    return "failed";
  case Outcome::Kind::NotExecuted:
    return "not-executed";
  case Outcome::Kind::Unknown:
    return "unknown";
  }
  return "unknown";
}

} // namespace norix::assistant::mcp
