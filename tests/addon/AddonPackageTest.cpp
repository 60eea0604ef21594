// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonPackage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <filesystem>
#include <string>
#include <vector>

#include "opc/Text.h"
#include "tests/support/PackageInspector.h"
#include "tests/support/TemporaryFolder.h"

using addon::packaging::AddonLicense;
using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using addon::packaging::AddonType;
using opc::interfaces::OpenMode;
using test::PackageInspector;
using test::readFile;
using test::writeFile;

namespace {

const std::u16string kLicenseType =
    u"http://schemas.pellandry.example/korvan/addon/2014/relationships/license";
const std::string kLicenseTypeAscii =
    "http://schemas.pellandry.example/korvan/addon/2014/"
    "relationships/license";
const std::string kPropertiesTypeAscii =
    "http://schemas.pellandry.example/korvan/addon/2014/"
    "relationships/addonProperties";

AddonProperties toolbox() {
  AddonProperties properties;
  properties.type = u"Korvan Toolbox";
  properties.name = u"Curves";
  properties.version = u"1.2";
  properties.KorvanRelease = u"R1999a";
  properties.summary = u"one line";
  properties.description = u"at length";
  properties.authorName = u"Ada";
  properties.authorContact = u"a@b.c";
  properties.authorOrganization = u"O";
  properties.GUID = u"g-1";
  return properties;
}

class AddonPackageTest : public testing::Test {
 private:
  test::TemporaryFolder folder_;

 protected:
  const std::filesystem::path file_ = folder_ / "a.kraddon";
  const PackageInspector inspector_{file_};

  std::u16string path() const { return file_.u16string(); }

  void create(AddonProperties properties = toolbox()) const {
    std::u16string name = path();
    AddonPackage package(name, properties);
    package.logicalPackage().close(false);
  }

  /// Opens the package, does `work` on it and commits.
  template <typename Work>
  void modify(Work work) const {
    AddonPackage package(path());
    package.logicalPackage().open(OpenMode::Modify);
    work(package);
    package.logicalPackage().close(false);
  }

  /// What `work` finds in the package.
  template <typename Work>
  auto read(Work work) const {
    AddonPackage package(path());
    package.logicalPackage().open(OpenMode::Read);
    return work(package);
  }

  void store(const std::u16string& type, const std::u16string& text) const {
    modify([&](AddonPackage& package) {
      AddonLicense license;
      license.type = type;
      license.text = text;
      package.setLicense(license);
    });
  }

  /// A license read over one that holds "old" twice.
  std::u16string loadOver() const {
    return read([](AddonPackage& package) {
      AddonLicense license;
      license.type = license.text = u"old";
      package.getLicense(license);
      return license.type + u"/" + license.text;
    });
  }

  std::u16string diskFile(const char* name, const char* content = "content") const {
    writeFile(folder_ / name, content);
    return (folder_ / name).u16string();
  }

  std::vector<std::u16string> list() const {
    return read([](AddonPackage& package) { return package.getFileList(); });
  }

