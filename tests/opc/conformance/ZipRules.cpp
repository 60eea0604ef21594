// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include "tests/opc/conformance/support/FileTrees.h"
#include "tests/opc/conformance/support/PackageSpec.h"
#include "tests/opc/conformance/support/ReadPackage.h"
#include "tests/opc/conformance/support/WrittenZip.h"

namespace test::conformance {
namespace {

using opc::model::Package;
using opc::model::PartName;

// Some awkward files, and what a package has beside them.
WrittenZip writtenZip() {
  return WrittenZip(
      packedTree({"a.m", "\xc3\xa9 \xf0\x9f\x98\x80.m", "x/[1].m", "%41", "empty"}, {"folder"}));
}

}  // namespace

TEST(RuleZP1, TheItemNameOfAPartIsItsNameWithoutTheSlash) {
  const WrittenZip zip(writtenPackage([](Package& package) { addPart(package, u"/c/%5Bd%5D.m"); }));

  EXPECT_TRUE(zip.has("c/%5Bd%5D.m"));
}

TEST(RuleZP2, NoItemIsWrittenTwice) {
  PackageSpec spec;
  spec.types = overrideXml("/b.m", "text/own");

  std::vector<std::string> names = WrittenZip(changedPackage(spec.bytes(), [](Package& package) {
                                     writeTextOf(package, u"/b.m", "new");
                                     package.deletePart(PartName(u"/a.xml"));
                                     addPart(package, u"/a.xml", u"application/xml");
                                   })).names();

  std::sort(names.begin(), names.end());
  EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
}

TEST(RuleZP3, ItemNamesAreAscii) {
  for (const std::string& name : writtenZip().names()) {
    for (const char c : name) EXPECT_TRUE(c > ' ' && c < 0x7f) << name;
  }
}

TEST(RuleZP4, ANameThatNoHeaderCanHoldIsRefused) {
  const auto add = [] {
    writtenPackage(
        [](Package& package) { addPart(package, u"/" + std::u16string(65536, u'c') + u".m"); });
  };

  EXPECT_THROW(add(), opc::Exception);
}

TEST(RuleZP5, OnlyStoredAndDeflatedItemsAreWritten) {
  const WrittenZip zip = writtenZip();

  for (const WrittenZip::Entry& entry : zip.entries()) {
    EXPECT_TRUE(entry.method == 0 || entry.method == 8) << entry.name;
  }
}

TEST(RuleZP6, NothingIsWrittenEncrypted) {
  const WrittenZip zip = writtenZip();

  for (const WrittenZip::Entry& entry : zip.entries()) {
    EXPECT_EQ(entry.flags & (1u | 1u << 6 | 1u << 13), 0u) << entry.name;
  }
}

TEST(RuleZP7, LocalHeadersSayWhatTheDirectorySays) {
  const WrittenZip zip = writtenZip();

  for (const WrittenZip::Entry& entry : zip.entries()) {
    EXPECT_EQ(entry.localName, entry.name);
    EXPECT_EQ(entry.content.size(), entry.size) << entry.name;
  }
}

TEST(RuleZP8, NoDescriptorIsWritten) {
  const WrittenZip zip = writtenZip();

  for (const WrittenZip::Entry& entry : zip.entries()) {
    EXPECT_EQ(entry.flags & 8u, 0u) << entry.name;
  }
}

TEST(RuleZP9, NothingOfZip64IsWrittenWithoutNeed) {
  const WrittenZip zip = writtenZip();

  EXPECT_FALSE(zip.isZip64());
  for (const WrittenZip::Entry& entry : zip.entries()) {
    EXPECT_FALSE(entry.extra.starts_with(std::string("\1\0", 2))) << entry.name;
    EXPECT_FALSE(entry.localExtra.starts_with(std::string("\1\0", 2))) << entry.name;
  }
}

TEST(RuleZP9, ManyItemsGetTheRecordThatHoldsTheirCount) {
  const std::string bytes = writtenPackage([](Package& package) {
    for (int i = 0; i < 65600; ++i) {
      const std::string name = "/m/" + std::to_string(i) + ".m";
      addPart(package, std::u16string(name.begin(), name.end()), u"text/plain", "");
    }
  });

  EXPECT_TRUE(WrittenZip(bytes).isZip64());
  EXPECT_EQ(readPackage(bytes).parts.size(), 65600u);
}

TEST(RuleZP12, AHintIsGoneFromAnItemThatIsRewritten) {
  PackageSpec spec;
  spec.last().local.extra = spec.last().central.extra =
      extraField(0xA220, le16(0xA028) + le16(64) + std::string(64, '\0'));

  const WrittenZip zip(
      changedPackage(spec.bytes(), [](Package& package) { writeTextOf(package, u"/b.m", "new"); }));

  EXPECT_EQ(zip.content("b.m"), "new");
  for (const WrittenZip::Entry& entry : zip.entries()) {
    EXPECT_EQ((entry.extra + entry.localExtra).find("\x20\xa2"), std::string::npos) << entry.name;
  }
}

TEST(RuleZP14, AllDiskNumbersAreZero) {
  const std::string bytes = packedTree({"a.m"}, {});

  EXPECT_EQ(bytes.substr(bytes.size() - 22, 8), std::string("PK\5\6\0\0\0\0", 8));
}

TEST(RuleIL1, APartInPiecesIsWrittenWhole) {
  PackageSpec spec;
  spec.add("c.m/[0].piece", "a");
  spec.add("c.m/[1].last.piece", "b");

  const WrittenZip zip(
      changedPackage(spec.bytes(), [](Package& package) { writeTextOf(package, u"/c.m", "new"); }));

  EXPECT_EQ(zip.content("c.m"), "new");
  for (const std::string& name : zip.names()) {
    EXPECT_EQ(name.find(".piece"), std::string::npos) << name;
  }
}

TEST(RuleIL2, AStreamInPiecesIsWrittenWhole) {
  PackageSpec spec;
  spec.typesItem.name = "[Content_Types].xml/[0].last.piece";

  const WrittenZip zip(
      changedPackage(spec.bytes(), [](Package& package) { addPart(package, u"/new.q"); }));

  EXPECT_TRUE(zip.has("[Content_Types].xml"));
  EXPECT_FALSE(zip.has("[Content_Types].xml/[0].last.piece"));
}

TEST(RuleIL4, SavingDropsIncompletePieces) {
  PackageSpec spec;
  spec.add("c.m/[0].piece", "a");

  const WrittenZip zip(
      changedPackage(spec.bytes(), [](Package& package) { addPart(package, u"/new.m"); }));

  EXPECT_FALSE(zip.has("c.m/[0].piece"));
}

}  // namespace test::conformance
