// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_EXCHANGEOPTIONS_H
#define NORIX_ASSISTANT_CLI_EXCHANGEOPTIONS_H

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::cli {

/// What state and run have in common.
struct ExchangeOptions {
  std::string appId;
  std::string senderId = "com.valtren.tizen.norix";
  /// Bounds everything; without it, each step has a bound of its own.
  std::optional<double> timeout;
  /// How long to wait until the application listens.
  double wait = 0.0;
  /// Further keys of the bundle, "KEY=VALUE".
  std::vector<std::string> keys;
  /// Shows what happens on both sides.
  bool traces = false;
};

void addExchangeOptions(CLI::App &command, ExchangeOptions &options);

// For check(): empty for what can be used, else what is wrong with it.

/// An app id is part of a path, and of lines on a terminal.
std::string checkAppId(const std::string &id);
/// From a millisecond to a day.
std::string checkSeconds(const std::string &text);

} // namespace norix::assistant::cli

#endif
