// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipPhysicalPackage.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/opc/zippackage/ZipPackagesFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

namespace fs = std::filesystem;
using interfaces::CompressionType;
using interfaces::ItemIndex;
using interfaces::ItemInfo;
using interfaces::ItemKind;
using interfaces::NewItem;
using interfaces::OpenMode;
using test::TextSource;

TEST_F(ZipPackages, ThatCannotBeOpenedSayWhy) {
  const auto error = [&](const fs::path& place) {
    return test::errorOf([&] {
      auto package = test::packageAt(place);
      package.open(OpenMode::Read);
    });
  };
  const std::string start = "cannot open package '" + path().string() + "': ";
  EXPECT_EQ(error(path()), start + "No such file or directory");
  EXPECT_EQ(error(folder_.path()),
            "cannot open package '" + folder_.path().string() + "': it is a folder");
  EXPECT_EQ(error(""), "cannot open package '': the path is empty");
  EXPECT_EQ(error(path().string() + '\0' + "x"),
            "cannot open package '" + path().string() + "\\x00x': the path holds a NUL");
  test::writeFile(path(), "");
  EXPECT_EQ(error(path()), start + "it is empty");
  test::writeFile(path(), "hello");
  EXPECT_EQ(error(path()), start + "not a ZIP file (no end record)");
  fs::remove(path());
  ASSERT_EQ(::mkfifo(path().c_str(), 0600), 0);
  EXPECT_EQ(error(path()), start + "it is not a regular file");
  EXPECT_EQ(error("/dev/null"), "cannot open package '/dev/null': it is not a regular file");
}

TEST_F(ZipPackages, WithAFaultInTheDirectoryAreRefusedByRuleAndName) {
  test::ZipBuilder builder;
  builder.add({.name = "a"}).add({.name = "a"});
  test::writeFile(path(), builder.build());
  auto package = test::packageAt(path());
  std::string text;
  std::string rule;
  try {
    package.open(OpenMode::Read);
  } catch (const FormatError& e) {
    text = e.what();
    rule = e.rule();
  }

  EXPECT_EQ(text, "cannot open package '" + path().string() + "': item 'a' is there twice");
  EXPECT_EQ(rule, "ZP-2");
  EXPECT_FALSE(package.isOpen());
}

TEST_F(ZipPackages, AreNotCreatedWhereTheyCannotBe) {
  const auto error = [&](const fs::path& place, bool replace, ErrorCode* code = nullptr) {
    return test::errorOf(
        [&] {
          auto package = test::packageAt(place, replace);
          package.open(OpenMode::Create);
        },
        code);
  };
  ErrorCode code{};
  test::writeFile(path(), "precious");

  EXPECT_EQ(error(path(), false, &code),
            "cannot create package '" + path().string() + "': it already exists");
  EXPECT_EQ(code, ErrorCode::AlreadyExists);
  EXPECT_EQ(error(path(), true), "");
  EXPECT_EQ(error(folder_.path(), true, &code),
            "cannot create package '" + folder_.path().string() + "': it is a folder");
  EXPECT_EQ(code, ErrorCode::AlreadyExists);
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(
      error(folder_ / "pipe", true, &code),
      "cannot create package '" + (folder_ / "pipe").string() + "': it is not a regular file");
  EXPECT_EQ(code, ErrorCode::AlreadyExists);
  EXPECT_NE(error(folder_ / "missing" / "p", true).find("No such file or directory"),
            std::string::npos);
  EXPECT_EQ(test::readFile(path()), "precious");
}

TEST_F(ZipPackages, ThatAreCreatedTouchNothingBeforeTheCommit) {
  test::writeFile(path(), "old content");
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  test::addText(package, {.name = "a"}, "1");
  EXPECT_EQ(test::readFile(path()), "old content");

  package.close(true);

  EXPECT_EQ(test::readFile(path()), "old content");
}

