// SPDX-License-Identifier: Apache-2.0
#include <app_common.h>

#include "copyText.h"
#include "manifest/AppId.h"
#include "manifest/ManifestReader.h"
#include "manifest/find.h"

#include <cstdlib>
#include <dlog.h>
#include <stdexcept>
#include <sys/stat.h>

namespace {

using platform::application::DeclaredApplication;
using platform::application::FoundManifest;

constexpr const char *kTag = "APP_COMMON";

/** The process is no application, or not one whose manifest can be found; what() says why. */
class NoContext : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

std::string fileName(const std::string &path) {
  return path.substr(path.find_last_of('/') + 1);
}

// A package may declare several applications: the one that this program executes is meant, or else
// the package's first, which is its main application.
const DeclaredApplication &runningApplication(const platform::application::Manifest &manifest) {
  const std::string program = fileName(platform::application::executablePath());
  for (const DeclaredApplication &candidate : manifest.applications) {
    if (fileName(candidate.exec) == program) {
      return candidate;
    }
  }
  return manifest.applications.front();
}

std::string declaredId() {
  const std::optional<FoundManifest> own = platform::application::findOwnManifest();
  if (!own) {
    throw NoContext("not launched as an application: AUL_APPID is not set and there is no "
                    "tizen-manifest.xml beside "
                    + platform::application::executablePath()
                    + " or one folder above; put the manifest there or set AUL_APPID");
  }
  return runningApplication(own->manifest).id;
}

const char *ownId() {
  const char *launched = std::getenv("AUL_APPID");
  if (launched != nullptr && *launched != '\0') {
    return launched;
  }

  // A process stays the application it is, and the id is asked for with every answer that the
  // application gives: the manifest is read once.
  static const std::string declared = declaredId();
  return declared.c_str();
}

FoundManifest ownManifest(const std::string &id) {
  std::optional<FoundManifest> found = platform::application::findManifestOf(id);
  if (!found) {
    throw NoContext("no manifest declares the application '" + id
                    + "': put it beside the program, one folder above, or in $NORIX_DESKTOP_APPS/"
                    + id + "/");
  }
  return *std::move(found);
}

std::string dataHome() {
  const char *configured = std::getenv("XDG_DATA_HOME");
  if (configured != nullptr && *configured == '/') {
    return configured;
  }
  const char *home = std::getenv("HOME");
  if (home != nullptr && *home == '/') {
    return std::string(home) + "/.local/share";
  }
  throw NoContext("no folder for data: set XDG_DATA_HOME or HOME to an absolute path");
}

void createFolder(const std::string &path) {
  struct stat status = {};
  const bool isFolder = mkdir(path.c_str(), S_IRWXU) == 0
                        || (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode));
  if (!isFolder) {
    throw NoContext("the folder " + path
                    + " cannot be created; set XDG_DATA_HOME to a folder that "
                      "can be written");
  }
}

void createFolders(const std::string &path) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos;
       end = path.find('/', end + 1)) {
    createFolder(path.substr(0, end));
  }
}

std::string name() {
  const std::string id = ownId();
  const FoundManifest found = ownManifest(id);
  const std::string &label = found.manifest.find(id)->label;
  return label.empty() ? id : label;
}

std::string version() {
  return ownManifest(ownId()).manifest.version;
}

std::string resourcePath() {
  return ownManifest(ownId()).folder + "/res/";
}

std::string dataPath() {
  const std::string id = ownId();
  if (!platform::application::isUsableAppId(id)) {
    throw NoContext("the application id '" + id + "' cannot name a folder");
  }
  std::string path = dataHome() + "/" + id + "/";
  createFolders(path);
  return path;
}

// Answers with a text, or leaves *text alone and says in the log why there is none.
template <typename Question>
int answer(Question question, char **text) {
  if (text == nullptr) {
    return APP_ERROR_INVALID_PARAMETER;
  }
  try {
    *text = platform::application::copyText(question());
    return APP_ERROR_NONE;
  } catch (const std::bad_alloc &) {
    return APP_ERROR_OUT_OF_MEMORY;
  } catch (const std::runtime_error &error) {
    dlog_print(DLOG_ERROR, kTag, "%s", error.what());
    return APP_ERROR_INVALID_CONTEXT;
  }
}

template <typename Question>
char *answerPath(Question question) {
  char *path = nullptr;
  set_last_result(answer(question, &path));
  return path;
}

} // namespace

int app_get_id(char **id) {
  return answer(ownId, id);
}

int app_get_name(char **name) {
  return answer(::name, name);
}

int app_get_version(char **version) {
  return answer(::version, version);
}

char *app_get_resource_path(void) {
  return answerPath(resourcePath);
}

char *app_get_data_path(void) {
  return answerPath(dataPath);
}
