// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/launch.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <pugixml.hpp>
#include <stdexcept>
#include <unistd.h>

namespace norix::assistant::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char *kManifestName = "tizen-manifest.xml";
constexpr const char *kAppsVariable = "NORIX_DESKTOP_APPS";

struct Application {
  std::string id;
  std::string exec;
};

fs::path findFolder(const std::string &target) {
  if (fs::exists(fs::path(target) / kManifestName)) {
    return fs::canonical(target);
  }
  if (target.find('/') != std::string::npos || fs::is_directory(target)) {
    throw std::runtime_error("no " + std::string(kManifestName) + " in '" + target
                             + "'; give the application's folder");
  }

  const char *apps = std::getenv(kAppsVariable);
  if (apps == nullptr) {
    throw std::runtime_error("there is no folder '" + target + "'; for an app id, set "
                             + kAppsVariable + " to the folder that holds the applications");
  }
  const fs::path folder = fs::path(apps) / target;
  if (!fs::exists(folder / kManifestName)) {
    throw std::runtime_error("no " + std::string(kManifestName) + " in '" + folder.string()
                             + "'; check the app id and " + kAppsVariable);
  }
  return fs::canonical(folder);
}

Application readManifest(const fs::path &path) {
  pugi::xml_document document;
  const pugi::xml_parse_result parsed = document.load_file(path.c_str());
  if (!parsed) {
    throw std::runtime_error("'" + path.string() + "': " + parsed.description() + ", at byte "
                             + std::to_string(parsed.offset) + "; correct the XML there");
  }

  for (const pugi::xml_node &element : document.child("manifest").children()) {
    Application application{element.attribute("appid").value(), element.attribute("exec").value()};
    if (!application.id.empty() && !application.exec.empty()) {
      return application;
    }
  }
  throw std::runtime_error("'" + path.string() + "' declares no application; add a "
                           + "<ui-application> with the attributes appid and exec");
}

// As on a device in bin/, or beside the manifest while it is being developed.
fs::path findProgram(const fs::path &folder, const std::string &exec) {
  for (const fs::path &candidate : {folder / "bin" / exec, folder / exec}) {
    if (fs::is_regular_file(candidate)) {
      return candidate;
    }
  }
  throw std::runtime_error("no program '" + exec + "' in '" + folder.string()
                           + "' or its bin/; build the application first");
}

[[noreturn]] void become(const fs::path &program, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), program.string());
  std::vector<char *> raw;
  raw.reserve(arguments.size() + 1);
  for (std::string &argument : arguments) {
    raw.push_back(argument.data());
  }
  raw.push_back(nullptr);

  execv(program.c_str(), raw.data());
  throw std::runtime_error("'" + program.string() + "' does not start: " + std::strerror(errno));
}

} // namespace

ExitStatus launch(const Options &options) {
  try {
    const fs::path folder = findFolder(options.target);
    const Application application = readManifest(folder / kManifestName);
    const fs::path program = findProgram(folder, application.exec);

    setenv("AUL_APPID", application.id.c_str(), 1);
    setenv(kAppsVariable, folder.parent_path().c_str(), 1);
    become(program, options.arguments);
  } catch (const std::exception &error) {
    std::cerr << "norix-assistant: cannot launch: " << error.what() << '\n';
    return ExitStatus::CannotLaunch;
  }
}

} // namespace norix::assistant::cli
