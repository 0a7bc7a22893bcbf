// SPDX-License-Identifier: Apache-2.0
//
// A scenario's text. It is read as a scenario that can be played, or refused with its place.
#include "support/check.h"

#include "assistant/scenario/read.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace {

using fuzz::check;
using norix::assistant::scenario::FileError;
using norix::assistant::scenario::ReadOptions;
using norix::assistant::scenario::readScenario;
using norix::assistant::scenario::Scenario;

constexpr const char *kName = "scenario.yaml";

void checkScenario(const Scenario &scenario) {
  check(!scenario.steps.empty() && !scenario.senders.empty(), "there is something to play");
  check(!scenario.name.empty(), "a scenario has a name");
  check(scenario.timeout > 0.0, "waiting has an end");
  for (const auto &step : scenario.steps) {
    check(step.line > 0, "a step knows its line");
  }
}

// "<name>:<line>:<column>: <what is wrong>"
void checkRefusal(const std::string &what, const std::string &text) {
  const std::string prefix = std::string(kName) + ":";
  check(what.rfind(prefix, 0) == 0, "a refusal names the file");
  const auto line = std::stol(what.substr(prefix.size()));
  // YAML breaks lines at carriage returns as well.
  const auto breaks =
      std::count_if(text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; });
  check(line >= 1 && line <= 2 + breaks, "a refusal names a line that there is");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  ReadOptions options;
  options.application = "folder";
  try {
    checkScenario(readScenario(kName, text, options));
  } catch (const FileError &error) {
    checkRefusal(error.what(), text);
  }
  return 0;
}
