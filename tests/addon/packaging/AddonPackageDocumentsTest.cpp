// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonPackage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "addon/packaging/DocumentRemoval.h"
#include "opc/Text.h"
#include "tests/addon/packaging/AddonPackageFixture.h"

using addon::packaging::AddonLicense;
using addon::packaging::AddonPackage;
using addon::packaging::removeDocument;
using addon::packaging::removeScreenshot;
using test::readFile;

namespace {

const std::u16string kLicenseType =
    u"http://schemas.pellandry.example/korvan/addon/2014/relationships/license";
const std::string kLicenseTypeAscii =
    "http://schemas.pellandry.example/korvan/addon/2014/"
    "relationships/license";

class AddonPackageDocuments : public test::AddonPackageTest {};

TEST_F(AddonPackageDocuments, ADocumentStoredTwiceIsOnePartWithItsFirstRelationship) {
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

TEST_F(AddonPackageDocuments, AStoredDocumentIsAPartOfItsTypeInItsNamespace) {
  create();

  store(u"MIT", u"terms");

  EXPECT_EQ(inspector_.contentType("metadata/license.xml"),
            "application/vnd.pellandry.korvan.addon.license+xml");
  EXPECT_EQ(inspector_.canonical("metadata/license.xml"),
            "<license xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/license\">"
            "<licenseText type=\"MIT\">terms</licenseText></license>");
}

TEST_F(AddonPackageDocuments, ADocumentThatIsNotThereLeavesTheObjectAlone) {
  create();

  EXPECT_EQ(loadOver(), u"old/old");
}

TEST_F(AddonPackageDocuments, TwoRelationshipsOfOneTypeReadAsNone) {
  create();
  store(u"MIT", u"terms");

  inspector_.doubleRelationship(kLicenseTypeAscii);

  EXPECT_EQ(loadOver(), u"old/old");
}

TEST_F(AddonPackageDocuments, ARelationshipToAMissingPartIsAnErrorThatNamesThePart) {
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

TEST_F(AddonPackageDocuments, ThePartIsFoundByItsRelationshipWhereverItLies) {
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

TEST_F(AddonPackageDocuments, ARemovedDocumentLeavesNeitherPartNorRelationship) {
  create();
  const auto before = inspector_.names();
  store(u"MIT", u"terms");

  modify([](AddonPackage& package) {
    EXPECT_TRUE(removeDocument(package.logicalPackage(), AddonLicense()));
  });

  EXPECT_EQ(inspector_.names(), before);
  EXPECT_TRUE(inspector_.relationships(kLicenseTypeAscii).empty());
  EXPECT_EQ(loadOver(), u"old/old");
}

TEST_F(AddonPackageDocuments, RemovingWhatIsNotThereChangesNothing) {
  create();
  const std::string before = readFile(file_);

  modify([](AddonPackage& package) {
    EXPECT_FALSE(removeDocument(package.logicalPackage(), AddonLicense()));
    EXPECT_FALSE(removeScreenshot(package.logicalPackage()));
  });

  EXPECT_EQ(readFile(file_), before);
}

TEST_F(AddonPackageDocuments, ARemovedDocumentGoesWhereverItLies) {
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

  modify([](AddonPackage& package) {
    EXPECT_TRUE(removeDocument(package.logicalPackage(), AddonLicense()));
  });

  EXPECT_TRUE(inspector_.relationships(kLicenseTypeAscii).empty());
  const auto names = inspector_.names();
  EXPECT_EQ(std::count(names.begin(), names.end(), "elsewhere/l.xml"), 0);
}

TEST_F(AddonPackageDocuments, ARelationshipThatLeadsOutOfThePackageIsNamed) {
  create();
  modify([](AddonPackage& package) {
    package.logicalPackage().createExternalRelationship(
        kLicenseType, opc::model::URI(u"http://x.example/"), u"rId7");
  });

  modify([this](AddonPackage& package) {
    AddonLicense license;
    try {
      package.getLicense(license);
      FAIL() << "it was read";
    } catch (const opc::FormatError& fault) {
      EXPECT_EQ(fault.what(), "cannot get the part that relationship 'rId7' of '" + file_.string() +
                                  "' leads to: it is outside the package");
    }
  });
}

TEST_F(AddonPackageDocuments, ADocumentWithoutItsRelationshipIsRemovedByName) {
  create();
  store(u"MIT", u"terms");
  modify([](AddonPackage& package) {
    auto& logical = package.logicalPackage();
    logical.deleteRelationship(logical.getRelationshipsByType(kLicenseType).at(0).getId());
  });

  modify([](AddonPackage& package) {
    EXPECT_TRUE(removeDocument(package.logicalPackage(), AddonLicense()));
  });

  const auto names = inspector_.names();
  EXPECT_EQ(std::count(names.begin(), names.end(), "metadata/license.xml"), 0);
}

TEST_F(AddonPackageDocuments, FilesOfTheTreeOutliveADocumentThatPointsAtThem) {
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

  modify([](AddonPackage& package) {
    EXPECT_TRUE(removeDocument(package.logicalPackage(), AddonLicense()));
  });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"odd.", u"plain.xml"}));
  EXPECT_TRUE(inspector_.relationships(kLicenseTypeAscii).empty());
}

TEST_F(AddonPackageDocuments, AMalformedPartIsAnErrorThatNamesThePart) {
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

TEST_F(AddonPackageDocuments, AFailedWriteLeavesTheRelationshipWithoutItsPart) {
  create();
  store(u"MIT", u"terms");
  AddonLicense license;
  license.text = u"bell \u0007";

  modify([&](AddonPackage& package) {
    EXPECT_THROW(package.setLicense(license), opc::model::InvalidXMLDocument);

    auto& logical = package.logicalPackage();
    EXPECT_FALSE(logical.hasPart(opc::model::PartName(license.partName)));
    EXPECT_EQ(logical.getRelationshipsByType(kLicenseType).size(), 1u);
  });

  const auto names = inspector_.names();
  EXPECT_EQ(std::count(names.begin(), names.end(), "metadata/license.xml"), 0);
}

TEST_F(AddonPackageDocuments, ADocumentThatXmlCannotCarryIsNotCommitted) {
  create();
  const std::string before = readFile(file_);

  EXPECT_THROW(store(u"MIT", u"bell \u0007"), opc::model::InvalidXMLDocument);

  EXPECT_EQ(readFile(file_), before);
}

}  // namespace
