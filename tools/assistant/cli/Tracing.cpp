// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Tracing.h"

#include "assistant/trace/Timeline.h"

#include <iostream>

namespace norix::assistant::cli {

Tracing::Tracing(bool isWanted, const std::string &appId, std::uint64_t requestId)
    : _requestId(requestId), _isWanted(isWanted) {
  if (isWanted) {
    _trace.emplace(appId);
  }
}

void Tracing::note(const std::string &says) {
  const std::lock_guard<std::mutex> lock(_mutex);
  if (_trace) {
    _trace->note(says);
  }
}

void Tracing::show() {
  const std::lock_guard<std::mutex> lock(_mutex);
  if (!_trace) {
    return;
  }
  const bool isOneSided = _trace->isOneSided();
  _shown = _trace->finish(_requestId);
  _trace.reset();
  for (const std::string &line : trace::toLines(_shown)) {
    std::cerr << line << '\n';
  }
  if (isOneSided) {
    std::cerr << "norix-assistant: the application's side is missing here: start it with "
                 "norix-assistant launch\n";
  }
}

void Tracing::addTo(Json &facts) {
  if (!_isWanted) {
    return;
  }
  facts["trace"] = Json::array();
  for (const trace::Event &event : _shown) {
    facts["trace"].push_back(Json(event.members));
  }
}

} // namespace norix::assistant::cli
