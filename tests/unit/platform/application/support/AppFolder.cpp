// SPDX-License-Identifier: Apache-2.0
#include "AppFolder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

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

AppFolder::AppFolder() {
  std::string name = std::filesystem::temp_directory_path() / "norix-application-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  // As the system names it, for this is how a program finds itself.
  _path = std::filesystem::canonical(name);
}

AppFolder::~AppFolder() {
  std::error_code ignored; // What cannot be removed is no reason to fail a test.
  std::filesystem::remove_all(_path, ignored);
}

std::string AppFolder::path(const std::string &relative) const {
  return relative.empty() ? _path : _path + "/" + relative;
}

void AppFolder::write(const std::string &relative, const std::string &text) const {
  const std::filesystem::path file = path(relative);
  std::filesystem::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  if (!stream.flush()) {
    throw std::runtime_error("cannot write " + file.string());
  }
}

Outcome AppFolder::ask(const std::string &question,
                       const std::vector<std::string> &environment) const {
  return Child(putProbe("bin/music"), {question}, environment).wait();
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
