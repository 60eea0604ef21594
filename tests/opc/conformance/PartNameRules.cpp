// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "opc/model/PartName.h"
#include "opc/plservices/FileSystemManager.h"
#include "tests/opc/conformance/support/FileTrees.h"
#include "tests/opc/conformance/support/PackageSpec.h"
#include "tests/opc/conformance/support/ReadPackage.h"
#include "tests/opc/conformance/support/WrittenZip.h"

namespace test::conformance {
namespace {

using opc::model::Package;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::IsEmpty;
using testing::Not;

std::string refusalOfParts(const std::vector<std::u16string>& names) {
  return refusalOf([&] {
    writtenPackage([&](Package& package) {
      for (const std::u16string& name : names) addPart(package, name);
    });
  });
}

std::string refusalOfName(std::u16string_view name) {
  return refusalOf([&] { const opc::model::PartName made(name); });
}

}  // namespace

TEST(RulePN1, ANameOfEmptySegmentsIsNeverMade) {
  for (const auto* name : {u"", u"a", u"/", u"/a/", u"/a//b", u"//a"}) {
    EXPECT_EQ(refusalOfName(name), "PN-1");
  }
}

TEST(RulePN2, ANameWithWhatMustBeEncodedIsNeverMade) {
  const std::u16string forbidden = u" \"#<>?[\\]^`{|}\x01\x7f\x80\ue000\ufdd0";
  for (const char16_t c : forbidden) {
    EXPECT_EQ(refusalOfName(u"/a" + std::u16string(1, c)), "PN-2") << static_cast<int>(c);
  }
}

TEST(RulePN3, ANameWithHalfAnEscapeIsNeverMade) {
  for (const auto* name : {u"/%", u"/a%4", u"/%4g", u"/%%41"}) {
    EXPECT_EQ(refusalOfName(name), "PN-3");
  }
}

TEST(RulePN4, ANameWithAnEncodedSlashIsNeverMade) {
  for (const auto* name : {u"/a%2Fb", u"/a%2fb", u"/a%5Cb", u"/a%5cb", u"/a%00b"}) {
    EXPECT_EQ(refusalOfName(name), "PN-4");
  }
}

TEST(RulePN5, ANameWithAnEncodedLetterIsNeverMade) {
  for (const auto* name : {u"/%41", u"/%7A", u"/%30", u"/%2D", u"/%2e", u"/%5F", u"/%7e"}) {
    EXPECT_EQ(refusalOfName(name), "PN-5");
  }
}

TEST(RulePN6, ANameWithASegmentThatEndsInADotIsNeverMade) {
  for (const auto* name : {u"/a.", u"/a./b", u"/.", u"/../a", u"/a/..."}) {
    EXPECT_EQ(refusalOfName(name), "PN-6");
  }
}

TEST(RulePN7, BothSpellingsOfANameAreEqual) {
  using opc::model::PartName;

  EXPECT_EQ(PartName(u"/\u00e9.M"), PartName(u"/%c3%A9.m"));
  EXPECT_FALSE(PartName(u"/%C3%89") == PartName(u"/%C3%A9"));
  EXPECT_FALSE(PartName(u"/\u00e9") == PartName(u"/e\u0301"));
}

TEST(RulePN8, AnEquivalentNameIsNotAdded) {
  const std::string bytes = writtenPackage([](Package& package) {
    addPart(package, u"/c.m");
    try {
      addPart(package, u"/C.m");
      FAIL() << "added";
    } catch (const opc::Exception& fault) {
      EXPECT_EQ(fault.code(), opc::ErrorCode::AlreadyExists);
      EXPECT_THAT(fault.what(), AllOf(testing::HasSubstr("/C.m"), testing::HasSubstr("/c.m")));
    }
  });

  EXPECT_THAT(WrittenZip(bytes).names(), Contains("c.m"));
}

TEST(RulePN9, ANameBelowAnotherIsNotAdded) {
  EXPECT_EQ(refusalOfParts({u"/c", u"/c/d"}), "PN-9");
  EXPECT_EQ(refusalOfParts({u"/c/d", u"/C"}), "PN-9");
  EXPECT_EQ(refusalOfParts({u"/c.m", u"/c.m-b", u"/c.mx/c"}), "none");
}

TEST(RulePN10, ANameKeptForRelationshipsIsNotTaken) {
  for (const auto* name : {u"/_rels/c.rels", u"/d/_RELS/c.Rels", u"/_rels/.rels"}) {
    EXPECT_EQ(refusalOfParts({name}), "PN-10");
  }
  EXPECT_EQ(refusalOfParts({u"/_rels/c.m", u"/d/c.rels"}), "none");
}

TEST(RulePN11, SavingDropsItemsThatAreNotParts) {
  PackageSpec spec;
  spec.add("[trash]/0000.dat");
  spec.add("c d.m");

  const std::string bytes =
      changedPackage(spec.bytes(), [](Package& package) { addPart(package, u"/new.m"); });

  EXPECT_THAT(
      WrittenZip(bytes).names(),
      testing::UnorderedElementsAre("[Content_Types].xml", "_rels/.rels", "a.xml", "b.m", "new.m"));
}

TEST(RulePN12, AFileNameBecomesAsciiAndComesBack) {
  const std::string path = "a b/c%.m/\xc3\xa9#[1]^`{|}\"<>?.m";

  const std::string encoded = opc::model::percentEncodePath(path);

  EXPECT_EQ(encoded, "a%20b/c%25.m/%C3%A9%23%5B1%5D%5E%60%7B%7C%7D%22%3C%3E%3F.m");
  EXPECT_EQ(opc::model::findNameFault(encoded), nullptr);
  EXPECT_EQ(opc::model::percentDecodePath(encoded), path);
}

TEST(RulePN12, TheWayBackDecodesOnceAndWantsUtf8) {
  EXPECT_EQ(opc::model::percentDecodePath("a%2541"), "a%41");
  EXPECT_EQ(refusalOf([] { opc::model::percentDecodePath("a%FF"); }), "PN-12");
}

TEST(RulePN13, FilesWithoutPartNameComeBack) {
  const std::vector<std::string> paths{"dot.",
                                       "back\\slash",
                                       "CASE",
                                       "case",
                                       "_rels/x.rels",
                                       "[Content_Types].xml",
                                       "metadata/license.xml",
                                       "a./b"};

  const std::string bytes = packedTree(paths, {});

  EXPECT_EQ(treeOf(bytes), sorted(paths));
  const std::vector<std::string> names = WrittenZip(bytes).names();
  EXPECT_THAT(names, Not(Contains("_rels/x.rels")));
  EXPECT_THAT(names, Not(Contains("metadata/license.xml")));
  EXPECT_EQ(readPackage(bytes).rule, "none");
  EXPECT_THAT(readPackage(bytes).stray, IsEmpty());
}

TEST(RulePN13, FilesLieInAFolderOfTheirOwn) {
  const std::string bytes = packedTree({"a.m", "x/_rels/y.rels"}, {});

  for (const std::string& name : WrittenZip(bytes).names()) {
    const bool isPackages = name == "[Content_Types].xml" || name.starts_with("_rels/") ||
                            name.starts_with("metadata/");
    EXPECT_TRUE(isPackages || name.starts_with("files/")) << name;
  }
}

TEST(RulePN13, AFileNameThatIsNotUtf8IsRefusedByName) {
  try {
    packedTree({"bad\xff.m"}, {});
    FAIL() << "packed";
  } catch (const opc::Exception& fault) {
    EXPECT_THAT(fault.what(), testing::HasSubstr("bad"));
  }
}

TEST(RulePN14, EmptyFoldersComeBackWithoutEntriesOfTheirOwn) {
  const std::string bytes = packedTree({"a.m"}, {"empty", "deep/er"});

  EXPECT_EQ(treeOf(bytes), (std::vector<std::string>{"a.m", "deep/er/", "empty/"}));
  for (const std::string& name : WrittenZip(bytes).names()) EXPECT_FALSE(name.ends_with('/'));
}

}  // namespace test::conformance