TEST_F(ZipPackages, OpenForReadingRefuseChanges) {
  test::makePackage(path(), {"a", "1"});
  const auto holder = opened(OpenMode::Read);
  auto& package = *holder;
  ErrorCode code{};
  const std::string expected = "package '" + path().string() + "' is open for reading only";

  EXPECT_EQ(test::errorOf([&] { package.addItem({.name = "b"}); }, &code), expected);
  EXPECT_EQ(code, ErrorCode::InvalidState);
  EXPECT_EQ(test::errorOf([&] { package.removeItem(0); }), expected);
  EXPECT_EQ(test::errorOf([&] { package.openForWriting(0); }), expected);
  package.close(false);
  EXPECT_FALSE(package.isOpen());
}

TEST_F(ZipPackages, ThatAreNotOpenCannotBeReadOrChanged) {
  auto package = test::packageAt(path());
  ByteBuffer bytes;
  const std::string expected = "package '" + path().string() + "' is not open";

  EXPECT_EQ(test::errorOf([&] { package.itemCount(); }), expected);
  EXPECT_EQ(test::errorOf([&] { package.readItem(0, bytes, 1); }), expected);
  EXPECT_EQ(test::errorOf([&] { package.addItem({.name = "b"}); }), expected);
  EXPECT_EQ(test::errorOf([&] { package.close(false); }), "");
  EXPECT_EQ(test::errorOf([&] { package.close(true); }), "");
  EXPECT_EQ(package.description(), path().string());
}

TEST_F(ZipPackages, ThatAreOpenCannotBeOpenedAgain) {
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;

  EXPECT_EQ(test::errorOf([&] { package.open(OpenMode::Read); }),
            "package '" + path().string() + "' is open already");
  EXPECT_TRUE(package.isOpen());
}

TEST_F(ZipPackages, RefuseItemsThatAreNotThere) {
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  test::addText(package, {.name = "a"}, "1");
  package.removeItem(0);
  ErrorCode code{};

  EXPECT_EQ(test::errorOf([&] { package.itemInfo(0); }, &code),
            "item 'a' was removed from '" + path().string() + "'");
  EXPECT_EQ(code, ErrorCode::NotFound);
  EXPECT_EQ(test::errorOf([&] { package.openItem(1); }, &code),
            "package '" + path().string() + "' has no item of number 1");
  EXPECT_EQ(code, ErrorCode::InvalidArgument);
  EXPECT_TRUE(package.isRemoved(7));
}

TEST_F(ZipPackages, RefuseToWriteIntoItemsThatHaveTheirContent) {
  test::makePackage(path(), {"a", "1"});
  const auto holder = opened(OpenMode::Modify);
  auto& package = *holder;
  const ItemIndex item = package.addItem({.name = "b"}, std::make_unique<TextSource>("2"));

  EXPECT_EQ(test::errorOf([&] { package.openForWriting(0); }),
            "item 'a' cannot be written to: it has its content");
  EXPECT_EQ(test::errorOf([&] { package.openForWriting(item); }),
            "item 'b' cannot be written to: it has its content");
}

TEST_F(ZipPackages, RefuseItemsWithoutASource) {
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  ErrorCode code{};

  EXPECT_EQ(test::errorOf([&] { package.addItem({.name = "a"}, nullptr); }, &code),
            "item 'a' has no source");
  EXPECT_EQ(code, ErrorCode::InvalidArgument);
  EXPECT_EQ(package.itemCount(), 0u);
}

TEST_F(ZipPackages, RefuseNamesThatCannotBeWritten) {
  const auto holder = opened(OpenMode::Create);
  auto& package = *holder;
  ErrorCode code{};
  for (const std::string& name :
       {std::string(), std::string("a\0b", 3), std::string("gr\u00fcn"), std::string(65536, 'n')}) {
    EXPECT_NE(test::errorOf([&] { package.addItem({.name = name}); }, &code), "");
    EXPECT_EQ(code, ErrorCode::InvalidName);
  }
  EXPECT_EQ(package.itemCount(), 0u);
}

}  // namespace
}  // namespace opc::zippackage
