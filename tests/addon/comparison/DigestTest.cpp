// SPDX-License-Identifier: MIT
#include "addon/comparison/Digest.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "tests/addon/comparison/ManyFilesFixture.h"

namespace addon::comparison {
namespace {

class Digest : public ManyFiles {
 protected:
  std::string digest(const opc::interfaces::BackgroundStarter& starter = nullptr) const {
    return read([&](AddonPackage& package) {
      return contentDigest(package, readTree(package), nullptr, starter);
    });
  }

  std::string digestAfter(const std::function<void(AddonPackage&)>& work) const {
    modify(work);
    return digest();
  }
};

TEST_F(Digest, IsTheSameWithASecondThread) {
  createMany();
  const std::string expected = digest();

  for (const test::Starter& each : test::starters()) {
    EXPECT_EQ(digest(each.starter), expected) << each.name;
  }
}

TEST_F(Digest, IsTheSameHoweverItemsArePackedAndDated) {
  const std::string text = test::packableText(100000);
  create();
  modify([&](AddonPackage& package) { add(package, "a", text); });
  const std::string before = digest();
  const auto sizeBefore = std::filesystem::file_size(file_);

  const std::string after = digestAfter([&](AddonPackage& package) {
    opc::model::StandardPartInfo info(opc::interfaces::CompressionType::None, 0);
    info.modified = 1000000000;
    package.fileSystem().replaceFile(
        *package.fileSystem().find("a"),
        std::make_unique<opc::interfaces::MemoryContentSource>(text, "memory"), info);
    package.setTimes(1000000000);
  });

  EXPECT_EQ(after, before);
  EXPECT_GT(std::filesystem::file_size(file_), sizeBefore + text.size() / 2);
}

TEST_F(Digest, ChangesWithAnythingThatThePackageSays) {
  create();
  modify([](AddonPackage& package) { add(package, "a", "1"); });
  std::string last = digest();
  const auto expectAnother = [&](const char* what, const std::function<void(AddonPackage&)>& work) {
    const std::string now = digestAfter(work);
    EXPECT_NE(now, last) << what;
    last = now;
  };

  expectAnother("a file", [](AddonPackage& package) { add(package, "b", "1"); });
  expectAnother("a path", [](AddonPackage& package) {
    package.fileSystem().move(*package.fileSystem().find("b"), "c");
  });
  expectAnother("a folder", [](AddonPackage& package) { package.addFolders({u"empty"}); });
  expectAnother("a document", [](AddonPackage& package) {
    packaging::AddonLicense license;
    license.text = u"text";
    package.setLicense(license);
  });
  expectAnother("a property", [](AddonPackage& package) {
    packaging::AddonProperties properties = test::toolbox();
    properties.version = u"1.3";
    package.setAddonProperties(properties);
  });
}

TEST_F(Digest, OfAPartIsThatOfItsBytes) {
  create();
  modify([](AddonPackage& package) { add(package, "a", "1"); });

  EXPECT_EQ(read([](AddonPackage& package) { return hashOfPart(package, "/files/a"); }),
            "6b86b273ff34fce19d6b804eff5a3f5747ada4eaa22f1d49c01e52ddb7875b4b");
}

}  // namespace
}  // namespace addon::comparison
