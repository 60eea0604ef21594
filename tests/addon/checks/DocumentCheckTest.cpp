// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "opc/model/XercesHelper.h"
#include "tests/addon/checks/FindingCases.h"

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using opc::model::PartName;
using test::AddonUnderTest;
using test::documentXml;
using test::FindingCase;

namespace {

const std::u16string kLicense = u"/metadata/license.xml";
const std::u16string kProperties = u"/metadata/addonProperties.xml";
const std::u16string kHostProperties = u"/metadata/hostProperties.xml";
const std::u16string kApps = u"/metadata/applications.xml";
const std::u16string kExamples = u"/metadata/examples.xml";
const std::u16string kRevisions = u"/metadata/revisionHistory.xml";
const std::u16string kRequirements = u"/metadata/systemRequirements.xml";
const std::u16string kConfiguration = u"/metadata/configuration.xml";
const std::u16string kFileTree = u"/metadata/fileTree.xml";
const std::u16string kScreenshot = u"/metadata/primaryScreenShot.png";

const std::string kGuid = "<identifier>6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f</identifier>";
const std::string kTerms = "<licenseText type=\"MIT\">x</licenseText>";

std::string exampleXml(const std::string& files) {
  return documentXml("examples", "<exampleCategory name=\"c\"><example name=\"e\" type=\"t\">" +
                                     files + "</example></exampleCategory>");
}

std::string appXml(const std::string& attributes, const std::string& content) {
  return documentXml("applications",
                     "<application guid=\"1f0d2f4f-8a11-4a53-9c58-0c3a0d9e5b7a\" name=\"V\" " +
                         attributes + ">" + content + "</application>");
}

const std::string kAppFile = "<file>apps/viewer.m</file>";
const std::string kMain = "<file type=\"main\">examples/chirp.m</file>";

std::string nested(unsigned depth) {
  std::string xml;
  for (unsigned i = 0; i < depth; ++i) xml += "<x>";
  for (unsigned i = 0; i < depth; ++i) xml += "</x>";
  return xml;
}

void addPart(AddonUnderTest& addon, const std::u16string& name, const std::u16string& type) {
  addon.change([&](AddonPackage& package) {
    const opc::model::StandardPartInfo info(opc::interfaces::CompressionType::Normal, 1);
    const unsigned char byte = 'x';
    package.logicalPackage()
        .createPart(PartName(name), opc::model::ContentType(type), info)
        ->getOutputStream()
        ->write(&byte, 1);
  });
}

void leadOutside(AddonUnderTest& addon, const std::u16string& part) {
  addon.change([&](AddonPackage& package) {
    auto& model = package.logicalPackage();
    for (const auto& relationship : model.getRelationships()) {
      if (relationship.getTargetURI().toString() != part) continue;
      model.deleteRelationship(relationship.getId());
      model.createExternalRelationship(relationship.getType(),
                                       opc::model::URI(u"http://example.org/x.xml"), u"");
    }
    model.deletePart(PartName(part));
  });
}

constexpr FindingCase kCases[] = {
    {301, "CutOff", [](AddonUnderTest& addon) { addon.replace(kLicense, "<license"); }},
    {301, "Empty", [](AddonUnderTest& addon) { addon.replace(kConfiguration, ""); }},
    {301, "Properties", [](AddonUnderTest& addon) { addon.replace(kProperties, "<a></b>"); }},
    {301, "HostProperties", [](AddonUnderTest& addon) { addon.replace(kHostProperties, "x"); }},
    {301, "FileTree", [](AddonUnderTest& addon) { addon.replace(kFileTree, "<fileTree>"); }},
    {302, "Name",
     [](AddonUnderTest& addon) { addon.replace(kLicense, documentXml("licence", kTerms)); }, 2},
    {302, "Namespace",
     [](AddonUnderTest& addon) { addon.replace(kLicense, "<license>" + kTerms + "</license>"); }},
    {303, "Identifier",
     [](AddonUnderTest& addon) {
       addon.replace(kProperties,
                     documentXml("addonProperties",
                                 "<description>d</description><authors><author><name>n</name>"
                                 "<contact>c</contact></author></authors>"));
     }},
    {303, "LicenseText",
     [](AddonUnderTest& addon) { addon.replace(kLicense, documentXml("license", "")); }},
    {303, "FileOfApp", [](AddonUnderTest& addon) { addon.replace(kApps, appXml("", "")); }},
    {303, "DescriptionOfRevision",
     [](AddonUnderTest& addon) {
       addon.replace(kRevisions, documentXml("revisionHistory",
                                             "<revision date=\"2026-02-01\" version=\"1.2\"/>"
                                             "<revision date=\"x\" version=\"1.2\"/>"));
     },
     2},
    {303, "PartOfTreeFile",
     [](AddonUnderTest& addon) {
       addon.replace(kFileTree,
                     documentXml("fileTree", "<file path=\"a\" part=\"/metadata/fileTree/9\"/>"));
     }},
    {303, "TreeWithoutRelationship",
     [](AddonUnderTest& addon) {
       addon.replace(kFileTree, documentXml("fileTree", "<folder path=\"../up\"/>"));
       addon.dropRelationships(kFileTree);
     }},
    {303, "PathOfTreeFolder",
     [](AddonUnderTest& addon) { addon.replace(kFileTree, documentXml("fileTree", "<folder/>")); }},
    {304, "Element",
     [](AddonUnderTest& addon) {
       addon.replace(kLicense, documentXml("license", kTerms + "<more><still/></more><less/>"));
     },
     2},
    {304, "Attribute",
     [](AddonUnderTest& addon) {
       addon.replace(kApps, appXml("path=\"p\" xml:lang=\"en\"", kAppFile));
     }},
    {304, "ElementOfAnotherNamespace",
     [](AddonUnderTest& addon) {
       addon.replace(kLicense,
                     documentXml("license", kTerms + "<licenseText xmlns=\"http://other\"/>"));
     }},
    {304, "AttributeOfAnotherNamespace",
     [](AddonUnderTest& addon) {
       addon.replace(kApps, appXml("xmlns:o=\"http://other\" o:name=\"p\"", kAppFile));
     }},
    {304, "HostProperties",
     [](AddonUnderTest& addon) {
       addon.replace(
           kHostProperties,
           documentXml("hostProperties",
                       "<contentTypeFriendlyName>Korvan Toolbox</contentTypeFriendlyName><y/>"));
     }},
    {305, "License", [](AddonUnderTest& addon) { addon.replaceType(kLicense, u"text/xml"); }},
    {305, "FileTree", [](AddonUnderTest& addon) { addon.replaceType(kFileTree, u"text/xml"); }},
    {306, "License", [](AddonUnderTest& addon) { addon.doubleRelationship(kLicense); }},
    {306, "Properties", [](AddonUnderTest& addon) { addon.doubleRelationship(kProperties); }},
    {306, "FileTree", [](AddonUnderTest& addon) { addon.doubleRelationship(kFileTree); }},
    {306, "Screenshot", [](AddonUnderTest& addon) { addon.doubleRelationship(kScreenshot); }},
    {307, "ByName", [](AddonUnderTest& addon) { addon.dropRelationships(kRequirements); }},
    {307, "ByContentType",
     [](AddonUnderTest& addon) {
       addPart(addon, u"/other/l.xml", u"Application/vnd.pellandry.korvan.addon.license+xml");
     }},
    {307, "Screenshot",
     [](AddonUnderTest& addon) {
       addPart(addon, u"/metadata/primaryScreenShot.gif", u"image/gif");
     }},
    {308, "OtherType",
     [](AddonUnderTest& addon) {
       addon.replace(
           kHostProperties,
           documentXml("hostProperties",
                       "<contentTypeFriendlyName>korvan toolbox</contentTypeFriendlyName>"));
     }},
    {308, "NoHostProperties", [](AddonUnderTest& addon) { addon.drop(kHostProperties); }},
    {309, "Empty",
     [](AddonUnderTest& addon) { addon.changeProperty(&AddonProperties::name, u""); }},
    {309, "Blank",
     [](AddonUnderTest& addon) { addon.changeProperty(&AddonProperties::name, u" \t"); }},
    {310, "Empty",
     [](AddonUnderTest& addon) { addon.changeProperty(&AddonProperties::version, u""); }},
    {311, "Yes",
     [](AddonUnderTest& addon) {
       addon.replace(kApps, appXml("installByDefault=\"yes\"", kAppFile));
     }},
    {311, "InCapitals",
     [](AddonUnderTest& addon) {
       addon.replace(kApps, appXml("installByDefault=\"TRUE\"", kAppFile));
     }},
    {312, "Unknown",
     [](AddonUnderTest& addon) {
       addon.replace(kExamples, exampleXml(kMain + "<file type=\"icon\">no/such</file>"));
     }},
    {312, "None",
     [](AddonUnderTest& addon) { addon.replace(kExamples, exampleXml("<file>no/such</file>")); }},
    {312, "Twice",
     [](AddonUnderTest& addon) { addon.replace(kExamples, exampleXml(kMain + kMain)); }},
    {313, "Gif", [](AddonUnderTest& addon) { addon.setScreenshot("s.png", "GIF89a and more"); }},
    {313, "Empty", [](AddonUnderTest& addon) { addon.setScreenshot("s.png", ""); }},
    {313, "NotWebp",
     [](AddonUnderTest& addon) {
       addon.setScreenshot("s.png", "RIFF....WAVEfmt ");
       addon.replaceType(kScreenshot, u"image/webp");
     }},
    {313, "NotImageType",
     [](AddonUnderTest& addon) { addon.replaceType(kScreenshot, u"text/plain"); }},
    {314, "TooDeep", [](AddonUnderTest& addon) { addon.replace(kRequirements, nested(257)); }},
    {314, "TooLong",
     [](AddonUnderTest& addon) {
       addon.replace(kRequirements,
                     std::string(opc::model::XercesHelper::kMaxDocumentSize + 1, ' '));
     }},
    {315, "TwoAuthors",
     [](AddonUnderTest& addon) {
       addon.replace(
           kProperties,
           documentXml("addonProperties",
                       kGuid + "<description>d</description><authors><author><name>n"
                               "</name><contact>c</contact></author><author/></authors>"));
     }},
    {316, "Deleted",
     [](AddonUnderTest& addon) {
       addon.change([](AddonPackage& package) {
         package.logicalPackage().deletePart(PartName(kConfiguration));
       });
     }},
    {316, "DeletedScreenshot",
     [](AddonUnderTest& addon) {
       addon.change([](AddonPackage& package) {
         package.logicalPackage().deletePart(PartName(kScreenshot));
       });
     }},
    {316, "DeletedHostProperties",
     [](AddonUnderTest& addon) {
       addon.change([](AddonPackage& package) {
         package.logicalPackage().deletePart(PartName(kHostProperties));
       });
     }},
    {316, "DeletedFileTree",
     [](AddonUnderTest& addon) {
       addon.change(
           [](AddonPackage& package) { package.logicalPackage().deletePart(PartName(kFileTree)); });
     }},
    {316, "DeletedProperties",
     [](AddonUnderTest& addon) {
       addon.change([](AddonPackage& package) {
         package.logicalPackage().deletePart(PartName(kProperties));
       });
     }},
    {316, "Outside", [](AddonUnderTest& addon) { leadOutside(addon, kApps); }},
    {317, "Doctype",
     [](AddonUnderTest& addon) {
       addon.replace(kLicense, "<!DOCTYPE license>" + documentXml("license", kTerms));
     }},
    {317, "Latin1",
     [](AddonUnderTest& addon) {
       addon.replace(kLicense, "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" +
                                   documentXml("license", kTerms));
     }},
    {317, "NotUtf8",
     [](AddonUnderTest& addon) {
       addon.replace(kLicense, documentXml("license", "<licenseText>\xE4</licenseText>"));
     }},
};

}  // namespace

