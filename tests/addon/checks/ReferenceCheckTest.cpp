// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "opc/model/PackageHelper.h"
#include "tests/addon/checks/FindingCases.h"

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using test::AddonUnderTest;
using test::documentXml;
using test::FindingCase;

namespace {

const std::u16string kApps = u"/metadata/applications.xml";
const std::u16string kExamples = u"/metadata/examples.xml";
const std::u16string kRevisions = u"/metadata/revisionHistory.xml";
const std::u16string kConfiguration = u"/metadata/configuration.xml";

std::string app(const std::string& guid, const std::string& file) {
  return "<application name=\"V\" guid=\"" + guid + "\"><file>" + file + "</file></application>";
}

const std::string kAppGuid = "1f0d2f4f-8a11-4a53-9c58-0c3a0d9e5b7a";

void setAppFile(AddonUnderTest& addon, const std::string& path) {
  addon.replace(kApps, documentXml("applications", app(kAppGuid, path)));
}

void setExampleFile(AddonUnderTest& addon, const std::string& type, const std::string& path) {
  addon.replace(kExamples,
                documentXml("examples", "<exampleCategory><example><file type=\"" + type + "\">" +
                                            path + "</file></example></exampleCategory>"));
}

void setKorvanPath(AddonUnderTest& addon, const std::string& path) {
  addon.replace(kConfiguration, documentXml("configuration", "<korvanPaths><korvanPath>" + path +
                                                                 "</korvanPath></korvanPaths>"));
}

void setClassPath(AddonUnderTest& addon, const std::string& path) {
  addon.replace(kConfiguration,
                documentXml("configuration", "<javaClassPaths><javaClassPath>" + path +
                                                 "</javaClassPath></javaClassPaths>"));
}

std::string revision(const std::string& date, const std::string& version) {
  return "<revision date=\"" + date + "\" version=\"" + version + "\"><description/></revision>";
}

void setRevisions(AddonUnderTest& addon, const std::string& revisions) {
  addon.replace(kRevisions, documentXml("revisionHistory", revisions));
}

// Bypasses the file tree.
void addPart(AddonUnderTest& addon, const std::u16string& name) {
  addon.change([&](AddonPackage& package) {
    package.logicalPackage().createPart(
        opc::model::PartName(name), opc::model::ContentType(u"text/plain"),
        opc::model::StandardPartInfo(opc::interfaces::CompressionType::Normal, 0));
  });
}

void setThumbnail(AddonUnderTest& addon, const std::u16string& target) {
  addon.change([&](AddonPackage& package) {
    auto& model = package.logicalPackage();
    model.deleteRelationship(u"rId101");
    model.createInternalRelationship(opc::model::PackageHelper::getThumbnailRelationshipType(),
                                     opc::model::URI(target), u"");
  });
}

constexpr FindingCase kCases[] = {
    {401, "Missing", [](AddonUnderTest& addon) { setAppFile(addon, "apps/other.m"); }},
    {401, "Empty", [](AddonUnderTest& addon) { setAppFile(addon, ""); }},
    {401, "Folder", [](AddonUnderTest& addon) { setAppFile(addon, "apps"); }},
    {401, "EmptyComponent", [](AddonUnderTest& addon) { setAppFile(addon, "apps//viewer.m"); }},
    {401, "Backslash", [](AddonUnderTest& addon) { setAppFile(addon, "apps\\viewer.m"); }},
    {401, "DotDotInside", [](AddonUnderTest& addon) { setAppFile(addon, "lib/../apps/viewer.m"); }},
    {401, "Root", [](AddonUnderTest& addon) { setAppFile(addon, "."); }},
    {401, "TrailingSlash", [](AddonUnderTest& addon) { setAppFile(addon, "apps/viewer.m/"); }},
    {402, "Main", [](AddonUnderTest& addon) { setExampleFile(addon, "main", "no.m"); }},
    {402, "Source", [](AddonUnderTest& addon) { setExampleFile(addon, "source", "no.m"); }},
    {403, "Thumbnail", [](AddonUnderTest& addon) { setExampleFile(addon, "thumbnail", "no.png"); }},
    {403, "Image",
     [](AddonUnderTest& addon) { setExampleFile(addon, "image", "examples/no.png"); }},
    {404, "Missing", [](AddonUnderTest& addon) { setKorvanPath(addon, "src"); }},
    {404, "File", [](AddonUnderTest& addon) { setKorvanPath(addon, "lib/f.m"); }},
    {404, "BelowFile", [](AddonUnderTest& addon) { setKorvanPath(addon, "lib/f.m/x"); }},
    {404, "FileWithSlash", [](AddonUnderTest& addon) { setKorvanPath(addon, "lib/f.m/"); }},
    {405, "FileWithSlash", [](AddonUnderTest& addon) { setClassPath(addon, "java/wave.jar/"); }},
    {405, "Missing", [](AddonUnderTest& addon) { setClassPath(addon, "java/other.jar"); }},
    {406, "NoThumbnail",
     [](AddonUnderTest& addon) {
       addon.change(
           [](AddonPackage& package) { package.logicalPackage().deleteRelationship(u"rId101"); });
     }},
    {406, "OtherThumbnail",
     [](AddonUnderTest& addon) { setThumbnail(addon, u"/files/examples/chirp.png"); }},
    {407, "ByDate",
     [](AddonUnderTest& addon) {
       setRevisions(addon, revision("2025-01-01", "1.2") + revision("2026-01-01", "1.3") +
                               revision("2024-01-01", "1.2"));
     }},
    {407, "NeitherFirstNorLast",
     [](AddonUnderTest& addon) {
       setRevisions(
           addon, revision("May", "1.1") + revision("2026-01-01", "1.2") + revision("June", "1.3"));
     }},
    {408, "File", [](AddonUnderTest& addon) { setAppFile(addon, "Apps/viewer.M"); }},
    {408, "Folder", [](AddonUnderTest& addon) { setKorvanPath(addon, "/LIB"); }},
    {408, "NotAscii",
     [](AddonUnderTest& addon) { setExampleFile(addon, "image", "examples/GRÖßE.png"); }},
    {409, "DotDot", [](AddonUnderTest& addon) { setAppFile(addon, "apps/../../viewer.m"); }},
    {409, "DotDotWithBackslashes",
     [](AddonUnderTest& addon) { setExampleFile(addon, "main", "..\\x.m"); }},
    {409, "Absolute", [](AddonUnderTest& addon) { setKorvanPath(addon, "/usr/lib"); }},
    {409, "Drive", [](AddonUnderTest& addon) { setClassPath(addon, "C:/java/wave.jar"); }},
    {409, "Share", [](AddonUnderTest& addon) { setClassPath(addon, "\\\\host\\wave.jar"); }},
    {410, "TwoApps",
     [](AddonUnderTest& addon) {
       addon.replace(kApps, documentXml("applications",
                                        app(kAppGuid, "apps/viewer.m") + app(kAppGuid, "lib/f.m")));
     }},
    {410, "AddonAndApp",
     [](AddonUnderTest& addon) {
       addon.replace(kApps,
                     documentXml("applications",
                                 app("{6F0C1C1E-7D0E-4F0B-9A51-0B6F2D3C4E5F}", "apps/viewer.m")));
     }},
    {411, "TakenPath",
     [](AddonUnderTest& addon) {
       addon.addFile(u"a@b.m", "% a file");
       addPart(addon, u"/files/a%40b.m");
     }},
    {411, "ControlCharacter", [](AddonUnderTest& addon) { addPart(addon, u"/files/x%0Ay.m"); }},
};

}  // namespace

