// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/RuntimeFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace norix::assistant::certify {
namespace {

namespace fs = std::filesystem;

constexpr const char *kFolderVariable = "XDG_RUNTIME_DIR";

} // namespace

// Short, because the path of a socket is.
RuntimeFolder::RuntimeFolder() {
  std::string name = fs::temp_directory_path() / "norix-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("cannot make a folder in '" + fs::temp_directory_path().string()
                             + "': " + std::strerror(errno) + "; set TMPDIR to one of your own");
  }
  _path = name;
  if (const char *const before = std::getenv(kFolderVariable)) {
    _before = before;
    link(before);
  }
  setenv(kFolderVariable, _path.c_str(), 1);
}

// Displays, buses and sound are sockets, some in folders. Not what applications and their launchers
// put there: their sockets, their lock files.
void RuntimeFolder::link(const fs::path &folder) const {
  std::error_code ignored;
  for (const fs::directory_entry &entry : fs::directory_iterator(folder, ignored)) {
    const fs::path name = entry.path().filename();
    if (!entry.is_regular_file(ignored) && name != "rpc-port" && name != "norix-assistant") {
      fs::create_symlink(entry.path(), _path / name, ignored);
    }
  }
}

RuntimeFolder::~RuntimeFolder() {
  if (_before) {
    setenv(kFolderVariable, _before->c_str(), 1);
  } else {
    unsetenv(kFolderVariable);
  }
  remove();
}

fs::path RuntimeFolder::write(const std::string &name, const std::string &content) const {
  fs::path path = _path / name;
  std::ofstream(path) << content;
  return path;
}

void RuntimeFolder::remove() const {
  std::error_code ignored;
  fs::remove_all(_path, ignored);
}

} // namespace norix::assistant::certify
