// SPDX-License-Identifier: MIT
#include "opc/signatures/ChangeWatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "tests/opc/signatures/SignedPackage.h"

using opc::interfaces::OpenMode;
using opc::signatures::ChangeWatch;
using opc::signatures::SignatureState;
using test::ada;
using test::partName;
using test::SignedPackage;

namespace {

struct Signed : test::PackageOfAda {
  /// Whether `change` breaks the signature, as the watch sees it. The change is committed.
  template <typename Change>
  bool breaks(const Change& change) {
    package.open(OpenMode::Modify);
    const ChangeWatch watch(package);
    change();
    const bool hasBroken = watch.hasBroken();
    package.close(false);
    return hasBroken;
  }

  bool isValid() {
    const auto verified = verify();
    return verified.signatures.size() == 1 && verified.signatures[0].state == SignatureState::Valid;
  }

  void rewrite(std::u16string_view part, std::string_view text) {
    test::writeText(*package.getPart(partName(part))->getOutputStream(), text);
  }

  void remove(std::u16string_view part) { package.deletePart(partName(part)); }
};

}  // namespace

TEST(ChangeWatch, NoChangeBreaksNothing) {
  Signed memory;
  EXPECT_FALSE(memory.breaks([] {}));
}

TEST(ChangeWatch, APackageWithoutSignatureHasNoneToBreak) {
  SignedPackage memory;
  memory.package.open(OpenMode::Modify);
  const ChangeWatch watch(memory.package);
  memory.package.deletePart(partName(u"/files/a.m"));

  EXPECT_FALSE(watch.hasBroken());
}

TEST(ChangeWatch, OtherBytesBreakItAndTheSignedOnesMendIt) {
  Signed memory;
  EXPECT_TRUE(memory.breaks([&] { memory.rewrite(u"/files/a.m", "x = 2;\n"); }));
  EXPECT_FALSE(memory.isValid());
  EXPECT_FALSE(memory.breaks([&] { memory.rewrite(u"/files/a.m", "x = 1;\n"); }));
  EXPECT_TRUE(memory.isValid());
}

TEST(ChangeWatch, ANewPartBreaksItUntilItIsGone) {
  Signed memory;
  EXPECT_TRUE(memory.breaks([&] { memory.create(u"/files/n.m", u"text/plain", "n"); }));
  EXPECT_FALSE(memory.isValid());
  EXPECT_FALSE(memory.breaks([&] { memory.remove(u"/files/n.m"); }));
  EXPECT_TRUE(memory.isValid());
}

TEST(ChangeWatch, AMissingPartBreaksIt) {
  Signed memory;
  EXPECT_TRUE(memory.breaks([&] { memory.remove(u"/files/b%20c.m"); }));
  EXPECT_FALSE(memory.isValid());
}

TEST(ChangeWatch, AnotherTypeBreaksIt) {
  Signed memory;
  EXPECT_TRUE(memory.breaks([&] {
    memory.remove(u"/files/b%20c.m");
    memory.create(u"/files/b%20c.m", u"text/x-new", "y = 2;\n");
  }));
  EXPECT_FALSE(memory.isValid());
}

TEST(ChangeWatch, ANewRelationshipBreaksItUntilItIsGone) {
  Signed memory;
  EXPECT_TRUE(memory.breaks([&] {
    memory.package.createExternalRelationship(u"http://a.b", opc::model::URI(u"urn:x"), u"new");
  }));
  EXPECT_FALSE(memory.isValid());
  EXPECT_FALSE(memory.breaks([&] { memory.package.deleteRelationship(u"new"); }));
  EXPECT_TRUE(memory.isValid());
}

TEST(ChangeWatch, APartThatNoSignatureCoveredCanBeChanged) {
  Signed memory;
  memory.breaks([&] { memory.create(u"/files/n.m", u"text/plain", "n"); });
  EXPECT_FALSE(memory.breaks([&] { memory.rewrite(u"/files/n.m", "m"); }));
}

TEST(ChangeWatch, ASignatureThatWasBrokenByOthersIsNotBrokenAgain) {
  Signed memory;
  memory.replace("files/a.m", "changed");
  EXPECT_FALSE(memory.breaks([&] { memory.rewrite(u"/files/b%20c.m", "y = 2;\n"); }));
}

TEST(ChangeWatch, ASignatureThatCannotBeReadCountsAsBroken) {
  Signed memory;
  memory.replace(memory.name.substr(1), "<not xml");
  EXPECT_TRUE(memory.breaks([&] { memory.rewrite(u"/files/a.m", "x = 1;\n"); }));
}

TEST(ChangeWatch, OtherBytesOfAPartInPiecesBreakIt) {
  SignedPackage pieces;
  pieces.with("files/p.m/[0].piece", "a").with("files/p.m/[1].last.piece", "b");
  pieces.sign(ada());
  for (const auto& [text, isBroken] : {std::pair("ab", false), std::pair("other", true)}) {
    pieces.package.open(OpenMode::Modify);
    const ChangeWatch watch(pieces.package);
    test::writeText(*pieces.package.getPart(partName(u"/files/p.m"))->getOutputStream(), text);
    EXPECT_EQ(watch.hasBroken(), isBroken) << text;
    pieces.package.close(true);
  }
}

TEST(ChangeWatch, PartsThatWereNotChangedAreNotRead) {
  Signed memory;
  const auto countOf = [&](const std::string& item) {
    const auto& read = memory.physical.itemsRead();
    return std::count(read.begin(), read.end(), item);
  };
  const auto before = countOf("files/a.m");
  EXPECT_TRUE(memory.breaks([&] { memory.rewrite(u"/files/b%20c.m", "other"); }));
  EXPECT_EQ(countOf("files/a.m"), before);
}