std::span<const FindingCase> test::documentCases() {
  return kCases;
}

class DocumentCheckOf : public testing::TestWithParam<FindingCase> {};

TEST_P(DocumentCheckOf, ThisCausesItAlone) {
  test::expectOnly(GetParam());
}

INSTANTIATE_TEST_SUITE_P(DocumentCheck, DocumentCheckOf, testing::ValuesIn(kCases),
                         test::nameOfCase);

TEST(DocumentCheck, AFindingHasThePartAndTheLineOfTheElement) {
  AddonUnderTest addon;
  addon.replace(kApps, documentXml("applications",
                                   "<!-- <a>\r\n <b> -->\r\n<![CDATA[<c>]]><?p <d>\n?>\r"
                                   "<application\n name='V'\n>\n<file\n>apps/viewer.m</file><odd/>"
                                   "</application>"));

  const auto report = addon.check();

  ASSERT_EQ(report.count(304), 1u) << test::describe(report);
  const auto& finding = report.findings().front();
  EXPECT_EQ(finding.id.number, 304);
  EXPECT_EQ(finding.part, "/metadata/applications.xml");
  EXPECT_EQ(finding.line, 9u);
  EXPECT_THAT(finding.message, testing::HasSubstr("'odd'"));
}

TEST(DocumentCheck, LinesAreCorrectInUtf16) {
  AddonUnderTest addon;
  const std::string xml = documentXml("license", "\n" + kTerms + "\n<odd/>");
  std::string wide = "\xFF\xFE";
  for (const char c : xml) wide += {c, '\0'};
  addon.replace(kLicense, wide);

  const auto report = addon.check();

  ASSERT_EQ(report.findings().size(), 1u) << test::describe(report);
  EXPECT_EQ(report.findings().front().line, 3u);
}

