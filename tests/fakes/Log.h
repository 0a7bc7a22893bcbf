// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_LOG_H
#define NORIX_FAKES_LOG_H

#include <string>
#include <vector>

namespace fake {

/// One line of the platform log, split into its leading arguments and its message text.
struct LogLine {
  int priority;
  std::string tag;
  std::string format;
  std::string prefix; // empty under the stub's tag, which has none
  std::string file;
  std::string function;
  int line;
  std::string text;
};

class Log {
public:
  void add(LogLine line) { _lines.push_back(std::move(line)); }
  void clear() { _lines.clear(); }

  const std::vector<LogLine> &lines() const { return _lines; }
  /// The message texts alone.
  std::vector<std::string> texts() const;
  const LogLine &last() const { return _lines.at(_lines.size() - 1); }

private:
  std::vector<LogLine> _lines;
};

} // namespace fake

#endif
