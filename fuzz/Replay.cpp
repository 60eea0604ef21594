// SPDX-License-Identifier: MIT
// Runs a target on the given files, and on all files of the given folders.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/Require.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesOf(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(path)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

void replay(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  fuzz::require(stream.is_open(), "the input can be read");
  const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
  // Printed first, since a failure ends the process.
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    if (!fs::exists(argv[i])) continue;  // not every target has a folder of finds
    for (const fs::path& file : filesOf(argv[i])) {
      replay(file);
      ++count;
    }
  }
  fuzz::require(count != 0, "there are inputs to run");
  return 0;
}
