// SPDX-License-Identifier: MIT
#include "tests/opc/conformance/support/Case.h"

#include <gtest/gtest.h>

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;

auto has(std::string name) {
  return [name](const ReadPackage& read) { EXPECT_TRUE(read.parts.contains(name)) << name; };
}

auto items(std::vector<std::string> names) {
  return [names](PackageSpec& p) {
    for (const std::string& name : names) p.add(name);
  };
}

auto strays(std::vector<std::string> names) {
  return [names](const ReadPackage& read) { EXPECT_EQ(read.stray, names); };
}

void addNotUtf8(PackageSpec& p) {
  p.add("c\xff.m");
}

std::vector<Case> grammarCases() {
  return {
      {"PN-1", "SeveralSegmentsMakeAName", Accepted, Silent, item("c/d/e.m"), has("c/d/e.m")},
      {"PN-1", "AnEmptySegmentMakesNoPart", Ignored, Warning, item("c//d.m"), strays({"c//d.m"}),
       "PN-11"},
      {"PN-1", "ASecondSlashInFrontMakesNoPart", Ignored, Warning, item("/c.m"), strays({"/c.m"}),
       "RB-12"},
      {"PN-1", "AnOverrideWithoutSlashIsRefused", Refused, Error,
       types(overrideXml("a.xml", "text/xml")), nullptr, "CT-5"},
      {"PN-1", "AnOverrideThatEndsInASlashIsRefused", Refused, Error,
       types(overrideXml("/a.xml/", "text/xml")), nullptr, "CT-5"},
      {"PN-2", "AllCharactersOfAPcharMakeAName", Accepted, Silent, item("az09-._~!$&'()*+,;=:@.m"),
       has("az09-._~!$&'()*+,;=:@.m")},
      {"PN-2", "ASpaceMakesNoPart", Ignored, Warning, item("c d.m"), strays({"c d.m"}), "PN-11"},
      {"PN-2", "ABracketMakesNoPart", Ignored, Warning, item("c[1].m"), strays({"c[1].m"}),
       "PN-11"},
      {"PN-2", "AHashMakesNoPart", Ignored, Warning, item("c#d.m"), strays({"c#d.m"}), "PN-11"},
      {"PN-2", "ACaretMakesNoPart", Ignored, Warning, item("c^d.m"), strays({"c^d.m"}), "PN-11"},
      {"PN-2", "APrivateCharacterInAnOverrideIsRefused", Refused, Error,
       types(overrideXml("/c\xee\x80\x80.m", "text/x")), nullptr, "CT-5"},
      {"PN-2", "AC1ControlInAnOverrideIsRefused", Refused, Error,
       types(overrideXml("/c\xc2\x85.m", "text/x")), nullptr, "CT-5"},
      {"PN-2", "AUcscharInAnOverrideIsTaken", Accepted, Silent,
       [](PackageSpec& p) {
         p.types = overrideXml("/\xc3\xa9.q", "text/x");
         p.add("%C3%A9.q");
       },
       [](const ReadPackage& read) { EXPECT_EQ(read.parts.at("%C3%A9.q").type, "text/x"); }},
      {"PN-3", "APercentWithTwoDigitsOfEitherCaseMakesAName", Accepted, Silent,
       items({"%5b.m", "%5D.m"}), has("%5b.m")},
      {"PN-3", "APercentWithOneDigitMakesNoPart", Ignored, Warning, item("c%4.m"),
       strays({"c%4.m"}), "PN-11"},
      {"PN-3", "APercentAtTheEndMakesNoPart", Ignored, Warning, item("c%"), strays({"c%"}),
       "PN-11"},
      {"PN-4", "AnEncodedSlashMakesNoPart", Ignored, Warning, item("c%2Fd.m"), strays({"c%2Fd.m"}),
       "PN-11"},
      {"PN-4", "AnEncodedSlashInSmallLettersMakesNoPart", Ignored, Warning, item("c%2fd.m"),
       strays({"c%2fd.m"}), "PN-11"},
      {"PN-4", "AnEncodedBackslashMakesNoPart", Ignored, Warning, item("c%5cd.m"),
       strays({"c%5cd.m"}), "PN-11"},
      {"PN-4", "AnEncodedNulMakesNoPart", Ignored, Warning, item("c%00d.m"), strays({"c%00d.m"}),
       "PN-11"},
      {"PN-5", "AnEncodedLetterMakesNoPart", Ignored, Warning, item("%41.m"), strays({"%41.m"}),
       "PN-11"},
      {"PN-5", "AnEncodedTildeMakesNoPart", Ignored, Warning, item("%7e.m"), strays({"%7e.m"}),
       "PN-11"},
      {"PN-5", "EncodedOctetsBeyondAsciiMakeAName", Accepted, Silent, item("%C3%A9.m"),
       has("%C3%A9.m")},
      {"PN-5", "EncodedReservedCharactersMakeAName", Accepted, Silent, item("%20%25%2B.m"),
       has("%20%25%2B.m")},
      {"PN-6", "ASegmentThatEndsInADotIsNoPart", Ignored, Warning, item("c./d.m"),
       strays({"c./d.m"}), "PN-11"},
      {"PN-6", "ANameThatEndsInADotIsNoPart", Ignored, Warning, item("c.m."), strays({"c.m."}),
       "PN-11"},
      {"PN-6", "ASegmentOfOneDotIsNoPart", Ignored, Warning, item("./c.m"), strays({"./c.m"}),
       "PN-11"},
      {"PN-6", "ASegmentThatBeginsWithADotIsAPart", Accepted, Silent, item(".c/.d.m"),
       has(".c/.d.m")},
  };
}

