// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/select.h"

#include <re2/re2.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <stdexcept>

namespace norix::assistant::scenario {
namespace {

namespace fs = std::filesystem;

/// A part of all scenarios.
struct Shard {
  std::size_t index = 0;
  std::size_t count = 1;
};

bool isScenario(const fs::path &path) {
  return path.extension() == ".yaml" || path.extension() == ".yml";
}

std::vector<std::string> filesIn(const std::string &folder) {
  std::vector<std::string> files;
  for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && isScenario(entry.path())) {
      files.push_back(entry.path().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The whole text as a number; 0 when it is none.
std::size_t numberOf(const std::string &text) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? number : 0;
}

Shard parseShard(const std::string &text) {
  if (text.empty()) {
    return {};
  }
  const std::size_t slash = std::min(text.find('/'), text.size());
  const std::size_t index = numberOf(text.substr(0, slash));
  const std::size_t count = slash < text.size() ? numberOf(text.substr(slash + 1)) : 0;
  if (index == 0 || count == 0 || index > count) {
    throw std::invalid_argument("'" + text + "' is no part; give I/N, with I from 1 to N");
  }
  return {index - 1, count};
}

void keepMatching(std::vector<Scenario> &scenarios, const std::string &filter) {
  const re2::RE2 expression(filter, re2::RE2::Quiet);
  if (!expression.ok()) {
    throw std::invalid_argument("'" + filter
                                + "' is not a regular expression of RE2: " + expression.error());
  }
  scenarios.erase(std::remove_if(scenarios.begin(), scenarios.end(),
                                 [&expression](const Scenario &scenario) {
                                   return !re2::RE2::PartialMatch(scenario.file, expression)
                                          && !re2::RE2::PartialMatch(scenario.name, expression);
                                 }),
                  scenarios.end());
}

std::vector<Scenario> repeated(const std::vector<Scenario> &scenarios, std::size_t times) {
  std::vector<Scenario> all;
  for (std::size_t round = 1; round <= times; ++round) {
    for (Scenario scenario : scenarios) {
      if (times > 1) {
        scenario.name += " (" + std::to_string(round) + " of " + std::to_string(times) + ")";
      }
      all.push_back(std::move(scenario));
    }
  }
  return all;
}

std::vector<Scenario> partOf(const std::vector<Scenario> &scenarios, const Shard &shard) {
  std::vector<Scenario> part;
  for (std::size_t i = shard.index; i < scenarios.size(); i += shard.count) {
    part.push_back(scenarios[i]);
  }
  return part;
}

} // namespace

std::vector<std::string> filesOf(const std::vector<std::string> &paths) {
  std::vector<std::string> files;
  for (const std::string &path : paths) {
    if (fs::is_directory(path)) {
      const std::vector<std::string> found = filesIn(path);
      files.insert(files.end(), found.begin(), found.end());
    } else if (fs::exists(path)) {
      files.push_back(path);
    } else {
      throw std::invalid_argument("there is no file or folder '" + path + "'");
    }
  }
  return files;
}

Loaded load(const Selection &selection, const ReadOptions &options) {
  const Shard shard = parseShard(selection.shard);
  Loaded loaded;
  for (const std::string &file : filesOf(selection.paths)) {
    try {
      loaded.scenarios.push_back(readScenario(file, options));
    } catch (const FileError &error) {
      loaded.refused.push_back({file, error.what()});
    }
  }
  keepMatching(loaded.scenarios, selection.filter);
  if (loaded.scenarios.empty() && loaded.refused.empty()) {
    throw std::invalid_argument(selection.filter.empty()
                                    ? "there are no scenarios (*.yaml, *.yml)"
                                    : "no scenario matches '" + selection.filter + "'");
  }
  loaded.scenarios = repeated(partOf(loaded.scenarios, shard), selection.repeat);
  return loaded;
}

report::Case caseOf(const Refused &refused) {
  report::Step step;
  step.name = "read the file";
  step.outcome = report::Outcome::Broken;
  step.messages = {{refused.why, ""}};
  report::Case made;
  made.name = fs::path(refused.file).stem().string();
  made.file = refused.file;
  made.steps = {std::move(step)};
  return made;
}

} // namespace norix::assistant::scenario
