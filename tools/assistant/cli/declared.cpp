// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/declared.h"

#include "assistant/actions/Declarations.h"
#include "assistant/actions/check.h"
#include "assistant/actions/nearest.h"
#include "assistant/cli/Listener.h"
#include "assistant/trace/visible.h"

#include <algorithm>
#include <cstdlib>

namespace norix::assistant::cli {
namespace {

namespace fs = std::filesystem;
using trace::visible;

constexpr const char *kManifest = "tizen-manifest.xml";

bool hasManifest(const fs::path &folder) {
  std::error_code unreachable;
  return fs::exists(folder / kManifest, unreachable);
}

std::optional<fs::path> appsFolder() {
  const char *apps = std::getenv("NORIX_DESKTOP_APPS");
  return apps == nullptr || *apps == '\0' ? std::nullopt : std::optional<fs::path>(apps);
}

// The program lies in the application's folder, or in bin/ of it.
std::optional<fs::path> folderOfProcess(pid_t pid) {
  std::error_code unreadable;
  const fs::path program = fs::read_symlink("/proc/" + std::to_string(pid) + "/exe", unreadable);
  for (const fs::path &folder : {program.parent_path(), program.parent_path().parent_path()}) {
    if (!folder.empty() && hasManifest(folder)) {
      return folder;
    }
  }
  return std::nullopt;
}

std::string unknownAction(const actions::Declarations &declarations, const std::string &id) {
  std::vector<std::string> ids;
  for (const actions::Action &action : declarations.actions) {
    ids.push_back(action.id);
  }
  return "the action '" + visible(id) + "' is not declared" + actions::suggestion(id, ids);
}

} // namespace

std::optional<fs::path> findApplicationFolder(const std::string &appId) {
  const std::optional<Listener> listener = findListener(appId);
  if (listener && listener->pid > 0) {
    if (auto folder = folderOfProcess(listener->pid)) {
      return folder;
    }
  }
  const std::optional<fs::path> apps = appsFolder();
  return apps && hasManifest(*apps / appId) ? std::optional<fs::path>(*apps / appId) : std::nullopt;
}

std::vector<std::string> installedApplications() {
  std::vector<std::string> ids;
  std::error_code unreadable;
  for (const auto &entry : fs::directory_iterator(appsFolder().value_or(fs::path()), unreadable)) {
    if (hasManifest(entry.path())) {
      ids.push_back(entry.path().filename().string());
    }
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

void warnOfParameters(const std::string &appId, const Request &request, const Console &console) {
  const std::optional<fs::path> folder = findApplicationFolder(appId);
  const std::optional<actions::Reading> reading = folder ? actions::read(*folder) : std::nullopt;
  if (!reading || !reading->isUsable()) {
    return; // What is wrong in the file is for doctor to say.
  }
  const actions::Action *action = reading->declarations.find(request.actionId);
  if (action == nullptr) {
    console.say("warning: " + unknownAction(reading->declarations, request.actionId));
    return;
  }
  const actions::Json params = actions::Json::parse(request.actionParams, nullptr, false);
  if (params.is_discarded()) {
    console.say("warning: the parameters are not JSON, and '" + visible(action->id)
                + "' declares a form");
    return;
  }
  for (const actions::Violation &violation : actions::check(action->parameters, params)) {
    console.say("warning: parameters: " + visible(violation.toString()));
  }
}

} // namespace norix::assistant::cli
