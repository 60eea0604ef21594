// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/DocumentRemoval.h"
#include "opc/Text.h"
#include "tests/support/PackageInspector.h"
#include "tests/support/TemporaryFolder.h"

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using addon::packaging::removeScreenshot;
using opc::interfaces::OpenMode;
using Strings = std::vector<std::string>;
using Bytes = std::vector<unsigned char>;

namespace {

const std::string kScreenshotType =
    "http://schemas.pellandry.example/korvan/addon/2014/relationships/primaryScreenShot";
const std::string kThumbnailType =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail";
const std::string kStem = "metadata/primaryScreenShot.";

class AddonPackageScreenshot : public testing::Test {
 protected:
  void SetUp() override {
    std::u16string name = path();
    AddonProperties properties;
    properties.type = u"Korvan Toolbox";
    AddonPackage package(name, properties);
    package.logicalPackage().close(false);
  }

  std::u16string path() const { return file_.u16string(); }

  std::u16string image(const std::string& name, const std::string& content) const {
    test::writeFile(folder_ / name, content);
    return (folder_ / name).u16string();
  }

  void setScreenshot(std::u16string imagePath) const {
    AddonPackage package(path());
    package.logicalPackage().open(OpenMode::Modify);
    package.setScreenshot(imagePath);
    package.logicalPackage().close(false);
  }

  template <typename Work>
  void modify(Work work) const {
    AddonPackage package(path());
    package.logicalPackage().open(OpenMode::Modify);
    work(package);
    package.logicalPackage().close(false);
  }

  void takeScreenshotAway() const {
    modify([](AddonPackage& package) { EXPECT_TRUE(removeScreenshot(package.logicalPackage())); });
  }

  std::string screenshot() const {
    AddonPackage package(path());
    package.logicalPackage().open(OpenMode::Read);
    const Bytes bytes = package.getScreenshot();
    return {bytes.begin(), bytes.end()};
  }

  /// The items whose names begin as a screenshot's.
  Strings screenshotItems() const {
    Strings items = inspector_.names();
    std::erase_if(items, [](const std::string& item) { return !item.starts_with(kStem); });
    return items;
  }

 private:
  test::TemporaryFolder folder_;

 protected:
  const std::filesystem::path file_ = folder_ / "a.kraddon";
  const test::PackageInspector inspector_{file_};
};

struct ImageCase {
  const char* extension;
  const char* contentType;
  const char* stored;  ///< the extension in the package
};
class EveryImageExtension : public AddonPackageScreenshot,
                            public testing::WithParamInterface<ImageCase> {};
INSTANTIATE_TEST_SUITE_P(
    Extensions, EveryImageExtension,
    testing::Values(ImageCase{"png", "image/png", "png"}, ImageCase{"PNG", "image/png", "PNG"},
                    ImageCase{"gif", "image/gif", "gif"}, ImageCase{"tiff", "image/tiff", "tiff"},
                    ImageCase{"TIFF", "image/tiff", "TIFF"}, ImageCase{"bMp", "image/bmp", "bMp"},
                    ImageCase{"tif", "image/jpeg", "jpg"}, ImageCase{"jpg", "image/jpeg", "jpg"},
                    ImageCase{"JPEG", "image/jpeg", "jpg"}, ImageCase{"xyz", "image/jpeg", "jpg"},
                    ImageCase{"png ", "image/jpeg", "jpg"},
                    ImageCase{"p\u00f1g", "image/jpeg", "jpg"},
                    ImageCase{"", "image/jpeg", "jpg"}));

TEST_P(EveryImageExtension, GivesTheTypeAndTheNameOfThePart) {
  const std::u16string extension = opc::fromUtf8(GetParam().extension);
  EXPECT_EQ(opc::toUtf8(AddonPackage::getContentTypeFromImageExtension(extension)),
            GetParam().contentType);

  setScreenshot(image(std::string("shot.") + GetParam().extension, "pixels"));

  const std::string item = kStem + GetParam().stored;
  EXPECT_EQ(screenshotItems(), Strings{item});
  EXPECT_EQ(inspector_.contentType(item), GetParam().contentType);
  EXPECT_EQ(inspector_.relationships(kScreenshotType), Strings{"rId100 /" + item});
  EXPECT_EQ(inspector_.relationships(kThumbnailType), Strings{"rId101 /" + item});
  EXPECT_EQ(inspector_.content(item), "pixels");
}

TEST_F(AddonPackageScreenshot, APathWithoutAnExtensionIsStoredAsAJpeg) {
  setScreenshot(image("shot", "1"));
  EXPECT_EQ(screenshotItems(), Strings{kStem + "jpg"});

  setScreenshot(image(".png", "2"));
  EXPECT_EQ(screenshotItems(), Strings{kStem + "jpg"});
  EXPECT_EQ(screenshot(), "2");
}

class EveryImageSize : public AddonPackageScreenshot,
                       public testing::WithParamInterface<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Sizes, EveryImageSize,
                         testing::Values(0, 1, 8191, 8192, 8193, 16384, 3000000));

TEST_P(EveryImageSize, ComesBackToTheByte) {
  std::string bytes(GetParam(), '\0');
  unsigned state = 1;
  for (char& byte : bytes) byte = static_cast<char>((state = state * 1664525u + 1013904223u) >> 24);

  setScreenshot(image("shot.png", bytes));

  EXPECT_TRUE(screenshot() == bytes);
}

TEST_F(AddonPackageScreenshot, APackageWithoutOneGivesNoBytes) {
  EXPECT_EQ(screenshot(), "");
}