std::vector<Case> equivalenceCases() {
  return {
      {"PN-7", "EncodedLettersOfAnotherCaseAreAnotherName", Accepted, Silent,
       items({"%C3%89.m", "%C3%A9.m"}), has("%C3%89.m")},
      {"PN-7", "HexadecimalDigitsFold", Refused, Error, items({"%C3%A9.m", "%c3%a9.m"}), nullptr,
       "PN-8"},
      {"PN-7", "NamesEqualUnderNormalisationDrawAWarning", Accepted, Warning,
       items({"%C3%A9.m", "e%CC%81.m"}), has("e%CC%81.m")},
      {"PN-8", "NamesThatDifferInAsciiCaseAreRefused", Refused, Error, item("A.XML")},
      {"PN-8", "NamesThatDifferInTheCaseOfAFolderAreRefused", Refused, Error,
       items({"c/x.m", "C/x.m"})},
      {"PN-8", "TheIriAndTheEncodedSpellingAreOneName", Refused, Error,
       [](PackageSpec& p) {
         p.add("%C3%A9.m");
         p.add("\xc3\xa9.m");
         p.last().local.flags = p.last().central.flags = 1 << 11;
       }},
      {"PN-8", "NamesThatDifferInALetterGoTogether", Accepted, Silent, items({"c.m", "d.m"}),
       has("c.m")},
      {"PN-9", "ANameBelowAPartIsRefused", Refused, Error, items({"c.m", "c.m/d.m"})},
      {"PN-9", "TheOrderInTheFileDoesNotMatter", Refused, Error, items({"c.m/d.m", "c.m"})},
      {"PN-9", "ANameFarBelowAPartIsRefused", Refused, Error, items({"c.m", "c.m/d/e/f.m"})},
      {"PN-9", "NamesAreComparedByTheirKeys", Refused, Error, items({"C.M", "c.m/d.m"})},
      {"PN-9", "OnlyWholeSegmentsAreCompared", Accepted, Silent,
       items({"c.m", "c.m-b.m", "c.mx/c.m", "c.m.m"}), has("c.mx/c.m")},
      {"PN-9", "AnItemThatIsNoPartDoesNotCount", Accepted, Warning, items({"c q.m", "c q.m/d.m"}),
       nullptr, "PN-11"},
      {"PN-10", "ARelationshipsNameInCapitalsHoldsRelationships", Accepted, Silent,
       [](PackageSpec& p) {
         p.relationsItem.name = "_RELS/.RELS";
         p.types = "";
       },
       [](const ReadPackage& read) {
         EXPECT_EQ(read.targets.count("rId1"), 1u);
         EXPECT_FALSE(read.parts.contains("_RELS/.RELS"));
       }},
      {"PN-10", "ANameInRelsWithAnotherEndIsAnOrdinaryPart", Accepted, Silent, item("_rels/c.m"),
       has("_rels/c.m")},
      {"PN-11", "AStrayItemIsIgnored", Ignored, Warning, item("[trash]/0000.dat"),
       strays({"[trash]/0000.dat"})},
      {"PN-11", "AStrayItemOfAKnownTypeIsIgnored", Ignored, Warning, item("a b.xml"),
       strays({"a b.xml"})},
      {"PN-13", "BytesOfAnItemNameAreReadAsCodePage437", Accepted, Warning, addNotUtf8,
       [](const ReadPackage& read) { EXPECT_EQ(read.parts.size(), 3u); }, "ZP-3"},
      {"PN-14", "AFolderEntryIsNoPart", Ignored, Silent, item("c/", ""),
       [](const ReadPackage& read) { EXPECT_EQ(read.parts.size(), 2u); }},
  };
}

}  // namespace

std::vector<Case> partNameCases() {
  std::vector<Case> all = grammarCases();
  const std::vector<Case> more = equivalenceCases();
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

}  // namespace test::conformance
