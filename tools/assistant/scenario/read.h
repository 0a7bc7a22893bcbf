// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_SCENARIO_READ_H
#define NORIX_ASSISTANT_SCENARIO_READ_H

#include "assistant/scenario/Reading.h"
#include "assistant/scenario/Scenario.h"

#include <map>
#include <string>

namespace norix::assistant::scenario {

/// What the command line says about scenarios.
struct ReadOptions {
  /// The application's folder, for scenarios that name none; where they do, it takes their place.
  std::string application;
  /// Values of ${names}; they take the place of those in the file.
  std::map<std::string, Json> variables;
};

/// Reads a scenario. Folders and files in it are meant from the folder of the file.
/// @throw FileError
Scenario readScenario(const std::string &file, const ReadOptions &options);
/// The same, of a text that would stand in the file.
Scenario readScenario(const std::string &file, const std::string &text, const ReadOptions &options);

// The parts.
ApplicationSetup readApplication(Reading &reading, const YamlNode &node);
std::vector<SenderSetup> readSenders(Reading &reading, const YamlNode &node);
Step readStep(Reading &reading, const YamlNode &node);
Expectation readExpectation(Reading &reading, const YamlNode &node);
std::vector<Capture> readCaptures(Reading &reading, const YamlNode &node);

} // namespace norix::assistant::scenario

#endif
