// SPDX-License-Identifier: MIT
#include "opc/checks/PackageVerification.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>

#include "opc/Exception.h"
#include "opc/interfaces/Background.h"
#include "opc/interfaces/PackedContents.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"
#include "tests/opc/checks/PackageUnderTest.h"
#include "tests/opc/model/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

using opc::checks::Finding;
using opc::checks::Reading;
using opc::checks::Report;
using opc::checks::verifyAs;
using opc::checks::verifyPackage;
using test::PackageUnderTest;
using testing::Each;
using testing::Field;
using testing::IsEmpty;

namespace {

std::set<std::uint16_t> numbersOf(const Report& report) {
  std::set<std::uint16_t> numbers;
  for (const Finding& finding : report.findings()) numbers.insert(finding.id.number);
  return numbers;
}

using Numbers = std::set<std::uint16_t>;

class Thread final : public opc::interfaces::BackgroundTask {
 public:
  explicit Thread(std::function<void()> work) : thread_(std::move(work)) {}
  ~Thread() override { thread_.join(); }

 private:
  std::thread thread_;
};

std::string shown(const Report& report) {
  std::string text;
  for (const Finding& one : report.findings()) {
    text += std::to_string(one.id.number) + " " + one.part + " " + one.message + "\n";
  }
  return text;
}

/// Enough files that a second thread is worth its start, between those of the package.
void addMuchTo(PackageUnderTest& package) {
  const std::string text(std::size_t{700} << 10, 't');
  for (const char* name : {"m1.m", "m2.m", "m3.m"}) package.add(name, text).deflate = true;
  package.add("damaged.m", text).central.crc = 1;
}

}  // namespace

TEST(Verification, AValidPackageHasNoFindings) {
  PackageUnderTest package;

  EXPECT_THAT(package.check().findings(), IsEmpty());
}

TEST(Verification, WhatTheFormatAllowsIsNotAFinding) {
  PackageUnderTest package;
  package.zip.comment = "a comment";
  package.zip.zip64 = true;
  package.add("folder/", "");
  package.add("empty.m", "").deflate = true;
  package.last().packed = "";
  test::ZipItem& described = package.add("described.m", std::string(500, 'd'));
  described.deflate = described.descriptor = described.descriptorWide = true;
  described.descriptorSignature = false;
  described.local.extra = test::extraField(1, test::le64(0) + test::le64(0));
  package.add("wide.m", "wide").central.extra = test::extraField(0xA220, "hint");
  package.add("c.m/[1].last.piece", "b");
  package.add("c.m/[0].piece", "a");
  package.add("a.m", "1"), package.add("a.mx/c.m", "2"), package.add("%C3%A9.m", "3");
  package.add("_rels/a.xml.rels", test::relationshipsXml(test::relationshipXml("r", "c.m") +
                                                         test::relationshipXml("s", "#here")));

  EXPECT_THAT(package.check().findings(), IsEmpty());
}

TEST(Verification, ValidExternalTargetsAreNotFindings) {
  PackageUnderTest package;
  std::string xml;
  int number = 0;
  for (const char* target :
       {"http://example.org/a%20b?c=d&amp;e#f", "mailto:a@example.org", "../other.docx", "#x",
        "http://user@[::1]:80/", "urn:a:b", "file:///c:/x",
        "http://b\xC3\xBC"
        "cher.example/"}) {
    xml += test::relationshipXml("e" + std::to_string(++number), target, "TargetMode=\"External\"");
  }
  package.setRelationships(xml);

  EXPECT_THAT(package.check().findings(), IsEmpty());
}

TEST(Verification, OneFaultDoesNotHideAnother) {
  PackageUnderTest package;
  package.setTypes("<Override PartName=\"/missing.xml\" ContentType=\"a/b\"/>");
  package.setRelationships(test::relationshipXml("1", "/a.xml") +
                           test::relationshipXml("r", "/gone.xml"));
  package.part().local.crc = package.part().central.crc = 1;
  package.add("A b.m"), package.add("../c.m"), package.add("B.m");
  package.add("_rels/b.m.rels", "<");
  package.zip.suffix = "tail";

  EXPECT_EQ(numbersOf(package.check()), (Numbers{102, 104, 106, 203, 205, 208, 209, 210, 217}));
}

