// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/conformance/support/FileTrees.h"
#include "tests/opc/conformance/support/PackageSpec.h"
#include "tests/opc/conformance/support/ReadPackage.h"
#include "tests/opc/conformance/support/WrittenZip.h"
#include "tests/support/TemporaryFolder.h"

namespace test::conformance {
namespace {

using opc::interfaces::OpenMode;
using opc::model::Package;
using opc::zippackage::ZipPhysicalPackage;
using testing::Contains;
using testing::Each;
using testing::Not;
using testing::StartsWith;

// Small, with a descriptor, ZIP64, core properties and pieces in it.
std::string dense() {
  PackageSpec spec;
  spec.core = "<dc:title>t</dc:title>";
  spec.relationships = relationXml("rId2", "b.m#f");
  spec.last().descriptor = true;
  spec.last().content = std::string(40, 'b');
  spec.add("c.m/[0].last.piece", "c");
  spec.zip.zip64 = true;
  spec.zip.comment = "comment";
  return spec.bytes();
}

}  // namespace

TEST(RuleRB6, AFileCutAtAnyByteIsRefused) {
  const std::string whole = dense();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_NE(readPackage(whole.substr(0, size)).rule, "none") << size;
  }
}

TEST(RuleRB6, AFileWithAnyByteChangedEndsInAnAnswer) {
  const std::string whole = dense();
  std::size_t refused = 0;
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 0xff);
    refused += readPackage(changed).rule != "none";
  }

  EXPECT_GT(refused, whole.size() / 2);
  EXPECT_EQ(readPackage(whole).rule, "none");
}

// How the time grows is shown by the benchmark; here, work that grows with the square of the items
// runs into the limit that every test has.
TEST(RuleRB7, AHundredAndFiftyThousandItemsAreRead) {
  constexpr std::size_t kItems = 150'000;
  PackageSpec spec;
  for (std::size_t i = 0; i < kItems; ++i) spec.add("folder/" + std::to_string(i) + ".m", "");
  spec.zip.zip64 = true;

  EXPECT_EQ(readPackage(spec.bytes()).parts.size(), kItems + 2);
}

TEST(RuleRB8, AFolder10000DeepComesBack) {
  std::string path;
  for (int i = 0; i < 10000; ++i) path += "d/";
  path += "c.m";

  EXPECT_EQ(treeOf(packedTree({path}, {})), std::vector<std::string>{path});
}

TEST(RuleRB12, NothingIsExtractedOutsideOfTheDestination) {
  PackageSpec spec;
  spec.add("files/%2E%2E/out3.m");
  spec.add("files/..%5Cout4.m");
  spec.add("/out6.m");
  spec.add("files//out7.m");
  spec.add("files/good.m");

  const std::vector<std::string> paths = extractedTree(spec.bytes());

  EXPECT_EQ(paths, std::vector<std::string>{"good.m"});
}

TEST(RuleRB12, ADestinationThatIsALinkInsideIsNotFollowed) {
  const TemporaryFolder disk;
  std::filesystem::create_directory(disk / "elsewhere");
  std::filesystem::create_directory(disk / "out");
  std::filesystem::create_directory_symlink(disk / "elsewhere", disk / "out/x");

  const std::string fault = extractionFault(packedTree({"x/a.m"}, {}), disk / "out");

  EXPECT_THAT(fault, testing::HasSubstr("x"));
  EXPECT_TRUE(std::filesystem::is_empty(disk / "elsewhere"));
}

TEST(RuleRB13, AFileOfADoubtfulNameIsReportedAndNotExtracted) {
  PackageSpec spec;
  spec.add("files/a%0Ab.m");
  spec.add("files/c%FF.m");
  spec.add("files/good.m");

  EXPECT_EQ(extractedTree(spec.bytes()), std::vector<std::string>{"good.m"});
  EXPECT_EQ(unreadableIn(spec.bytes()).size(), 2u);
}

TEST(RuleRB13, WhatOurOwnTreeStoredIsRestored) {
  const std::vector<std::string> paths{"a\nb.m", "back\\slash.m", "bell\a"};

  EXPECT_EQ(extractedTree(packedTree(paths, {})), sorted(paths));
}

TEST(RuleRB14, LinksAndDevicesAreNotMade) {
  PackageSpec spec;
  spec.add("files/link.m", "/etc/passwd").central.externalAttributes = 0120777u << 16;
  spec.add("files/device.m").central.externalAttributes = 0020666u << 16;
  spec.add("files/good.m");

  EXPECT_EQ(extractedTree(spec.bytes()), std::vector<std::string>{"good.m"});
}

TEST(RuleRB15, ANameThatTheSystemRefusesLeavesNothingHalfWritten) {
  const TemporaryFolder disk;
  const std::string name(256, 'n');

  const std::string fault = extractionFault(packedTree({name}, {}), disk / "out");

  EXPECT_NE(fault, "");
  for (const auto& entry : std::filesystem::recursive_directory_iterator(disk.path())) {
    EXPECT_FALSE(entry.is_regular_file()) << entry.path();
  }
}

TEST(RuleRB16, ACommitThatFailsLeavesTheOldFileAndNothingElse) {
  const TemporaryFolder disk;
  const std::string before = PackageSpec().bytes();
  writeFile(disk / "p.kraddon", before);
  ZipPhysicalPackage physical((disk / "p.kraddon").u16string(), false, u"");
  Package package(physical, true);
  package.open(OpenMode::Modify);
  addPart(package, u"/new.m");
  const std::string other = before + "\n";
  writeFile(disk / "other", other);
  std::filesystem::rename(disk / "other", disk / "p.kraddon");

  EXPECT_THROW(package.close(false), opc::Exception);

  package.close(true);
  EXPECT_EQ(readFile(disk / "p.kraddon"), other);
  const std::filesystem::directory_iterator left(disk.path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 1);
}

TEST(RuleRB16, DroppingAChangeLeavesTheFileAsItIs) {
  const TemporaryFolder disk;
  const std::string before = PackageSpec().bytes();
  writeFile(disk / "p.kraddon", before);
  {
    ZipPhysicalPackage physical((disk / "p.kraddon").u16string(), false, u"");
    Package package(physical, true);
    package.open(OpenMode::Modify);
    addPart(package, u"/new.m");
  }

  EXPECT_EQ(readFile(disk / "p.kraddon"), before);
  const std::filesystem::directory_iterator left(disk.path());
  EXPECT_EQ(std::distance(begin(left), end(left)), 1);
}

}  // namespace test::conformance
