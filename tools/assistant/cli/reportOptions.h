// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_REPORTOPTIONS_H
#define NORIX_ASSISTANT_CLI_REPORTOPTIONS_H

#include "assistant/cli/Console.h"
#include "assistant/report/Writer.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace norix::assistant::cli {

/// In which formats to report what was tried, and where to.
struct ReportOptions {
  bool isTap = false;
  /// Files; empty for none.
  std::string junit;
  std::string html;
};

void addReportOptions(CLI::App &command, ReportOptions &options);

/// The writers that were asked for: one for standard output, which is for people unless another
/// format was asked for, and those for files.
class Reports {
public:
  /// @throw UsageError when a file cannot be written
  Reports(const ReportOptions &options, const Console &console);

  const std::vector<std::unique_ptr<report::Writer>> &writers() const { return _writers; }
  /// To be called after the last word. @throw std::runtime_error when a report could not be written
  void finish();

private:
  struct File {
    std::string path;
    std::ofstream stream;
  };

  std::ostream &open(const std::string &path);

  std::list<File> _files;
  std::vector<std::unique_ptr<report::Writer>> _writers;
};

} // namespace norix::assistant::cli

#endif
