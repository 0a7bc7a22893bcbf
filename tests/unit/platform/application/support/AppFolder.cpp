// SPDX-License-Identifier: Apache-2.0
#include "AppFolder.h"

#include <filesystem>

const char *const kMusicManifest =
    R"(<?xml version="1.0" encoding="utf-8"?>
<manifest xmlns="http://tizen.org/ns/packages" api-version="6.5" package="org.example" version="1.2.3">
  <service-application appid="org.example.music" exec="music" type="dotnet">
    <label>Music</label>
    <metadata key="first" value="1"/>
    <metadata key="second"/>
    <metadata key="third" value="3"/>
  </service-application>
</manifest>)";

Outcome run(const std::string &program, const std::vector<std::string> &arguments,
            const std::vector<std::string> &environment) {
  std::vector<std::string> command{program};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return Process::withVariables(command, environment).finish();
}

std::string AppFolder::path(const std::string &relative) const {
  return relative.empty() ? _folder.path() : _folder / relative;
}

void AppFolder::write(const std::string &relative, const std::string &text) const {
  _folder.write(relative, text);
}

Outcome AppFolder::ask(const std::string &question,
                       const std::vector<std::string> &environment) const {
  return run(putProbe("bin/music"), {question}, environment);
}

std::string AppFolder::putProbe(const std::string &relative) const {
  return put(APPLICATION_PROBE, relative);
}

std::string AppFolder::putStations(const std::string &relative) const {
  return put(APPLICATION_STATIONS, relative);
}

std::string AppFolder::put(const std::string &program, const std::string &relative) const {
  const std::filesystem::path copy = path(relative);
  std::filesystem::create_directories(copy.parent_path());
  std::filesystem::copy_file(program, copy, std::filesystem::copy_options::overwrite_existing);
  return copy;
}
