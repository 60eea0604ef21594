// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;

struct Piece {
  std::string name;
  std::string content;
};

auto pieces(std::vector<Piece> all) {
  return [all](PackageSpec& p) {
    for (const Piece& piece : all) p.add("c.m/" + piece.name, piece.content);
  };
}

auto partIs(std::string content) {
  return [content](const ReadPackage& read) {
    ASSERT_TRUE(read.parts.contains("c.m"));
    EXPECT_EQ(read.parts.at("c.m").content, content);
    EXPECT_EQ(read.parts.at("c.m").type, "text/plain");
  };
}

void noPart(const ReadPackage& read) {
  EXPECT_FALSE(read.parts.contains("c.m"));
  EXPECT_EQ(read.parts.size(), 2u);
  EXPECT_FALSE(read.stray.empty());
}

void breakTypes(PackageSpec& p) {
  const std::string whole = typesDocument(kUsualDefaults);
  p.typesItem.name = "c.m";
  p.add("[Content_Types].xml/[1].last.piece", whole.substr(100));
  p.add("[Content_Types].xml/[0].piece", whole.substr(0, 100));
}

void addTypesInPieces(PackageSpec& p) {
  p.add("[Content_Types].xml/[0].last.piece", typesDocument(kUsualDefaults));
}

void addElevenPieces(PackageSpec& p) {
  for (int i = 0; i <= 10; ++i) {
    p.add("c.m/[" + std::to_string(i) + (i == 10 ? "].last.piece" : "].piece"),
          std::string(1, static_cast<char>('a' + i)));
  }
}

}  // namespace

std::vector<Case> interleavingCases() {
  return {
      {"IL-1", "PiecesMakeAPart", Accepted, Silent,
       pieces({{"[0].piece", "a"}, {"[1].piece", "b"}, {"[2].last.piece", "c"}}), partIs("abc")},
      {"IL-1", "TheirOrderInTheFileMeansNothing", Accepted, Silent,
       pieces({{"[2].last.piece", "c"}, {"[0].piece", "a"}, {"[1].piece", "b"}}), partIs("abc")},
      {"IL-1", "NumbersAreDecimal", Accepted, Silent, addElevenPieces, partIs("abcdefghijk")},
      {"IL-1", "OnePieceIsAWhole", Accepted, Silent, pieces({{"[0].last.piece", "a"}}),
       partIs("a")},
      {"IL-1", "PiecesMayBeEmpty", Accepted, Silent,
       pieces({{"[0].piece", ""}, {"[1].last.piece", ""}}), partIs("")},
      {"IL-1", "TheSuffixMayHaveAnyCase", Accepted, Silent,
       pieces({{"[0].PIECE", "a"}, {"[1].Last.Piece", "b"}}), partIs("ab")},
      {"IL-2", "TheStreamMayBeInPieces", Accepted, Silent, breakTypes,
       partIs(typesDocument(kUsualDefaults))},
      {"IL-3", "TwoPiecesOfANumberAreRefused", Refused, Error,
       pieces({{"[0].piece", "a"}, {"[0].PIECE", "a"}, {"[1].last.piece", "b"}})},
      {"IL-3", "TwoPiecesOfAHugeNumberAreRefused", Refused, Error,
       pieces({{"[99999999999999999999].piece", "a"}, {"[99999999999999999999].PIECE", "a"}})},
      {"IL-3", "AWholeItemBesideThePiecesIsRefused", Refused, Error,
       [](PackageSpec& p) {
         pieces({{"[0].last.piece", "a"}})(p);
         p.add("C.m");
       }},
      {"IL-3", "TheStreamWholeAndInPiecesIsRefused", Refused, Error, addTypesInPieces},
      {"IL-4", "AGapMakesNoPart", Accepted, Warning,
       pieces({{"[0].piece", "a"}, {"[2].last.piece", "c"}}), noPart},
      {"IL-4", "PiecesWithoutLastMakeNoPart", Accepted, Warning,
       pieces({{"[0].piece", "a"}, {"[1].piece", "b"}}), noPart},
      {"IL-4", "ALastPieceInTheMiddleMakesNoPart", Accepted, Warning,
       pieces({{"[0].last.piece", "a"}, {"[1].piece", "b"}}), noPart},
      {"IL-4", "LeadingZerosMakeNoPart", Accepted, Warning,
       pieces({{"[00].piece", "a"}, {"[01].last.piece", "b"}}), noPart},
      {"IL-4", "HugeNumbersMakeNoPart", Accepted, Warning,
       pieces({{"[99999999999999999998].piece", "a"},
               {"[99999999999999999999].last.piece", "b"},
               {"[999999999999999999999].piece", "b"}}),
       noPart},
      {"IL-4", "PiecesOfNoPartNameMakeNoPart", Accepted, Warning,
       [](PackageSpec& p) { p.add("c%2em/[0].last.piece"); }, noPart},
      {"IL-4", "PiecesThatMakeNothingStandBesideAWholeItem", Accepted, Warning,
       [](PackageSpec& p) {
         pieces({{"[0].piece", "a"}})(p);
         p.add("c.m");
       },
       [](const ReadPackage& read) { EXPECT_EQ(read.parts.at("c.m").content, "data"); }},
  };
}

}  // namespace test::conformance
