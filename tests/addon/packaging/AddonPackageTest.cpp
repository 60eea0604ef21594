// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonPackage.h"

#include <gtest/gtest.h>

#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <filesystem>
#include <string>

#include "tests/addon/packaging/AddonPackageFixture.h"

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using test::AddonPackageTest;
using test::readFile;
using test::toolbox;
using test::writeFile;

namespace {

const std::string kPropertiesTypeAscii =
    "http://schemas.pellandry.example/korvan/addon/2014/"
    "relationships/addonProperties";

TEST_F(AddonPackageTest, OnlyTheExactWordsAreAToolbox) {
  EXPECT_EQ(AddonPackage::getAddonTypeFromString(u"Korvan Toolbox"), 0);
  for (const char16_t* type : {u"", u"korvan toolbox", u"Korvan Toolbox ", u" Korvan Toolbox",
                               u"Korvan", u"KORVAN TOOLBOX"}) {
    EXPECT_EQ(AddonPackage::getAddonTypeFromString(type), 1);
  }
}

TEST_F(AddonPackageTest, CreatingRecordsTheCoreProperties) {
  const auto before = boost::posix_time::second_clock::universal_time();

  create();

  const auto after = boost::posix_time::second_clock::universal_time();
  read([&](AddonPackage& package) {
    const auto core = package.coreProperties().getCoreProperties();
    EXPECT_EQ(core.getContentType(), u"application/vnd.pellandry.korvan.toolbox");
    EXPECT_EQ(core.getContentTypeFriendlyName(), u"Korvan Toolbox");
    EXPECT_EQ(core.getKorvanRelease(), u"R2047b");
    EXPECT_EQ(core.getTitle().value(), u"Curves");
    EXPECT_EQ(core.getDescription().value(), u"one line");
    EXPECT_EQ(core.getVersion().value(), u"1.2");
    EXPECT_EQ(core.getCreatedBy().value(), u"Ada");
    EXPECT_EQ(core.getCreatedTime().value(), core.getLastModifiedTime().value());
    EXPECT_GE(core.getCreatedTime().value(), before);
    EXPECT_LE(core.getCreatedTime().value(), after);
    return 0;
  });
}

TEST_F(AddonPackageTest, CreatingWritesThePropertiesPart) {
  create();

  EXPECT_EQ(inspector_.contentType("metadata/addonProperties.xml"),
            "application/vnd.pellandry.korvan.addon.properties+xml");
  EXPECT_EQ(inspector_.relationships(kPropertiesTypeAscii).size(), 1u);
  EXPECT_NE(inspector_.canonical("metadata/addonProperties.xml").find("at length"),
            std::string::npos);
}

TEST_F(AddonPackageTest, PropertiesComeBackWithTheReleaseOfTheLibrary) {
  create();

  const AddonProperties properties = read([](AddonPackage& package) {
    AddonProperties found;
    package.getAddonProperties(found);
    return found;
  });

  EXPECT_EQ(properties.type, u"Korvan Toolbox");
  EXPECT_EQ(properties.KorvanRelease, u"R2047b");
  EXPECT_EQ(properties.name + properties.version + properties.summary, u"Curves1.2one line");
  EXPECT_EQ(properties.description + properties.GUID, u"at lengthg-1");
  EXPECT_EQ(properties.authorName + properties.authorContact + properties.authorOrganization,
            u"Adaa@b.cO");
  EXPECT_TRUE(properties.lastModifiedTime);
}

class UnknownType : public AddonPackageTest, public testing::WithParamInterface<const char16_t*> {};
INSTANTIATE_TEST_SUITE_P(Types, UnknownType,
                         testing::Values(u"", u"korvan toolbox", u"Korvan Toolbox "));

TEST_P(UnknownType, MakesNoPackageAndNoError) {
  AddonProperties properties = toolbox();
  properties.type = GetParam();

  create(properties);

  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_P(UnknownType, LeavesAFileThatIsThereAlone) {
  writeFile(file_, "precious");
  AddonProperties properties = toolbox();
  properties.type = GetParam();

  create(properties);

  EXPECT_EQ(readFile(file_), "precious");
}

TEST_F(AddonPackageTest, CreatingReplacesWhatIsAtThePath) {
  create();
  store(u"MIT", u"terms");
  AddonProperties other = toolbox();
  other.name = u"Other";

  create(other);

  EXPECT_EQ(loadOver(), u"old/old");
  read([](AddonPackage& package) {
    AddonProperties found;
    package.getAddonProperties(found);
    EXPECT_EQ(found.name, u"Other");
    return 0;
  });
}

TEST_F(AddonPackageTest, CreatingWithoutACommitLeavesNothing) {
  {
    std::u16string name = path();
    AddonProperties properties = toolbox();
    const AddonPackage package(name, properties);
  }

  EXPECT_FALSE(std::filesystem::exists(file_));
  EXPECT_TRUE(std::filesystem::is_empty(folder()));
}

TEST_F(AddonPackageTest, ConstructingWithAPathTouchesNothing) {
  { const AddonPackage package(path()); }

  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(AddonPackageTest, ChangingPropertiesKeepsTimesReleaseAndType) {
  create();
  const auto core = [&] {
    return read([](AddonPackage& p) { return p.coreProperties().getCoreProperties(); });
  };
  modify([](AddonPackage& package) {
    auto old = package.coreProperties().getCoreProperties();
    old.setLastModifiedTime(boost::posix_time::from_time_t(1'000'000'000));
    package.coreProperties().setCoreProperties(old);
  });
  const auto before = core();

  modify([](AddonPackage& package) {
    AddonProperties changed = toolbox();
    changed.type = u"something else";
    changed.KorvanRelease = u"R3000";
    changed.name = u"New";
    changed.description = u"new text";
    package.setAddonProperties(changed);
  });

  const auto after = core();
  EXPECT_EQ(after.getLastModifiedTime().value(), before.getLastModifiedTime().value());
  EXPECT_EQ(after.getCreatedTime().value(), before.getCreatedTime().value());
  EXPECT_EQ(after.getKorvanRelease(), u"R2047b");
  EXPECT_EQ(after.getContentTypeFriendlyName(), u"Korvan Toolbox");
  EXPECT_EQ(after.getTitle().value(), u"New");
  EXPECT_NE(inspector_.content("metadata/addonProperties.xml").find("new text"), std::string::npos);
}

TEST_F(AddonPackageTest, TheAuthorOfThePartWinsOverTheCoreProperties) {
  create();
  modify([](AddonPackage& package) {
    auto core = package.coreProperties().getCoreProperties();
    core.setCreatedBy(u"Somebody else");
    package.coreProperties().setCoreProperties(core);
  });

  const std::u16string author = read([](AddonPackage& package) {
    AddonProperties found;
    package.getAddonProperties(found);
    return found.authorName;
  });

  EXPECT_EQ(author, u"Ada");
}

TEST_F(AddonPackageTest, WhatThePackageDoesNotHoldKeepsItsValue) {
  create();
  modify([](AddonPackage& package) {
    for (const auto& relationship : package.logicalPackage().getRelationships()) {
      package.logicalPackage().deleteRelationship(relationship.getId());
    }
  });

  read([](AddonPackage& package) {
    AddonProperties found = toolbox();
    found.lastModifiedTime = boost::posix_time::from_time_t(1);
    package.getAddonProperties(found);
    EXPECT_EQ(found.type, u"");
    EXPECT_EQ(found.KorvanRelease, u"");
    EXPECT_EQ(found.name + found.version + found.summary, u"Curves1.2one line");
    EXPECT_EQ(found.authorName + found.description + found.GUID, u"Adaat lengthg-1");
    EXPECT_FALSE(found.lastModifiedTime);
    return 0;
  });
}

}  // namespace