std::span<const FindingCase> test::referenceCases() {
  return kCases;
}

class ReferenceCheckOf : public testing::TestWithParam<FindingCase> {};

TEST_P(ReferenceCheckOf, ThisCausesItAlone) {
  test::expectOnly(GetParam());
}

INSTANTIATE_TEST_SUITE_P(ReferenceCheck, ReferenceCheckOf, testing::ValuesIn(kCases),
                         test::nameOfCase);

class PathInAddon : public testing::TestWithParam<const char*> {};

TEST_P(PathInAddon, IsFound) {
  AddonUnderTest addon;
  setClassPath(addon, GetParam());

  const auto report = addon.check();

  EXPECT_THAT(report.findings(), testing::IsEmpty()) << test::describe(report);
}

INSTANTIATE_TEST_SUITE_P(ReferenceCheck, PathInAddon,
                         testing::Values(".", "/", "java/wave.jar", "/java/wave.jar", "java",
                                         "java/", "empty", "empty/", "examples/größe.png"));

TEST(ReferenceCheck, AFindingHasTheOwnerThePathAndTheLine) {
  AddonUnderTest addon;
  addon.replace(kApps,
                documentXml("applications", "\n<application name=\"Viewer\" guid=\"" + kAppGuid +
                                                "\">\n<file>no.m</file></application>"));

  const auto report = addon.check();

  ASSERT_EQ(report.findings().size(), 1u) << test::describe(report);
  const auto& finding = report.findings().front();
  EXPECT_EQ(finding.part, "/metadata/applications.xml");
  EXPECT_EQ(finding.line, 3u);
  EXPECT_THAT(finding.message,
              testing::AllOf(testing::HasSubstr("'Viewer'"), testing::HasSubstr("'no.m'")));
}

