// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/reportOptions.h"

#include <cerrno>
#include <cstring>
#include <iostream>

namespace norix::assistant::cli {

void addReportOptions(CLI::App &command, ReportOptions &options) {
  command.add_flag("--tap", options.isTap, "Report on standard output as TAP, version 14");
  command.add_option("--junit", options.junit, "Also write the report for build servers")
      ->type_name("FILE");
  command.add_option("--html", options.html, "Also write the report as one page")
      ->type_name("FILE");
}

Reports::Reports(const ReportOptions &options, const Console &console) {
  if (console.isJson()) {
    _writers.push_back(report::makeJsonWriter(std::cout));
  } else if (options.isTap) {
    _writers.push_back(report::makeTapWriter(std::cout));
  } else {
    const std::string sample = console.styled(Console::Style::Good, "x");
    _writers.push_back(report::makePeopleWriter(std::cout, sample.size() > 1));
  }
  if (!options.junit.empty()) {
    _writers.push_back(report::makeJunitWriter(open(options.junit)));
  }
  if (!options.html.empty()) {
    _writers.push_back(report::makeHtmlWriter(open(options.html)));
  }
}

std::ostream &Reports::open(const std::string &path) {
  _files.push_back({path, std::ofstream(path)});
  if (!_files.back().stream.is_open()) {
    throw UsageError("cannot write '" + path + "': " + std::strerror(errno));
  }
  return _files.back().stream;
}

void Reports::finish() {
  if (!std::cout.flush()) {
    throw std::runtime_error("cannot write the report to standard output");
  }
  for (File &file : _files) {
    file.stream.close();
    if (!file.stream) {
      throw std::runtime_error("cannot write '" + file.path + "'");
    }
  }
}

} // namespace norix::assistant::cli
