// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/Report.h"

#include "assistant/trace/visible.h"

#include <iostream>

namespace norix::assistant::launch {

void Report::event(const trace::Event &event) {
  if (!_traces) {
    return;
  }
  if (_isJson) {
    write(event);
  } else if (const auto line = _timeline.line(event)) {
    std::cerr << *line << std::endl;
  }
}

void Report::finding(const trace::Event &finding) {
  if (_isJson) {
    write(finding);
    return;
  }
  std::cerr << "norix-assistant: finding " << finding.text("finding") << ": "
            << trace::visible(finding.text("sentence")) << std::endl;
}

void Report::message(const trace::Event &event) {
  if (_isJson) {
    write(event);
  } else if (event.has("says")) {
    std::cerr << "norix-assistant: " << trace::visible(event.text("says")) << std::endl;
  }
}

// A line that readers get at once. Bytes that are not UTF-8 were escaped by the probe.
void Report::write(const trace::Event &event) {
  std::cout << event.members.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
            << std::endl;
}

trace::Event toEvent(const trace::Finding &finding) {
  return trace::makeEvent("finding", {{"finding", finding.word}, {"sentence", finding.sentence}});
}

} // namespace norix::assistant::launch
