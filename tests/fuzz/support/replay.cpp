// SPDX-License-Identifier: Apache-2.0
//
// Runs a fuzz target over files instead of generated inputs, with any compiler:
//   fuzz_<target>_replay FILE|FOLDER …
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

namespace fs = std::filesystem;

// In the order of their names, so that two runs are the same.
std::vector<fs::path> filesIn(const fs::path &path) {
  if (!fs::is_directory(path)) {
    return {path};
  }
  std::vector<fs::path> files(fs::directory_iterator(path), fs::directory_iterator{});
  std::sort(files.begin(), files.end());
  return files;
}

bool replay(const fs::path &path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file.is_open() || file.bad()) {
    (void)std::fprintf(stderr, "%s: cannot be read; give files or folders of inputs\n",
                       path.c_str());
    return false;
  }
  // Beforehand: when it crashes, this is the line that says on what.
  (void)std::printf("%s\n", path.c_str());
  (void)std::fflush(stdout);
  // As long as its bytes: a memory checker sees a read behind the last one.
  bytes.shrink_to_fit();
  (void)LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
  return true;
}

} // namespace

int main(int argc, char **argv) {
  (void)LLVMFuzzerInitialize(&argc, &argv);
  std::size_t replayed = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path &path : filesIn(argv[i])) {
      if (!replay(path)) {
        return 1;
      }
      ++replayed;
    }
  }
  (void)std::printf("%zu inputs replayed\n", replayed);
  // Nothing replayed is nothing tested.
  return replayed > 0 ? 0 : 1;
}