  const std::filesystem::path& folder() const { return folder_.path(); }
};

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

TEST_F(AddonPackageTest, ADocumentStoredTwiceIsOnePartWithItsFirstRelationship) {
  create();
  store(u"MIT", u"first");
  const auto first = inspector_.relationships(kLicenseTypeAscii);
  ASSERT_EQ(first.size(), 1u);

  store(u"BSD", u"second");

  EXPECT_EQ(inspector_.relationships(kLicenseTypeAscii), first);
  EXPECT_EQ(loadOver(), u"BSD/second");
  const auto names = inspector_.names();
  EXPECT_EQ(std::count(names.begin(), names.end(), "metadata/license.xml"), 1);
}

TEST_F(AddonPackageTest, AStoredDocumentIsAPartOfItsTypeInItsNamespace) {
  create();

  store(u"MIT", u"terms");

  EXPECT_EQ(inspector_.contentType("metadata/license.xml"),
            "application/vnd.pellandry.korvan.addon.license+xml");
  EXPECT_EQ(inspector_.canonical("metadata/license.xml"),
            "<license xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/license\">"
            "<licenseText type=\"MIT\">terms</licenseText></license>");
}

TEST_F(AddonPackageTest, ADocumentThatIsNotThereLeavesTheObjectAlone) {
  create();

  EXPECT_EQ(loadOver(), u"old/old");
}

TEST_F(AddonPackageTest, TwoRelationshipsOfOneTypeReadAsNone) {
  create();
  store(u"MIT", u"terms");

  inspector_.doubleRelationship(kLicenseTypeAscii);

  EXPECT_EQ(loadOver(), u"old/old");
}

TEST_F(AddonPackageTest, ARelationshipToAMissingPartIsAnErrorThatNamesThePart) {
  create();
  store(u"MIT", u"terms");
  modify([](AddonPackage& package) {
    package.logicalPackage().deletePart(opc::model::PartName(u"/metadata/license.xml"));
  });

  try {
    loadOver();
    FAIL() << "no exception";
  } catch (const opc::Exception& error) {
    EXPECT_EQ(error.code(), opc::ErrorCode::NotFound);
    EXPECT_NE(std::string(error.what()).find("/metadata/license.xml"), std::string::npos);
  }
}

TEST_F(AddonPackageTest, ThePartIsFoundByItsRelationshipWhereverItLies) {
  create();
  modify([](AddonPackage& package) {
    auto& logical = package.logicalPackage();
    const auto part = logical.createPart(
        opc::model::PartName(u"/elsewhere/l.xml"), opc::model::ContentType(u"application/xml"),
        opc::model::StandardPartInfo(opc::interfaces::CompressionType::Normal, 0));
    const std::string xml = "<l><licenseText type='T'>found</licenseText></l>";
    part->getOutputStream()->write(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
    logical.createInternalRelationship(kLicenseType, opc::model::URI(u"/elsewhere/l.xml"), u"");
  });

  EXPECT_EQ(loadOver(), u"T/found");
}

TEST_F(AddonPackageTest, ARemovedDocumentLeavesNeitherPartNorRelationship) {
  create();
  const auto before = inspector_.names();
  store(u"MIT", u"terms");

  modify([](AddonPackage& package) { EXPECT_TRUE(package.removeXMLPart(AddonLicense())); });

  EXPECT_EQ(inspector_.names(), before);
  EXPECT_TRUE(inspector_.relationships(kLicenseTypeAscii).empty());
  EXPECT_EQ(loadOver(), u"old/old");
}

TEST_F(AddonPackageTest, RemovingWhatIsNotThereChangesNothing) {
  create();
  const std::string before = readFile(file_);

  modify([](AddonPackage& package) {
    EXPECT_FALSE(package.removeXMLPart(AddonLicense()));
    EXPECT_FALSE(package.removeScreenshot());
  });

  EXPECT_EQ(readFile(file_), before);
}

TEST_F(AddonPackageTest, ARemovedDocumentGoesWhereverItLies) {
  create();
  modify([](AddonPackage& package) {
    auto& logical = package.logicalPackage();
    logical.createPart(opc::model::PartName(u"/elsewhere/l.xml"),
                       opc::model::ContentType(u"application/xml"),
                       opc::model::StandardPartInfo(opc::interfaces::CompressionType::Normal, 0));
    logical.createInternalRelationship(kLicenseType, opc::model::URI(u"/elsewhere/l.xml"), u"");
    logical.createInternalRelationship(kLicenseType, opc::model::URI(u"/not/there.xml"), u"");
    logical.createExternalRelationship(kLicenseType, opc::model::URI(u"http://x.example/"), u"");
  });

  modify([](AddonPackage& package) { EXPECT_TRUE(package.removeXMLPart(AddonLicense())); });

  EXPECT_TRUE(inspector_.relationships(kLicenseTypeAscii).empty());
  const auto names = inspector_.names();
  EXPECT_EQ(std::count(names.begin(), names.end(), "elsewhere/l.xml"), 0);
}

TEST_F(AddonPackageTest, ADocumentWithoutItsRelationshipIsRemovedByName) {
  create();
  store(u"MIT", u"terms");
  modify([](AddonPackage& package) {
    auto& logical = package.logicalPackage();
    logical.deleteRelationship(logical.getRelationshipsByType(kLicenseType).at(0).getId());
  });

  modify([](AddonPackage& package) { EXPECT_TRUE(package.removeXMLPart(AddonLicense())); });

  const auto names = inspector_.names();
  EXPECT_EQ(std::count(names.begin(), names.end(), "metadata/license.xml"), 0);
}

TEST_F(AddonPackageTest, FilesOfTheTreeOutliveADocumentThatPointsAtThem) {
  create();
  modify([&](AddonPackage& package) {
    package.addFiles({diskFile("plain", "1"), diskFile("odd", "2")}, {u"plain.xml", u"odd."});
    auto& logical = package.logicalPackage();
    for (const char* path : {"plain.xml", "odd."}) {
      const auto item = package.fileSystem().find(path)->info().itemName;
      logical.createInternalRelationship(
          kLicenseType, opc::model::URI(opc::fromUtf8("/" + std::string(item))), u"");
    }
  });

  modify([](AddonPackage& package) { EXPECT_TRUE(package.removeXMLPart(AddonLicense())); });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"odd.", u"plain.xml"}));
  EXPECT_TRUE(inspector_.relationships(kLicenseTypeAscii).empty());
}