TEST(Verification, WithInvalidContentTypesNothingIsReportedAsMissingFromThem) {
  PackageUnderTest package;
  package.types().content = "<Types>";
  package.addCore("");
  package.types().content = "<Types>";
  package.add("c.q");

  EXPECT_EQ(numbersOf(package.check()), Numbers{201});
}

TEST(Verification, OnlyTheDamageOfDamagedPartsIsReported) {
  for (std::size_t item = 0; item < 2; ++item) {
    PackageUnderTest package;
    package.zip.items[item].local.crc = package.zip.items[item].central.crc = 1;

    EXPECT_EQ(numbersOf(package.check()), Numbers{106}) << item;
  }
}

TEST(Verification, FindingsInXmlHaveALine) {
  PackageUnderTest package;
  package.relationships().content = "<Relationships\n\n<";

  const Report report = package.check();

  ASSERT_EQ(report.findings().size(), 1u);
  EXPECT_EQ(report.findings().front().line, 3u);
}

TEST(Verification, ManyFindingsAreAllCountedAndTheFirstKept) {
  PackageUnderTest package;
  for (int i = 0; i < 3000; ++i) package.add("x y" + std::to_string(i));

  const Report report = package.check();

  EXPECT_EQ(report.warnings(), 3000u);
  EXPECT_EQ(report.findings().size(), Report::kMaxKept);
}

TEST(Verification, LongNamesAreCutInFindings) {
  PackageUnderTest package;
  package.add(std::string(60000, ' '));

  const Report report = package.check();

  ASSERT_EQ(report.findings().size(), 1u);
  EXPECT_LT(report.findings().front().part.size(), 2000u);
  EXPECT_LT(report.findings().front().message.size(), 4000u);
}

TEST(Verification, OverlappingItemsAreDecompressedOnce) {
  PackageUnderTest package;
  test::ZipItem& bomb = package.add("bomb.m", std::string(std::size_t{60} << 20, '\0'));
  bomb.deflate = true;
  const std::string alone = package.zip.build();
  const std::size_t at = alone.find("bomb.m") - 30;
  const std::uint32_t crc = test::crcOf(bomb.content);
  const auto size = static_cast<std::uint32_t>(bomb.content.size());
  for (int i = 0; i < 3000; ++i) {
    test::ZipItem copy{.name = "b" + std::to_string(i) + ".m"};
    copy.writeLocal = false;
    copy.deflate = true;
    copy.central.offset = static_cast<std::uint32_t>(at);
    copy.central.crc = crc;
    copy.central.size = size;
    copy.central.packedSize = 60000;
    package.zip.add(copy);
  }

  const Report report = package.check();

  EXPECT_EQ(report.count(107), 3000u);
  EXPECT_EQ(report.count(106), 0u);
}

TEST(Verification, FindsTheSameWithASecondThread) {
  const test::TemporaryFolder folder;
  const std::string path = (folder / "p.zip").string();
  const auto start = [](std::function<void()> work) {
    return std::make_unique<Thread>(std::move(work));
  };
  const auto refuse = [](const std::function<void()>&) { return nullptr; };
  for (const auto cases : {test::containerCases(), test::ambiguityCases()}) {
    for (const test::PackageCase& one : cases) {
      PackageUnderTest package;
      addMuchTo(package);
      one.change(package);
      test::writeFile(path, package.zip.build());

      const std::string alone = shown(verifyPackage(path));

      EXPECT_EQ(shown(verifyPackage(path, nullptr, {}, start)), alone) << one.name;
      EXPECT_EQ(shown(verifyPackage(path, nullptr, {}, refuse)), alone) << one.name;
    }
  }
}

TEST(Verification, CountsEachItemInOrderWithASecondThread) {
  const test::TemporaryFolder folder;
  const std::string path = (folder / "p.zip").string();
  PackageUnderTest package;
  addMuchTo(package);
  test::writeFile(path, package.zip.build());
  opc::interfaces::Progress last;
  const auto progress = [&](const opc::interfaces::Progress& now) {
    EXPECT_GE(now.itemsDone, last.itemsDone);
    EXPECT_GE(now.bytesDone, last.bytesDone);
    last = now;
  };

  verifyPackage(path, progress, {}, [](std::function<void()> work) {
    return std::make_unique<Thread>(std::move(work));
  });

  EXPECT_EQ(last.itemsDone, 8);
  EXPECT_EQ(last.itemsDone, last.itemsTotal);
  EXPECT_EQ(last.bytesDone + (std::uint64_t{700} << 10), last.bytesTotal);  // without the damaged
}

