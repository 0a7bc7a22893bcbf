// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/Declarations.h"

#include "assistant/actions/DeclarationLint.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace norix::assistant::actions {
namespace {

namespace fs = std::filesystem;

// Megabytes of declarations are a mistake; what reads them keeps several copies.
constexpr off_t kMostBytes = off_t{1024} * 1024;

Json parametersOf(const Json &action) {
  static const Json none{
      {"type", "object"}, {"properties", Json::object()}, {"additionalProperties", false}};
  return action.value("parameters", none);
}

Action readAction(const Json &action) {
  Action made;
  made.id = action["id"];
  made.title = action["title"];
  made.description = action["description"];
  made.parameters = parametersOf(action);
  made.examples = action.value("examples", std::vector<Json>());
  made.utterances = action.value("utterances", std::vector<std::string>());
  made.readOnly = action.value("readOnly", false);
  made.destructive = action.value("destructive", false);
  made.confirm = action.value("confirm", false);
  return made;
}

State readState(const Json &state) {
  State made;
  made.description = state["description"];
  if (state.contains("form")) {
    made.form = state["form"];
  }
  made.examples = state.value("examples", std::vector<Json>());
  return made;
}

Declarations readDeclarations(const Json &document) {
  Declarations made;
  if (document.contains("state")) {
    made.state = readState(document["state"]);
  }
  for (const Json &action : document["actions"]) {
    made.actions.push_back(readAction(action));
  }
  return made;
}

Reading failed(Position position, const std::string &text) {
  Reading reading;
  reading.findings.push_back({Severity::Error, position, {}, text});
  return reading;
}

// Why a file cannot be read as text; empty when it can.
std::string problemOf(const fs::path &file) {
  struct stat status = {};
  if (stat(file.c_str(), &status) != 0) {
    return std::string("cannot be read: ") + std::strerror(errno);
  }
  if (!S_ISREG(status.st_mode)) {
    return "is not a regular file; put the declarations there";
  }
  if (status.st_size > kMostBytes) {
    return "has more than " + std::to_string(kMostBytes) + " bytes; shorten it";
  }
  return {};
}

} // namespace

const Action *Declarations::find(const std::string &id) const {
  const auto found = std::find_if(actions.begin(), actions.end(),
                                  [&id](const Action &action) { return action.id == id; });
  return found == actions.end() ? nullptr : &*found;
}

bool Reading::isUsable() const {
  return std::none_of(findings.begin(), findings.end(),
                      [](const Finding &finding) { return finding.severity == Severity::Error; });
}

Reading parse(const std::string &text) {
  try {
    const LocatedJson document(text);
    Reading reading;
    reading.findings = lint(document);
    if (reading.isUsable()) {
      reading.declarations = readDeclarations(document.value());
    }
    return reading;
  } catch (const SyntaxError &error) {
    return failed(error.position(), error.what());
  }
}

std::optional<Reading> read(const fs::path &applicationFolder) {
  const fs::path file = applicationFolder / kFile;
  std::error_code unreachable;
  if (!fs::exists(fs::symlink_status(file, unreachable))) {
    return std::nullopt;
  }
  if (const std::string problem = problemOf(file); !problem.empty()) {
    return failed({}, problem);
  }
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  if (stream.peek() != std::ifstream::traits_type::eof()) { // Copying nothing is a failure to `<<`.
    text << stream.rdbuf();
  }
  if (!stream.is_open() || stream.bad() || !text) {
    return failed({}, std::string("cannot be read: ") + std::strerror(errno));
  }
  return parse(text.str());
}

std::optional<Declarations> load(const fs::path &applicationFolder) {
  std::optional<Reading> reading = read(applicationFolder);
  if (!reading) {
    return std::nullopt;
  }
  if (reading->isUsable()) {
    return std::move(reading->declarations);
  }
  std::string text;
  for (const Finding &finding : reading->findings) {
    text += (text.empty() ? "" : "\n") + (applicationFolder / kFile).string() + ":"
            + finding.toString();
  }
  throw DeclarationError(text);
}

} // namespace norix::assistant::actions