TEST_F(AddonPackageScreenshot, SettingTwiceLeavesTheSecondAndOneOfEachRelationship) {
  setScreenshot(image("first.png", "first"));

  setScreenshot(image("second.JPEG", "second"));

  EXPECT_EQ(screenshotItems(), Strings{kStem + "jpg"});
  EXPECT_EQ(inspector_.contentType(kStem + "jpg"), "image/jpeg");
  EXPECT_EQ(inspector_.relationships(kScreenshotType), Strings{"rId100 /" + kStem + "jpg"});
  EXPECT_EQ(inspector_.relationships(kThumbnailType), Strings{"rId101 /" + kStem + "jpg"});
  EXPECT_EQ(screenshot(), "second");
}

TEST_F(AddonPackageScreenshot, RemovedItLeavesNothingAndCanBeSetAgain) {
  setScreenshot(image("first.png", "first"));

  takeScreenshotAway();

  EXPECT_TRUE(screenshotItems().empty());
  EXPECT_TRUE(inspector_.relationships(kScreenshotType).empty());
  EXPECT_TRUE(inspector_.relationships(kThumbnailType).empty());
  EXPECT_EQ(screenshot(), "");
  setScreenshot(image("second.gif", "second"));
  EXPECT_EQ(screenshot(), "second");
}

TEST_F(AddonPackageScreenshot, RemovedItTakesItsThumbnailAndLeavesAnother) {
  setScreenshot(image("first.png", "first"));
  modify([](AddonPackage& package) {
    auto& logical = package.logicalPackage();
    const auto type = logical.getRelationship(u"rId101").getType();
    logical.deleteRelationship(u"rId101");
    for (const char16_t* target : {u"/METADATA/primaryScreenShot.png", u"/files/other.png"}) {
      logical.createInternalRelationship(type, opc::model::URI(target), u"");
    }
  });

  takeScreenshotAway();

  const Strings left = inspector_.relationships(kThumbnailType);
  ASSERT_EQ(left.size(), 1u);
  EXPECT_NE(left[0].find("/files/other.png"), std::string::npos);
  EXPECT_TRUE(screenshotItems().empty());
}

TEST_F(AddonPackageScreenshot, SettingTwiceInOneGoLeavesTheSecond) {
  std::u16string first = image("first.png", "first");
  std::u16string second = image("second.png", "second");
  AddonPackage package(path());
  package.logicalPackage().open(OpenMode::Modify);

  package.setScreenshot(first);
  package.setScreenshot(second);
  package.logicalPackage().close(false);

  EXPECT_EQ(screenshotItems(), Strings{kStem + "png"});
  EXPECT_EQ(screenshot(), "second");
}

TEST_F(AddonPackageScreenshot, OneThatCannotBeReadIsAnErrorThatNamesIt) {
  setScreenshot(image("old.png", "old"));
  const std::string before = test::readFile(file_);

  try {
    setScreenshot(file_.parent_path().u16string() + u"/missing.png");
    ADD_FAILURE() << "no error";
  } catch (const opc::Exception& error) {
    EXPECT_NE(std::string(error.what()).find("missing.png"), std::string::npos) << error.what();
  }
  EXPECT_THROW(setScreenshot(file_.parent_path().u16string()), opc::Exception);

  EXPECT_EQ(test::readFile(file_), before);
  EXPECT_EQ(screenshot(), "old");
}

TEST_F(AddonPackageScreenshot, AfterAFailureTheOldOneIsGoneFromTheOpenPackage) {
  setScreenshot(image("old.png", "old"));
  std::u16string missing = file_.parent_path().u16string() + u"/missing.gif";
  AddonPackage package(path());
  package.logicalPackage().open(OpenMode::Modify);

  EXPECT_THROW(package.setScreenshot(missing), opc::Exception);

  EXPECT_EQ(package.getScreenshot(), Bytes());
  EXPECT_TRUE(package.logicalPackage().hasRelationship(u"rId100"));
  EXPECT_TRUE(
      package.logicalPackage().hasPart(opc::model::PartName(u"/metadata/primaryScreenShot.gif")));
}

TEST_F(AddonPackageScreenshot, WithoutItsThumbnailRelationshipCannotBeReplaced) {
  setScreenshot(image("old.png", "old"));
  std::u16string fresh = image("new.png", "new");
  AddonPackage package(path());
  package.logicalPackage().open(OpenMode::Modify);
  package.logicalPackage().deleteRelationship(u"rId101");

  EXPECT_THROW(package.setScreenshot(fresh), opc::Exception);
}

TEST_F(AddonPackageScreenshot, IsFoundForReadingByTheTypeWhateverTheId) {
  setScreenshot(image("a.png", "pixels"));
  std::string rels = inspector_.content("_rels/.rels");
  rels.replace(rels.find("rId100"), 6, "other1");
  inspector_.replace("_rels/.rels", rels);

  EXPECT_EQ(screenshot(), "pixels");
}

TEST_F(AddonPackageScreenshot, TwoRelationshipsOfItsTypeReadAsNone) {
  setScreenshot(image("a.png", "pixels"));

  inspector_.doubleRelationship(kScreenshotType);

  EXPECT_EQ(screenshot(), "");
}

TEST_F(AddonPackageScreenshot, ARelationshipToAMissingPartIsAnError) {
  setScreenshot(image("a.png", "pixels"));

  inspector_.remove(kStem + "png");

  EXPECT_THROW(screenshot(), opc::Exception);
}

TEST_F(AddonPackageScreenshot, AnyPartWithARelationshipOfItsOwnTypeIsReadAsBytes) {
  AddonPackage package(path());
  package.logicalPackage().open(OpenMode::Read);

  const Bytes bytes = package.getBinaryPart(
      u"http://schemas.pellandry.example/korvan/addon/2014/relationships/addonProperties");

  EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
            inspector_.content("metadata/addonProperties.xml"));
  EXPECT_EQ(package.getBinaryPart(u"urn:none"), Bytes());
}

}  // namespace
