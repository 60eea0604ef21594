// SPDX-License-Identifier: MIT
#include "opc/plservices/CorePropertiesManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <optional>

#include "opc/Exception.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/InvalidXMLDocument.h"
#include "opc/plservices/CorePropertiesPart.h"
#include "opc/plservices/HostPropertiesPart.h"
#include "tests/support/MemoryPhysicalPackage.h"

namespace opc::plservices {
namespace {

using boost::gregorian::date;
using boost::posix_time::hours;
using boost::posix_time::microseconds;
using boost::posix_time::ptime;
using interfaces::OpenMode;
using model::PartName;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kCoreItem = "metadata/coreProperties.xml";
constexpr const char* kHostItem = "metadata/hostProperties.xml";

// A package in memory that is opened and closed around each piece of work.
class CorePropertiesManagerTest : public testing::Test {
 protected:
  template <typename Work>
  auto with(OpenMode mode, Work work) {
    physical_ = std::make_unique<test::MemoryPhysicalPackage>(disk_);
    model::Package package(*physical_, true);
    package.open(mode);
    if constexpr (std::is_void_v<decltype(work(package))>) {
      work(package);
      package.close(false);
    } else {
      auto result = work(package);
      package.close(false);
      return result;
    }
  }

  void store(OpenMode mode, const CoreProperties& properties) {
    with(mode, [&](model::Package& package) {
      CorePropertiesManager(package).setCoreProperties(properties);
    });
  }

  CoreProperties load() {
    return with(OpenMode::Read, [](model::Package& package) {
      return CorePropertiesManager(package).getCoreProperties();
    });
  }

  // A package with a core properties part of another program.
  void foreignPackage(const std::string& children, const std::string& name = "docProps/core.xml") {
    disk_.items.emplace();
    disk_.add("[Content_Types].xml",
              "<Types xmlns='http://schemas.openxmlformats.org/package/2006/content-types'>"
              "<Default Extension='rels' ContentType='application/vnd.openxmlformats-package."
              "relationships+xml'/><Default Extension='bin' ContentType='application/x'/>"
              "<Override PartName='/docProps/core.xml' ContentType='application/"
              "vnd.openxmlformats-package.core-properties+xml'/></Types>");
    disk_.add("_rels/.rels", relationships("<Relationship Id='rId7' Type='" + kType + "' Target='" +
                                           name + "'/>"));
    disk_.add("other.bin", "data");
    disk_.add("docProps/core.xml",
              "<cp:coreProperties"
              " xmlns:cp='http://schemas.openxmlformats.org/package/2006/metadata/core-properties'"
              " xmlns:dc='http://purl.org/dc/elements/1.1/'>" +
                  children + "</cp:coreProperties>");
  }

  static std::string relationships(const std::string& children) {
    return "<Relationships xmlns='http://schemas.openxmlformats.org/package/2006/relationships'>" +
           children + "</Relationships>";
  }

  void replaceItem(std::string_view name, const std::string& bytes) {
    for (test::MemoryItem& item : *disk_.items) {
      if (item.name == name) item.bytes = bytes;
    }
  }

  std::string ruleOnLoading() {
    try {
      load();
    } catch (const FormatError& fault) {
      return fault.rule();
    }
    return "none";
  }