TEST(ReferenceCheck, AFindingHasThePathInTheOtherCase) {
  AddonUnderTest addon;
  setAppFile(addon, "APPS/VIEWER.M");

  const auto report = addon.check();

  ASSERT_EQ(report.findings().size(), 1u);
  EXPECT_THAT(report.findings().front().message, testing::HasSubstr("'apps/viewer.m'"));
}

TEST(ReferenceCheck, TheLatestDateIsTheNewestWhereverItIs) {
  AddonUnderTest addon;
  setRevisions(addon, revision("2025-12-31T23:00:00", "1.1") + revision("2026-01-01", "1.2") +
                          revision("2024-01-01", "1.0"));

  const auto report = addon.check();

  EXPECT_THAT(report.findings(), testing::IsEmpty()) << test::describe(report);
}

TEST(ReferenceCheck, RevisionsOfOneDayAreEquallyNew) {
  AddonUnderTest addon;
  setRevisions(addon, revision("2026-01-01", "1.1") + revision("2026-01-01", "1.2"));

  const auto report = addon.check();

  EXPECT_THAT(report.findings(), testing::IsEmpty()) << test::describe(report);
}

TEST(ReferenceCheck, WithoutDatesTheFirstOrTheLastRevisionMayBeTheNewest) {
  AddonUnderTest first;
  AddonUnderTest last;
  setRevisions(first, revision("", "1.2") + revision("", "1.0"));
  setRevisions(last, revision("", "1.0") + revision("", "1.2"));

  EXPECT_EQ(first.check().count(407), 0u);
  EXPECT_EQ(last.check().count(407), 0u);
}

TEST(ReferenceCheck, AnEmptyHistoryHasNoNewestRevision) {
  AddonUnderTest addon;
  setRevisions(addon, "");

  const auto report = addon.check();

  EXPECT_THAT(report.findings(), testing::IsEmpty()) << test::describe(report);
}

TEST(ReferenceCheck, EveryMissingFileOfAHugeListIsCounted) {
  AddonUnderTest addon;
  std::string apps;
  for (int i = 0; i < 100'000; ++i) apps += app("", "apps/" + std::to_string(i) + ".m");
  addon.replace(kApps, documentXml("applications", apps));

  const auto report = addon.check();

  EXPECT_EQ(report.count(401), 100'000u);
}

TEST(ReferenceCheck, ADocumentThatCannotBeReadRefersToNothing) {
  AddonUnderTest addon;
  addon.replace(kApps, "<applications><application><file>no.m</file></application>");

  const auto report = addon.check();

  EXPECT_EQ(test::numbersIn(report), std::set<std::uint16_t>{301}) << test::describe(report);
}
