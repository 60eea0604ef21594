// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/gateway/GatewayFixture.h"

namespace {

using test::HostArray;
using test::makeText;
using Strings = std::vector<std::string>;

const std::string kScreenshotType =
    "http://schemas.pellandry.example/korvan/addon/2014/relationships/primaryScreenShot";
const std::string kThumbnailType =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail";
const std::string kStem = "metadata/primaryScreenShot.";

class ScreenshotGateway : public test::GatewayTest {
 protected:
  void SetUp() override { createPackage(); }

  void setScreenshot(const std::u16string& image) const {
    write(test::kSetScreenshot, {makeText(image).get()});
  }
  Strings screenshotItems() const {
    Strings items = inspector().names();
    std::erase_if(items, [](const std::string& item) { return !item.starts_with(kStem); });
    return items;
  }
};

TEST_F(ScreenshotGateway, StoresTheImageAsScreenshotAndThumbnail) {
  setScreenshot(diskFile("shot.PNG", "pixels"));

  EXPECT_EQ(inspector().content(kStem + "PNG"), "pixels");
  EXPECT_EQ(inspector().contentType(kStem + "PNG"), "image/png");
  EXPECT_EQ(inspector().relationships(kScreenshotType), Strings{"rId100 /" + kStem + "PNG"});
  EXPECT_EQ(inspector().relationships(kThumbnailType), Strings{"rId101 /" + kStem + "PNG"});
}

TEST_F(ScreenshotGateway, AJpegReplacesAPngWithAllThatBelongsToIt) {
  setScreenshot(diskFile("shot.png", "first"));

  setScreenshot(diskFile("shot.jpeg", "second"));

  EXPECT_EQ(screenshotItems(), Strings{kStem + "jpg"});
  EXPECT_EQ(inspector().content(kStem + "jpg"), "second");
  EXPECT_EQ(inspector().contentType(kStem + "jpg"), "image/jpeg");
  EXPECT_EQ(inspector().relationships(kScreenshotType), Strings{"rId100 /" + kStem + "jpg"});
  EXPECT_EQ(inspector().relationships(kThumbnailType), Strings{"rId101 /" + kStem + "jpg"});
}

TEST_F(ScreenshotGateway, OneThatOnlyDiffersInTheCaseOfItsExtensionReplacesToo) {
  setScreenshot(diskFile("shot.tiff", "first"));

  setScreenshot(diskFile("shot.TIFF", "second"));

  EXPECT_EQ(screenshotItems(), Strings{kStem + "TIFF"});
  EXPECT_EQ(inspector().content(kStem + "TIFF"), "second");
}

TEST_F(ScreenshotGateway, IsNotAFileOfTheTree) {
  setScreenshot(diskFile("shot.png", "pixels"));

  EXPECT_EQ(kxGetNumberOfElements(read(test::kGetFileList).get()), 0u);
}

TEST_F(ScreenshotGateway, AnImageThatCannotBeReadIsSilentAndKeepsTheOldOne) {
  setScreenshot(diskFile("shot.png", "old"));
  const std::string before = packageBytes();

  setScreenshot((*this / "missing.png").u16string());
  setScreenshot((*this / "").u16string());
  setScreenshot(u"");

  EXPECT_EQ(packageBytes(), before);
}

TEST_F(ScreenshotGateway, ScreenshotAndDocumentsDoNotGetInEachOthersWay) {
  setScreenshot(diskFile("shot.png", "pixels"));

  setLicense(u"MIT", u"terms");
  setScreenshot(diskFile("shot.gif", "others"));

  EXPECT_EQ(test::fieldText(read(test::kGetLicense).get(), "text"), u"terms");
  EXPECT_EQ(screenshotItems(), Strings{kStem + "gif"});
}

TEST_F(ScreenshotGateway, APathThatIsNotTextIsTheHostsError) {
  const std::string before = packageBytes();
  const HostArray cell = test::makeCell({u"a.png"});

  EXPECT_EQ(callCleanly(test::kSetScreenshot, 0, {path(), cell.get()}).hostError, "Korvan:notText");
  EXPECT_EQ(packageBytes(), before);
}

}  // namespace