  const std::string kType =
      "http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties";
  test::MemoryDisk disk_;
  std::unique_ptr<test::MemoryPhysicalPackage> physical_;
};

CoreProperties fullProperties() {
  CoreProperties properties(u"application/x", u"Friendly", u"R1");
  properties.setTitle(u"Title \u00E9 <&>");
  properties.setDescription(u"two\r\nlines");
  properties.setVersion(u"1.2");
  properties.setCreatedBy(u"");
  properties.setCreatedTime(ptime(date(2014, 5, 6), hours(7)));
  properties.setLastModifiedTime(ptime(date(2015, 5, 6), hours(8)));
  return properties;
}

// What the test's messages can print.
template <typename T>
std::optional<T> shown(const boost::optional<T>& value) {
  return value ? std::optional<T>(*value) : std::nullopt;
}
std::optional<std::string> shown(const boost::optional<ptime>& time) {
  return time ? std::optional(boost::posix_time::to_iso_string(*time)) : std::nullopt;
}

void expectSame(const CoreProperties& a, const CoreProperties& b) {
  EXPECT_EQ(a.getContentType(), b.getContentType());
  EXPECT_EQ(a.getContentTypeFriendlyName(), b.getContentTypeFriendlyName());
  EXPECT_EQ(a.getKorvanRelease(), b.getKorvanRelease());
  EXPECT_EQ(shown(a.getTitle()), shown(b.getTitle()));
  EXPECT_EQ(shown(a.getDescription()), shown(b.getDescription()));
  EXPECT_EQ(shown(a.getVersion()), shown(b.getVersion()));
  EXPECT_EQ(shown(a.getCreatedBy()), shown(b.getCreatedBy()));
  EXPECT_EQ(shown(a.getCreatedTime()), shown(b.getCreatedTime()));
  EXPECT_EQ(shown(a.getLastModifiedTime()), shown(b.getLastModifiedTime()));
}

TEST_F(CorePropertiesManagerTest, PropertiesComeBackFromTheTwoParts) {
  store(OpenMode::Create, fullProperties());

  expectSame(load(), fullProperties());
  EXPECT_TRUE(disk_.has(kCoreItem));
  EXPECT_TRUE(disk_.has(kHostItem));
}

TEST_F(CorePropertiesManagerTest, NewPartsHaveTheirTypesAndRelationships) {
  store(OpenMode::Create, fullProperties());

  with(OpenMode::Read, [](model::Package& package) {
    const auto core = package.getRelationshipsByType(model::kCorePropertiesRelationship);
    const auto host = package.getRelationshipsByType(HostPropertiesPart::relationshipType());
    ASSERT_EQ(core.size(), 1u);
    ASSERT_EQ(host.size(), 1u);
    EXPECT_EQ(core[0].getTargetURI().toString(), u"/metadata/coreProperties.xml");
    EXPECT_EQ(host[0].getTargetURI().toString(), u"/metadata/hostProperties.xml");
    EXPECT_EQ(package.getPart(PartName(u"/metadata/coreProperties.xml"))->getContentType().ascii(),
              "application/vnd.openxmlformats-package.core-properties+xml");
    EXPECT_EQ(package.getPart(PartName(u"/metadata/hostProperties.xml"))->getContentType().ascii(),
              "application/vnd.pellandry.korvan.addon.hostProperties+xml");
  });
}

TEST_F(CorePropertiesManagerTest, APackageWithoutThePartsHasNoProperties) {
  with(OpenMode::Create, [](model::Package&) {});

  const CoreProperties properties = load();

  expectSame(properties, CoreProperties(u"", u"", u""));
}

TEST_F(CorePropertiesManagerTest, WhatIsAbsentIsTakenOut) {
  store(OpenMode::Create, fullProperties());

  store(OpenMode::Modify, CoreProperties(u"application/y", u"", u""));

  expectSame(load(), CoreProperties(u"application/y", u"", u""));
}

TEST_F(CorePropertiesManagerTest, SettingTheSameAgainChangesNothing) {
  store(OpenMode::Create, fullProperties());
  const unsigned commits = disk_.commits;
  const auto before = disk_.bytes(kCoreItem);
  CoreProperties properties = fullProperties();
  properties.setCreatedTime(ptime(date(2014, 5, 6), hours(7) + microseconds(5)));

  store(OpenMode::Modify, properties);

  EXPECT_EQ(disk_.commits, commits);
  EXPECT_EQ(disk_.bytes(kCoreItem), before);
}

TEST_F(CorePropertiesManagerTest, OnlyThePartThatDiffersIsRewritten) {
  foreignPackage("<dc:title>old</dc:title>");
  CoreProperties properties = load();
  const std::string before = disk_.bytes("docProps/core.xml");

  store(OpenMode::Modify, CoreProperties(properties));
  EXPECT_EQ(disk_.bytes("docProps/core.xml"), before);
  properties = CoreProperties(u"application/x", u"", u"");
  properties.setTitle(u"old");
  store(OpenMode::Modify, properties);

  EXPECT_EQ(disk_.bytes("docProps/core.xml"), before);
  EXPECT_TRUE(disk_.has(kHostItem));
}

TEST_F(CorePropertiesManagerTest, AForeignPartKeepsItsNameItsRelationshipAndUnknownProperties) {
  foreignPackage(
      "<cp:category>c</cp:category><dc:title>old</dc:title>"
      "<cp:keywords xml:lang='en'>a<cp:value xml:lang='de'>b</cp:value></cp:keywords>"
      "<cp:lastPrinted>2014-01-01T00:00:00Z</cp:lastPrinted>");
  CoreProperties properties = load();
  EXPECT_EQ(shown(properties.getTitle()), u"old");
  properties.setTitle(u"new");

  store(OpenMode::Modify, properties);

  EXPECT_EQ(shown(load().getTitle()), u"new");
  EXPECT_FALSE(disk_.has(kCoreItem));
  const std::string& xml = disk_.bytes("docProps/core.xml");
  EXPECT_THAT(xml, HasSubstr("<cp:category>c</cp:category>"));
  EXPECT_THAT(xml, HasSubstr("<cp:keywords xml:lang=\"en\">a<cp:value xml:lang=\"de\">b</cp:value>"
                             "</cp:keywords>"));
  EXPECT_THAT(xml, HasSubstr("<cp:lastPrinted>2014-01-01T00:00:00Z</cp:lastPrinted>"));
  with(OpenMode::Read, [](model::Package& package) {
    EXPECT_EQ(package.getRelationship(u"rId7").getTargetURI().toString(), u"/docProps/core.xml");
  });
}

TEST_F(CorePropertiesManagerTest, ADateInADistantYearIsAbsentAndStaysAsItIs) {
  const std::string date = "xsi:type=\"dcterms:W3CDTF\">0001-01-01T00:00:00Z</dcterms:created>";
  foreignPackage(
      "<dcterms:created xmlns:dcterms='http://purl.org/dc/terms/' "
      "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' " +
      date);
  CoreProperties properties = load();
  EXPECT_FALSE(properties.getCreatedTime());
  properties.setTitle(u"new");

  store(OpenMode::Modify, properties);

  EXPECT_THAT(disk_.bytes("docProps/core.xml"), HasSubstr(date));
  properties.setCreatedTime(boost::posix_time::from_iso_string("20200102T030405"));
  store(OpenMode::Modify, properties);
  EXPECT_THAT(disk_.bytes("docProps/core.xml"), HasSubstr(">2020-01-02T03:04:05Z<"));
}

TEST_F(CorePropertiesManagerTest, TheContentTypeOfTheFirstEditionMovesToTheHostPart) {
  foreignPackage("<cp:contentType>application/x</cp:contentType>");
  CoreProperties properties = load();
  EXPECT_EQ(properties.getContentType(), u"application/x");
  properties.setTitle(u"new");

  store(OpenMode::Modify, properties);

  EXPECT_EQ(load().getContentType(), u"application/x");
  EXPECT_THAT(disk_.bytes("docProps/core.xml"), testing::Not(HasSubstr("contentType")));
}

TEST_F(CorePropertiesManagerTest, TwoRelationshipsAreRefused) {
  foreignPackage("");
  const std::string relationship = "' Type='" + kType + "' Target='/docProps/core.xml'/>";
  replaceItem("_rels/.rels", relationships("<Relationship Id='a" + relationship +
                                           "<Relationship Id='b" + relationship));

  EXPECT_EQ(ruleOnLoading(), "CP-1");
}

TEST_F(CorePropertiesManagerTest, AnExternalRelationshipIsRefused) {
  foreignPackage("");
  replaceItem("_rels/.rels", relationships("<Relationship Id='a' TargetMode='External' Type='" +
                                           kType + "' Target='http://x.example/'/>"));

  EXPECT_EQ(ruleOnLoading(), "CP-2");
}

TEST_F(CorePropertiesManagerTest, AMissingPartIsRefused) {
  foreignPackage("", "nowhere.xml");

  EXPECT_EQ(ruleOnLoading(), "CP-2");
}

TEST_F(CorePropertiesManagerTest, APartOfAnotherTypeIsRefused) {
  foreignPackage("", "other.bin");

  EXPECT_EQ(ruleOnLoading(), "CP-2");
}

TEST_F(CorePropertiesManagerTest, AFaultyPartIsNamed) {
  foreignPackage("<cp:unknown/>");

  try {
    load();
    FAIL() << "it was read";
  } catch (const FormatError& fault) {
    EXPECT_STREQ(fault.what(),
                 "cannot read part '/docProps/core.xml' of 'memory.kraddon': "
                 "element 'cp:unknown' is not allowed here");
  }
}

TEST_F(CorePropertiesManagerTest, AFaultyPartIsNotOverwritten) {
  foreignPackage("<cp:unknown/>");
  const std::string before = disk_.bytes("docProps/core.xml");

  EXPECT_THROW(store(OpenMode::Modify, fullProperties()), FormatError);

  EXPECT_EQ(disk_.bytes("docProps/core.xml"), before);
}

TEST_F(CorePropertiesManagerTest, TextThatXmlCannotCarryChangesNeitherPart) {
  store(OpenMode::Create, fullProperties());
  CoreProperties bad(u"changed", u"", u"\u0001");
  bad.setTitle(u"changed");

  with(OpenMode::Modify, [&](model::Package& package) {
    CorePropertiesManager manager(package);
    EXPECT_THROW(manager.setCoreProperties(bad), model::InvalidXMLDocument);
    expectSame(manager.getCoreProperties(), fullProperties());
  });

  expectSame(load(), fullProperties());
}

TEST_F(CorePropertiesManagerTest, AnOrphanUnderTheNameIsReplaced) {
  with(OpenMode::Create, [](model::Package& package) {
    package.createPart(PartName(u"/metadata/coreProperties.xml"),
                       model::ContentType(u"application/xml"),
                       model::StandardPartInfo(interfaces::CompressionType::Normal, 0));
  });

  store(OpenMode::Modify, fullProperties());

  expectSame(load(), fullProperties());
}

TEST_F(CorePropertiesManagerTest, APackageOpenedForReadingIsNotChanged) {
  store(OpenMode::Create, fullProperties());

  EXPECT_THROW(store(OpenMode::Read, CoreProperties(u"", u"", u"")), Exception);

  expectSame(load(), fullProperties());
}

TEST_F(CorePropertiesManagerTest, PropertiesCanBeSetTwiceInOneTransaction) {
  with(OpenMode::Create, [](model::Package& package) {
    CorePropertiesManager manager(package);
    manager.setCoreProperties(CoreProperties(u"first", u"", u""));
    manager.setCoreProperties(fullProperties());
    expectSame(manager.getCoreProperties(), fullProperties());
  });

  expectSame(load(), fullProperties());
  EXPECT_THAT(disk_.names(), testing::UnorderedElementsAre("[Content_Types].xml", "_rels/.rels",
                                                           kCoreItem, kHostItem));
}

TEST_F(CorePropertiesManagerTest, OnlyTheTwoPartsAreRead) {
  foreignPackage("<dc:title>old</dc:title>");

  load();

  EXPECT_THAT(physical_->itemsRead(),
              ElementsAre("[Content_Types].xml", "_rels/.rels", "docProps/core.xml"));
}

TEST_F(CorePropertiesManagerTest, ShortPartsAreReadOnceWhileThePackageIsOpenForReading) {
  store(OpenMode::Create, fullProperties());

  with(OpenMode::Read, [](model::Package& package) {
    CorePropertiesManager manager(package);
    manager.getCoreProperties();
    expectSame(manager.getCoreProperties(), fullProperties());
  });

  EXPECT_THAT(physical_->itemsRead(),
              ElementsAre("[Content_Types].xml", "_rels/.rels", kCoreItem, kHostItem));
}

TEST_F(CorePropertiesManagerTest, ALongPartIsReadEachTime) {
  foreignPackage("<dc:title>" + std::string(100000, 'x') + "</dc:title>");

  with(OpenMode::Read, [](model::Package& package) {
    CorePropertiesManager manager(package);
    manager.getCoreProperties();
    expectSame(manager.getCoreProperties(), manager.getCoreProperties());
  });

  EXPECT_THAT(physical_->itemsRead(),
              ElementsAre("[Content_Types].xml", "_rels/.rels", "docProps/core.xml",
                          "docProps/core.xml", "docProps/core.xml"));
}

TEST_F(CorePropertiesManagerTest, WhatWasReadIsForgottenWhenThePackageIsOpenedAgain) {
  test::MemoryPhysicalPackage physical(disk_);
  model::Package package(physical, true);
  CorePropertiesManager manager(package);
  for (const char16_t* title : {u"first", u"second"}) {
    CoreProperties properties = fullProperties();
    properties.setTitle(title);
    store(OpenMode::Create, properties);

    package.open(OpenMode::Read);
    expectSame(manager.getCoreProperties(), properties);
    package.close(true);
    EXPECT_THROW(manager.getCoreProperties(), Exception);
  }
}

}  // namespace
}  // namespace opc::plservices
