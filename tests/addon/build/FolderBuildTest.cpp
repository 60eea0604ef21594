// SPDX-License-Identifier: MIT
#include "addon/build/FolderBuild.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "addon/build/BuildError.h"
#include "addon/comparison/Contents.h"
#include "opc/Exception.h"
#include "tests/support/TemporaryFolder.h"
#include "text/JsonText.h"
#include "tool/report/Schemas.h"

namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

class FolderBuild : public testing::Test {
 protected:
  FolderBuild() {
    fs::create_directory(folder_ / "wave");
    write("kraddon.toml", "[package]\nname = \"Wave\"\nversion = \"1\"\n");
    write("a.m", std::string(1000, 'a'));
  }

  void write(const std::string& path, const std::string& content) {
    test::writeFile(folder_ / "wave" / path, content);
  }
  std::string path(const std::string& name) const { return (folder_ / name).string(); }

  Paths built(const std::vector<std::string>& leftOut = {}) const {
    addon::build::buildInto(path("wave"), path("out.zip"), {.leftOut = leftOut});
    addon::packaging::AddonPackage package((folder_ / "out.zip").u16string());
    package.logicalPackage().open(opc::interfaces::OpenMode::Read);
    Paths paths;
    for (const auto& item : addon::comparison::readTree(package)) {
      paths.push_back(item.path + (item.info.compressed ? " packed" : ""));
    }
    return paths;
  }

  test::TemporaryFolder folder_;
};

TEST_F(FolderBuild, StoresWhatTheManifestAsksFor) {
  write("kraddon.toml",
        "[package]\nname = \"Wave\"\nversion = \"1\"\n[files]\nexclude = [\"*.txt\"]\n"
        "[build]\nlevel = 9\n");
  write("b.txt", "b");

  EXPECT_EQ(built(), Paths{"a.m"});
}

TEST_F(FolderBuild, LeavesOutThePackagesOfEarlierBuilds) {
  write("kraddon.toml", "[package]\nname = \"Wave\"\nversion = \"1\"\n[build]\noutput = \"" +
                            path("wave/old.zip") + "\"\n");
  write("old.zip", "old");
  write("other.zip", "other");

  EXPECT_EQ(built({path("wave/other.zip")}), Paths{"a.m"});
}

TEST_F(FolderBuild, ReplacesNoFile) {
  test::writeFile(path("out.zip"), "old");

  EXPECT_THROW(built(), opc::Exception);
  EXPECT_EQ(test::readFile(path("out.zip")), "old");
}

TEST_F(FolderBuild, WithoutAManifestFails) {
  fs::remove(path("wave/kraddon.toml"));

  EXPECT_THROW(built(), addon::build::BuildError);
  EXPECT_FALSE(fs::exists(path("out.zip")));
}

TEST_F(FolderBuild, WithAFaultInTheManifestFails) {
  write("kraddon.toml", "[package]\n");

  EXPECT_THROW(built(), addon::project::ManifestError);
  EXPECT_FALSE(fs::exists(path("out.zip")));
}

/// Adds the keys of a table's schema, "!" behind those that are required.
void addKeys(const text::JsonValue& schema, const std::string& path, std::set<std::string>& keys) {
  for (const auto& [name, value] : schema.at("properties").items()) {
    const auto& required = schema.at("required");
    const bool isRequired = std::find(required.begin(), required.end(), name) != required.end();
    const std::string key = path.empty() ? name : path + "." + name;
    const auto items = value.find("items");
    if (value.contains("properties")) {
      addKeys(value, key, keys);
    } else if (items != value.end() && items->contains("properties")) {
      addKeys(*items, key + "[]", keys);
    } else {
      keys.insert(key + (isRequired ? "!" : ""));
    }
  }
}

TEST(ManifestSchema, HasTheKeysThatAreRead) {
  std::set<std::string> read;
  for (const auto& key : addon::project::manifestKeys()) {
    read.insert(key.path + (key.isRequired ? "!" : ""));
  }
  std::set<std::string> described;

  for (const tool::report::Schema& schema : tool::report::schemas()) {
    if (schema.name == "manifest") addKeys(schema.make(), "", described);
  }

  EXPECT_EQ(described, read);
}

}  // namespace
