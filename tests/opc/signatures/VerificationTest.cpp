// SPDX-License-Identifier: MIT
#include "opc/signatures/Verification.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/opc/signatures/SignedPackage.h"

using opc::interfaces::Hash;
using opc::interfaces::OpenMode;
using opc::signatures::digestOf;
using opc::signatures::ItemDigests;
using opc::signatures::nameOf;
using opc::signatures::Signature;
using opc::signatures::SignatureState;
using opc::signatures::Verification;
using opc::signatures::verifySignatures;
using test::ada;
using test::SignedPackage;
using test::TestKeys;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Signed : test::PackageOfAda {
  Signature only() {
    Verification verified = verify();
    EXPECT_EQ(verified.signatures.size(), 1U);
    return verified.signatures.at(0);
  }
};

}  // namespace

TEST(Verification, StatesHaveTheNamesThatAreShown) {
  EXPECT_EQ(nameOf(SignatureState::Valid), "valid");
  EXPECT_EQ(nameOf(SignatureState::Partial), "partial");
  EXPECT_EQ(nameOf(SignatureState::Broken), "broken");
  EXPECT_EQ(nameOf(SignatureState::Weak), "weak");
  EXPECT_EQ(nameOf(SignatureState::Unsupported), "unsupported");
}

TEST(Verification, APackageWithoutSignatureHasNone) {
  SignedPackage memory;
  const Verification verified = memory.verify();

  EXPECT_FALSE(verified.isSigned());
  EXPECT_THAT(verified.faults, IsEmpty());
  EXPECT_THAT(verified.uncovered, IsEmpty());
}

TEST(Verification, TheFirstChangedPartIsNamed) {
  Signed memory;
  memory.replace("files/b%20c.m", "changed");
  memory.replace("files/a.m", "changed");
  const Signature found = memory.only();

  EXPECT_EQ(found.state, SignatureState::Broken);
  EXPECT_EQ(found.reason, "'/files/a.m' does not match it (the first of 2)");
  EXPECT_THAT(found.changed, ElementsAre("/files/a.m", "/files/b%20c.m"));
  EXPECT_EQ(found.covered, 1U);
}

TEST(Verification, AMissingPartIsNamed) {
  Signed memory;
  memory.remove("files/b%20c.m");
  const Signature found = memory.only();

  EXPECT_EQ(found.state, SignatureState::Broken);
  EXPECT_EQ(found.reason, "'/files/b%20c.m' is missing");
  EXPECT_THAT(found.missing, ElementsAre("/files/b%20c.m"));
}

TEST(Verification, ATypeThatChangedBreaksIt) {
  Signed memory;
  std::string types = memory.disk.bytes("[Content_Types].xml");
  types.replace(types.find("text/plain"), 10, "text/x-new");
  memory.replace("[Content_Types].xml", types);

  EXPECT_EQ(memory.only().state, SignatureState::Broken);
}

TEST(Verification, ANameIsComparedToTheLetter) {
  Signed memory;
  memory.remove("files/a.m");
  memory.with("files/A.m", "x = 1;\n");
  const Signature found = memory.only();

  EXPECT_EQ(found.state, SignatureState::Broken);
  EXPECT_THAT(found.missing, ElementsAre("/files/a.m"));
}

TEST(Verification, WhatIsAddedIsNotCovered) {
  Signed memory;
  memory.with("files/n.m");
  memory.with("files/x.unknown");
  const Verification verified = memory.verify();

  EXPECT_EQ(verified.signatures.at(0).state, SignatureState::Partial);
  EXPECT_THAT(verified.uncovered, ElementsAre("/files/x.unknown", "/files/n.m"));
}

TEST(Verification, AnotherSignatureCoversWhatTheFirstDoesNot) {
  Signed memory;
  memory.with("files/n.m");
  memory.sign(TestKeys("Bo"));
  const Verification verified = memory.verify();

  EXPECT_EQ(verified.signatures.at(0).state, SignatureState::Partial);
  EXPECT_EQ(verified.signatures.at(1).state, SignatureState::Valid);
  EXPECT_THAT(verified.uncovered, IsEmpty());
}

TEST(Verification, OnlyAnchorsDecideWhoIsTrusted) {
  Signed memory;

  EXPECT_FALSE(memory.verify().signatures.at(0).xml.isTrusted.has_value());
  EXPECT_TRUE(memory.verify(ada().anchors().get()).signatures.at(0).xml.isTrusted.value());
  const Verification other = memory.verify(TestKeys("Ada").anchors().get());
  EXPECT_FALSE(other.signatures.at(0).xml.isTrusted.value());
  EXPECT_EQ(other.signatures.at(0).state, SignatureState::Valid);
}

TEST(Verification, ASignatureThatCannotBeReadIsNotSupported) {
  Signed memory;
  memory.replace(memory.name.substr(1), "<not xml");
  const Signature found = memory.only();

  EXPECT_EQ(found.state, SignatureState::Unsupported);
  EXPECT_EQ(found.reason, "it is not well-formed");
}

TEST(Verification, EachPartIsReadOnceForSeveralSignatures) {
  Signed memory;
  memory.sign(TestKeys("Bo"));
  const std::size_t before = memory.physical.itemsRead().size();
  memory.verify();
  const auto& read = memory.physical.itemsRead();

  for (const std::string name : {"files/a.m", "files/b%20c.m"}) {
    EXPECT_EQ(std::count(read.begin() + static_cast<std::ptrdiff_t>(before), read.end(), name), 1);
  }
}

TEST(Verification, KnownDigestsStandForTheBytes) {
  Signed memory;
  memory.package.open(OpenMode::Read);
  ItemDigests digests;
  digests.begin(memory.physical.itemCount());
  for (opc::interfaces::ItemIndex i = 0; i < memory.physical.itemCount(); ++i) {
    const std::string name(memory.physical.itemName(i));
    digests.set(i, digestOf(Hash::Sha256, memory.disk.bytes(name)));
  }
  const std::size_t before = memory.physical.itemsRead().size();

  EXPECT_EQ(verifySignatures(memory.package, nullptr, &digests).signatures.at(0).state,
            SignatureState::Valid);
  for (std::size_t i = before; i < memory.physical.itemsRead().size(); ++i) {
    EXPECT_FALSE(memory.physical.itemsRead()[i].starts_with("files/"));
  }
  digests.set(memory.package.getPart(test::partName(u"/files/a.m"))->id(), std::string(32, 'x'));
  EXPECT_EQ(verifySignatures(memory.package, nullptr, &digests).signatures.at(0).state,
            SignatureState::Broken);
}
