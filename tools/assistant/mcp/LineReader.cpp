// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/LineReader.h"

#include <utility>

namespace norix::assistant::mcp {

LineReader::LineReader(std::size_t bound, Handlers handlers)
    : _bound(bound), _handlers(std::move(handlers)) {}

void LineReader::feed(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t newline = bytes.find('\n');
    take(bytes.substr(0, newline));
    if (newline == std::string_view::npos) {
      return;
    }
    endLine();
    bytes.remove_prefix(newline + 1);
  }
}

void LineReader::finish() {
  endLine();
}

void LineReader::take(std::string_view piece) {
  if (_skipping) {
    return;
  }
  if (piece.size() > _bound - _line.size()) {
    _skipping = true;
    std::string().swap(_line);
    _handlers.tooLong();
    return;
  }
  _line.append(piece);
}

void LineReader::endLine() {
  const bool skipped = std::exchange(_skipping, false);
  std::string line = std::exchange(_line, {});
  if (!line.empty() && line.back() == '\r') {
    line.pop_back();
  }
  if (!skipped && !line.empty()) {
    _handlers.line(line);
  }
}

} // namespace norix::assistant::mcp
