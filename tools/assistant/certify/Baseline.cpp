// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Baseline.h"

#include "assistant/actions/nearest.h"
#include "assistant/certify/Catalogue.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace norix::assistant::certify {
namespace {

// One blank between the words, none around them, no comment.
std::string tidied(const std::string &line) {
  std::istringstream words(line.substr(0, line.find('#')));
  std::string text;
  for (std::string word; words >> word;) {
    text += (text.empty() ? "" : " ") + word;
  }
  return text;
}

std::vector<std::string> allIds() {
  std::vector<std::string> ids;
  for (const Check &check : catalogue()) {
    ids.emplace_back(check.id);
  }
  return ids;
}

} // namespace

Baseline Baseline::read(const std::string &path) {
  std::ifstream file(path);
  if (!file.is_open()) {
    throw BaselineError("cannot read the baseline '" + path + "': " + std::strerror(errno));
  }
  Baseline baseline;
  baseline._path = path;
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    const std::string text = tidied(line);
    if (!text.empty()) {
      baseline.add(text, number);
    }
  }
  return baseline;
}

void Baseline::add(const std::string &text, int line) {
  const std::string place = _path + ":" + std::to_string(line) + ": ";
  const std::string id = checkOf(text);
  if (findCheck(id) == nullptr) {
    throw BaselineError(place + "there is no check '" + id + "'" + actions::suggestion(id, allIds())
                        + "; norix-assistant certify --list names them all");
  }
  if (const Entry *const before = find(text)) {
    throw BaselineError(place + "'" + text + "' stands on line " + std::to_string(before->line)
                        + " already");
  }
  _entries.push_back({text, line});
}

const Baseline::Entry *Baseline::find(const std::string &name) const {
  const auto found = std::find_if(_entries.begin(), _entries.end(),
                                  [&name](const Entry &entry) { return entry.name == name; });
  return found == _entries.end() ? nullptr : &*found;
}

std::string checkOf(const std::string &name) {
  return name.substr(0, name.find(' '));
}

} // namespace norix::assistant::certify