TEST_F(AddonPackageTest, AMalformedPartIsAnErrorThatNamesThePart) {
  create();
  store(u"MIT", u"terms");
  inspector_.replace("metadata/license.xml", "<license><licenseText type='x'>half");

  try {
    loadOver();
    FAIL() << "no exception";
  } catch (const opc::model::InvalidXMLDocument& error) {
    EXPECT_NE(std::string(error.what()).find("cannot read part '/metadata/license.xml' of '"),
              std::string::npos)
        << error.what();
    EXPECT_EQ(error.line(), 1u);
  }
}

TEST_F(AddonPackageTest, ADocumentThatXmlCannotCarryIsNotCommitted) {
  create();
  const std::string before = readFile(file_);

  EXPECT_THROW(store(u"MIT", u"bell \u0007"), opc::model::InvalidXMLDocument);

  EXPECT_EQ(readFile(file_), before);
}

TEST_F(AddonPackageTest, FilesComeBackInTheOrderOfTheTree) {
  create();
  const std::u16string file = diskFile("x.m");

  modify([&](AddonPackage& package) {
    package.addFiles({file, file}, {u"c.m", u"a/x.m"});
    package.addFolders({u"a/b"});
  });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"a/b", u"a/x.m", u"c.m"}));
}

TEST_F(AddonPackageTest, APackageWithoutFilesListsNothing) {
  create();

  EXPECT_TRUE(list().empty());
}

TEST_F(AddonPackageTest, AnExistingFolderIsWelcomeAndTheNextOneIsStillMade) {
  create();

  modify([&](AddonPackage& package) { package.addFolders({u"a", u"a", u"b"}); });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"a", u"b"}));
}

TEST_F(AddonPackageTest, AnExistingFileEndsAddingAndThoseBeforeItStay) {
  create();
  const std::u16string file = diskFile("x.m");

  modify([&](AddonPackage& package) {
    EXPECT_THROW(package.addFiles({file, file, file}, {u"1.m", u"1.m", u"2.m"}),
                 opc::plservices::FileSystemEntryAlreadyExists);
  });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"1.m"}));
}

TEST_F(AddonPackageTest, AnotherFaultThanAnExistingFolderEndsAddingFolders) {
  create();

  modify([&](AddonPackage& package) {
    EXPECT_THROW(package.addFolders({u"a", u"..", u"b"}), opc::Exception);
  });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"a"}));
}

TEST_F(AddonPackageTest, AnEmptyFirstListAddsNothingWhateverTheSecondHolds) {
  create();

  modify([&](AddonPackage& package) { package.addFiles({}, {u"a.m", u"b.m"}); });

  EXPECT_TRUE(list().empty());
}

TEST_F(AddonPackageTest, ASecondListThatIsTooShortIsRefusedBeforeAnythingIsAdded) {
  create();
  const std::u16string file = diskFile("x.m");

  modify([&](AddonPackage& package) {
    EXPECT_THROW(package.addFiles({file, file}, {u"a.m"}), opc::Exception);
  });

  EXPECT_TRUE(list().empty());
}

TEST_F(AddonPackageTest, AThousandFoldersInsideEachOtherAreListed) {
  create();
  std::u16string deep = u"d";
  for (int i = 1; i < 1000; ++i) deep += u"/d";

  modify([&](AddonPackage& package) { package.addFolders({deep}); });

  EXPECT_EQ(list(), (std::vector<std::u16string>{deep}));
}

TEST_F(AddonPackageTest, ExtractingWritesTheTreeAndReplacesFiles) {
  create();
  const std::u16string file = diskFile("x.m", "new");
  modify([&](AddonPackage& package) {
    package.addFiles({file}, {u"a/x.m"});
    package.addFolders({u"empty"});
  });
  std::filesystem::create_directories(folder() / "out" / "a");
  writeFile(folder() / "out" / "a" / "x.m", "old");

  read([&](AddonPackage& package) {
    package.extractAllFiles((folder() / "out").u16string());
    return 0;
  });

  EXPECT_EQ(readFile(folder() / "out" / "a" / "x.m"), "new");
  EXPECT_TRUE(std::filesystem::is_directory(folder() / "out" / "empty"));
}

}  // namespace
