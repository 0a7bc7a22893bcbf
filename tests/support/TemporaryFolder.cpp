// SPDX-License-Identifier: Apache-2.0
#include "support/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace support {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
  std::string name = fs::temp_directory_path() / "norix-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  _path = fs::canonical(name);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored; // A folder left behind is no reason to fail a test that passed.
  fs::remove_all(_path, ignored);
}

fs::path TemporaryFolder::write(const std::string &name, const std::string &content) const {
  fs::path path = *this / name;
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file << content;
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path.string());
  }
  return path;
}

std::string contentOf(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace support
