// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/saveScenario.h"

#include "assistant/certify/Examination.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <yaml-cpp/binary.h>

namespace norix::assistant::certify {
namespace {

using actions::Json;

// JSON is YAML too.
std::string inYaml(const Json &value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// "${" would stand for a variable.
bool isObject(const std::string &params) {
  return Json::parse(params, nullptr, false).is_object() && params.find("${") == std::string::npos;
}

std::string asField(const std::string &params) {
  if (isObject(params)) {
    return "params: " + params;
  }
  return "params-base64: \""
         + YAML::EncodeBase64(reinterpret_cast<const unsigned char *>(params.data()), params.size())
         + "\" # " + inYaml(params);
}

std::string scenarioFor(Examination &examination, const std::string &action,
                        const std::string &params) {
  const launch::LaunchOptions options = examination.launchOptions();
  std::ostringstream text;
  text
      << "# Saved by norix-assistant certify: parameters that the application does not cope with.\n"
      << "name: " << inYaml(action + " copes with odd parameters") << "\n"
      << "application:\n"
      << "  folder: " << inYaml(examination.target().folder.string()) << "\n"
      << "  completion-timeout: " << *options.completionTimeout << " s\n";
  if (!options.arguments.empty()) {
    text << "  arguments: " << inYaml(options.arguments) << "\n";
  }
  text << "steps:\n"
       << "  - run: " << inYaml(action) << "\n"
       << "    " << asField(params) << "\n";
  if (examination.ordinaryUse().state.isAnswered()) {
    text << "  - state:\n";
  }
  return text.str();
}

} // namespace

std::string saveScenario(Examination &examination, const std::string &action,
                         const std::string &params) {
  std::string name = examination.target().id + "-" + action;
  std::replace(name.begin(), name.end(), '/', '_');
  std::string path =
      std::filesystem::path(examination.order().folderForScenarios) / (name + ".yaml");
  std::ofstream file(path);
  file << scenarioFor(examination, action, params);
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write '" + path + "': " + std::strerror(errno));
  }
  return path;
}

} // namespace norix::assistant::certify
