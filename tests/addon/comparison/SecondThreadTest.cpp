// SPDX-License-Identifier: MIT
// Whole packages with the help of a second thread, also for the thread sanitizer.
#include <string>
#include <vector>

#include "opc/checks/PackageVerification.h"
#include "tests/addon/comparison/ManyFilesFixture.h"

namespace addon::comparison {
namespace {

using opc::checks::Finding;

/// One line for each finding.
std::string linesOf(const opc::checks::Report& report) {
  std::string lines;
  for (const Finding& finding : report.findings()) {
    lines += finding.part + ": " + finding.message + "\n";
  }
  return lines;
}

class SecondThread : public ManyFiles, public testing::WithParamInterface<test::Starter> {
 protected:
  /// What a package becomes when the files are added to it.
  std::string bytesWithMany(const std::string& package,
                            const opc::interfaces::BackgroundStarter& starter) const {
    test::writeFile(file_, package);
    modify([&](AddonPackage& opened) {
      opc::zippackage::WriteOptions options;
      options.background = starter;
      options.timestamp = 1000000000;
      opened.physicalPackage().setWriteOptions(options);
      addMany(opened);
    });
    return test::readFile(file_);
  }
};

TEST_P(SecondThread, PacksTheSameBytes) {
  create();
  const std::string package = test::readFile(file_);
  const std::string expected = bytesWithMany(package, nullptr);

  const std::string bytes = bytesWithMany(package, GetParam().starter);

  EXPECT_TRUE(bytes == expected);
}

TEST_P(SecondThread, ExtractsTheSameFiles) {
  createMany();
  const auto to = folder() / "out";

  read([&](AddonPackage& package) {
    package.fileSystem().setBackground(GetParam().starter);
    package.extractAllFiles(to.u16string());
    return 0;
  });

  for (std::uint32_t file = 0; file < kFiles; ++file) {
    EXPECT_TRUE(test::readFile(to / pathOf(file)) == contentOf(file)) << file;
  }
}

TEST_P(SecondThread, FindsTheSameFaults) {
  createMany();
  for (const std::uint32_t file : {20, 21, 150, 299}) damage(file);
  const std::string expected = linesOf(opc::checks::verifyPackage(file_.string()));

  const auto report = opc::checks::verifyPackage(file_.string(), nullptr, {}, GetParam().starter);

  EXPECT_EQ(linesOf(report), expected);
  EXPECT_EQ(report.errors(), 4u);
}

INSTANTIATE_TEST_SUITE_P(, SecondThread, testing::ValuesIn(test::starters()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace addon::comparison