TEST(Verification, ContentsThatWereJustPackedAreNotUnpacked) {
  const test::TemporaryFolder folder;
  const std::string path = (folder / "p.zip").string();
  PackageUnderTest package;
  test::ZipItem& damaged = package.add("damaged.m", "damaged");
  damaged.local.crc = damaged.central.crc = 1;
  test::ZipItem& misnamed = package.add("misnamed.m", "misnamed");
  misnamed.local.name = "misnamed.x";
  test::writeFile(path, package.zip.build());
  const opc::zippackage::PackageFile file(path);
  const auto directory = opc::zippackage::ZipDirectory::read(file);
  const auto verify = [&](std::uint32_t crc) {
    opc::interfaces::PackedContents packed([](opc::zippackage::Bytes) { return true; });
    for (std::size_t i : {4u, 5u}) {
      const auto& item = directory.entries()[i];
      packed.add(i, {item.size, item.packedSize, i == 4 ? crc : item.crc, item.method}, true);
    }
    Reading reading{.packed = &packed};
    const Report report = verifyAs(opc::checks::Subject::Package, path, {}, reading);
    EXPECT_EQ(reading.passed[4], crc == 1);
    return numbersOf(report);
  };
  const std::uint16_t header = 105;
  const std::uint16_t data = 106;
  ASSERT_EQ(numbersOf(verifyPackage(path)), (Numbers{header, data}));

  EXPECT_EQ(verify(2), (Numbers{header, data}));
  EXPECT_EQ(verify(1), (Numbers{header}));
}

TEST(Verification, OnlyRegularFilesCanBeVerified) {
  const test::TemporaryFolder folder;

  EXPECT_THROW(verifyPackage((folder / "none").string()), opc::SystemError);
  EXPECT_THROW(verifyPackage(folder.path().string()), opc::Exception);
}

TEST(Verification, VeryLargeDirectoriesAreNotRead) {
  const test::TemporaryFolder folder;
  test::ZipBuilder end;
  const std::uint64_t size = std::uint64_t{200} << 20;
  end.directoryOffset = 0;
  end.directorySize = size;
  test::writeFile(folder / "p.zip", "PK\x01\x02");
  std::filesystem::resize_file(folder / "p.zip", size);  // with a hole in it
  std::ofstream(folder / "p.zip", std::ios::binary | std::ios::app) << end.build();

  const auto verify = [&] { verifyPackage((folder / "p.zip").string()); };

  EXPECT_THAT(verify, testing::ThrowsMessage<opc::Exception>(testing::HasSubstr("209715200")));
}

TEST(Verification, APackageTruncatedAnywhereHasAnError) {
  PackageUnderTest package;
  package.addCore("<dc:title xmlns:dc=\"http://purl.org/dc/elements/1.1/\">t</dc:title>");
  const std::string bytes = package.zip.build();
  ASSERT_THAT(test::verifyBytes(bytes).findings(), IsEmpty());

  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_GT(test::verifyBytes(bytes.substr(0, size)).errors(), 0u) << size;
  }
}

TEST(Verification, VerificationEndsWhicheverByteIsChanged) {
  PackageUnderTest package;
  package.addCore("<dc:title xmlns:dc=\"http://purl.org/dc/elements/1.1/\">t</dc:title>");
  package.add("_rels/a.xml.rels", test::relationshipsXml(test::relationshipXml("r", "b.m")));
  test::ZipItem& described = package.add("d.m", "described");
  described.descriptor = true;
  const std::string bytes = package.zip.build();
  ASSERT_THAT(test::verifyBytes(bytes).findings(), IsEmpty());

  std::size_t found = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    for (const int flip : {0x20, 0xFF}) {
      std::string changed = bytes;
      changed[at] = static_cast<char>(changed[at] ^ flip);
      found += test::verifyBytes(changed).findings().empty() ? 0 : 1;
    }
  }
  EXPECT_GT(found, bytes.size());
}