TEST(DocumentCheck, AnXmlErrorHasItsLineAndRule) {
  AddonUnderTest addon;
  addon.replace(kLicense, "<license>\n\n</licence>");

  const auto report = addon.check();

  ASSERT_EQ(report.findings().size(), 1u);
  EXPECT_EQ(report.findings().front().line, 3u);
  EXPECT_EQ(report.findings().front().rule, "XM-3");
}

class DamagedPart : public testing::TestWithParam<const char*> {};

TEST_P(DamagedPart, CausesNoFindingHere) {
  AddonUnderTest addon;
  addon.damage(GetParam());

  const auto report = addon.check();

  EXPECT_THAT(report.findings(), testing::IsEmpty()) << test::describe(report);
}

INSTANTIATE_TEST_SUITE_P(DocumentCheck, DamagedPart,
                         testing::Values("metadata/license.xml", "metadata/addonProperties.xml",
                                         "metadata/hostProperties.xml",
                                         "metadata/coreProperties.xml", "metadata/applications.xml",
                                         "metadata/examples.xml", "metadata/configuration.xml",
                                         "metadata/fileTree.xml", "metadata/revisionHistory.xml",
                                         "metadata/primaryScreenShot.png"));

TEST(DocumentCheck, EveryUnknownElementOfAHugeDocumentIsCounted) {
  AddonUnderTest addon;
  std::string content = kTerms;
  for (int i = 0; i < 100'000; ++i) content += "\n<odd a='1'><x/></odd>";
  addon.replace(kLicense, documentXml("license", content));

  const auto report = addon.check();

  EXPECT_EQ(report.count(304), 100'000u);
  EXPECT_EQ(report.findings().back().line, opc::checks::Report::kMaxKept + 1);
}

TEST(DocumentCheck, TheFileTreeIsAlsoFoundByItsName) {
  AddonUnderTest addon;
  addon.dropRelationships(kFileTree);

  const auto report = addon.check();

  EXPECT_EQ(report.count(307), 0u) << test::describe(report);
}

TEST(DocumentCheck, AFileOfTheTreeIsNotAnUnreachableDocument) {
  AddonUnderTest addon;
  addon.addFile(u"backup/license.xml");
  addon.replaceType(u"/files/backup/license.xml",
                    u"application/vnd.pellandry.korvan.addon.license+xml");

  const auto report = addon.check();

  EXPECT_EQ(report.count(307), 0u) << test::describe(report);
}

TEST(DocumentCheck, AnImageOfAnUnknownFormatIsNotChecked) {
  AddonUnderTest addon;
  addon.setScreenshot("s.png", "....ftypavif");
  addon.replaceType(kScreenshot, u"image/avif");

  const auto report = addon.check();

  EXPECT_EQ(report.count(313), 0u) << test::describe(report);
}

TEST(DocumentCheck, ATextTooLongForAMessageIsCut) {
  AddonUnderTest addon;
  addon.replace(kApps, appXml("installByDefault=\"" + std::string(100'000, 'y') + "\"", kAppFile));

  const auto report = addon.check();

  ASSERT_EQ(report.findings().size(), 1u);
  EXPECT_LT(report.findings().front().message.size(), 1000u);
}
