// SPDX-License-Identifier: MIT
#include "bench/micro/BenchPackage.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "opc/Text.h"

namespace bench {
namespace {

using addon::packaging::AddonLicense;
using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;

/// A folder in memory, if there is one.
class Folder {
 public:
  Folder() {
    const std::filesystem::path memory = "/dev/shm";
    const bool hasMemory = ::access(memory.c_str(), W_OK) == 0;
    path_ = (hasMemory ? memory : std::filesystem::temp_directory_path()) /
            ("kraddon-micro-" + std::to_string(::getpid()));
    std::filesystem::create_directories(path_);
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string file(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

std::u16string treePath(std::size_t number) {
  return opc::fromUtf8("group" + std::to_string(number / 5000) + "/set" +
                       std::to_string(number / 50 % 100) + "/step" + std::to_string(number) + ".m");
}

void make(const std::string& path, const std::string& source, std::size_t files) {
  std::u16string target = opc::fromUtf8(path);
  AddonProperties properties;
  properties.name = u"bench";
  properties.version = u"1.0";
  properties.type = u"Korvan Toolbox";
  AddonPackage package(target, properties);
  std::vector<std::u16string> paths;
  for (std::size_t i = 0; i < files; ++i) paths.push_back(treePath(i));
  package.addFiles(std::vector<std::u16string>(files, opc::fromUtf8(source)), std::move(paths));
  AddonLicense license;
  license.type = u"MIT";
  license.text = u"As it is.";
  package.setLicense(license);
  package.logicalPackage().close(false);
}

}  // namespace

const std::string& packageOf(std::size_t files) {
  static Folder folder;
  static std::map<std::size_t, std::string> made;
  std::string& path = made[files];
  if (!path.empty()) return path;
  const std::string source = folder.file("source.m");
  std::filesystem::remove(source);
  if (FILE* file = std::fopen(source.c_str(), "w")) {
    std::fputs("function y = step(x)\ny = x + 1;\nend\n", file);
    std::fclose(file);
  }
  path = folder.file(std::to_string(files) + ".kraddon");
  make(path, source, files);
  return path;
}

}  // namespace bench
