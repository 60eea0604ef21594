// SPDX-License-Identifier: MIT
#include "opc/signatures/Signing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/opc/signatures/SignedPackage.h"

using opc::ErrorCode;
using opc::interfaces::Hash;
using opc::interfaces::OpenMode;
using opc::signatures::addSignature;
using opc::signatures::digestOf;
using opc::signatures::ItemDigests;
using opc::signatures::SignatureState;
using test::ada;
using test::Fault;
using test::faultOf;
using test::kSigningTime;
using test::SignedPackage;
using test::TestKeys;
using testing::IsEmpty;

namespace {

/// The digests of all items of the package that is open.
ItemDigests digestsOf(SignedPackage& memory) {
  ItemDigests digests;
  digests.begin(memory.physical.itemCount());
  for (opc::interfaces::ItemIndex i = 0; i < memory.physical.itemCount(); ++i) {
    const std::string name(memory.physical.itemName(i));
    digests.set(i, digestOf(Hash::Sha256, memory.disk.bytes(name)));
  }
  return digests;
}

}  // namespace

TEST(Signing, ASignatureIsValidAndCoversEverything) {
  SignedPackage memory;
  const std::string name = memory.sign(ada());
  const auto verified = memory.verify();

  ASSERT_EQ(verified.signatures.size(), 1U);
  EXPECT_EQ(verified.signatures[0].part, name);
  EXPECT_EQ(verified.signatures[0].state, SignatureState::Valid);
  EXPECT_EQ(verified.signatures[0].covered, 3U);
  EXPECT_EQ(verified.signatures[0].xml.time, kSigningTime);
  EXPECT_EQ(verified.signatures[0].xml.signer->subject, "CN=Ada");
  EXPECT_THAT(verified.uncovered, IsEmpty());
}

TEST(Signing, OtherItemsKeepTheirBytes) {
  SignedPackage memory;
  const test::MemoryDisk before = memory.disk;
  memory.sign(ada());

  for (const std::string& name : before.names()) {
    if (name == "_rels/.rels" || name == "[Content_Types].xml") continue;
    EXPECT_EQ(memory.disk.bytes(name), before.bytes(name)) << name;
  }
}

TEST(Signing, ASecondSignatureLeavesTheFirstValid) {
  SignedPackage memory;
  const std::string first = memory.sign(ada());
  const std::string bytes = memory.disk.bytes(first.substr(1));
  const std::string second = memory.sign(TestKeys("Bo"));

  EXPECT_NE(first, second);
  EXPECT_EQ(memory.disk.bytes(first.substr(1)), bytes);
  const auto verified = memory.verify();
  ASSERT_EQ(verified.signatures.size(), 2U);
  EXPECT_EQ(verified.signatures[0].state, SignatureState::Valid);
  EXPECT_EQ(verified.signatures[1].state, SignatureState::Valid);
}

TEST(Signing, ThePackageIsSignedAsItIsAfterItsChanges) {
  SignedPackage memory;
  memory.package.open(OpenMode::Modify);
  memory.create(u"/files/n.m", u"text/plain", "new");
  memory.package.deletePart(test::partName(u"/files/b%20c.m"));
  addSignature(memory.package, ada().signer(), kSigningTime);
  memory.package.close(false);

  const auto verified = memory.verify();
  EXPECT_EQ(verified.signatures.at(0).state, SignatureState::Valid);
  EXPECT_EQ(verified.signatures.at(0).covered, 3U);
}

TEST(Signing, KnownDigestsAreTakenAtTheCommitAndNothingIsRead) {
  SignedPackage memory;
  memory.package.open(OpenMode::Modify);
  const ItemDigests digests = digestsOf(memory);
  int calls = 0;
  addSignature(memory.package, ada().signer(), kSigningTime, [&]() -> const ItemDigests& {
    ++calls;
    return digests;
  });
  EXPECT_EQ(calls, 0);
  memory.package.close(false);

  EXPECT_EQ(calls, 1);
  for (const std::string& name : memory.physical.itemsRead()) {
    EXPECT_FALSE(name.starts_with("files/")) << name;
  }
  EXPECT_EQ(memory.verify().signatures.at(0).state, SignatureState::Valid);
}

TEST(Signing, WhatTheDigestsThrowEndsTheCommit) {
  SignedPackage memory;
  memory.package.open(OpenMode::Modify);
  const auto before = memory.disk.names();
  addSignature(memory.package, ada().signer(), kSigningTime, []() -> const ItemDigests& {
    throw opc::Exception(ErrorCode::InvalidPackage, "it has errors");
  });

  EXPECT_EQ(faultOf([&] { memory.package.close(false); }).code, ErrorCode::InvalidPackage);
  EXPECT_EQ(memory.disk.names(), before);
  memory.package.close(true);
}

TEST(Signing, ADigestThatIsNotKnownEndsTheCommit) {
  SignedPackage memory;
  memory.package.open(OpenMode::Modify);
  const ItemDigests none;
  addSignature(memory.package, ada().signer(), kSigningTime,
               [&]() -> const ItemDigests& { return none; });

  EXPECT_EQ(faultOf([&] { memory.package.close(false); }).text,
            "cannot sign '/files/a.m': it cannot be read");
  memory.package.close(true);
}

TEST(Signing, AnItemThatIsNotAPartIsRefused) {
  SignedPackage memory;
  memory.with("files/x.unknown");
  memory.package.open(OpenMode::Modify);

  const Fault fault = faultOf([&] { addSignature(memory.package, ada().signer(), kSigningTime); });

  EXPECT_EQ(fault.code, ErrorCode::InvalidPackage);
  EXPECT_EQ(fault.text,
            "cannot sign '/files/x.unknown': it has no content type, so it is not a part");
}

TEST(Signing, APackageWithFaultsInItsSignaturesIsRefused) {
  SignedPackage memory;
  memory.sign(ada());
  memory.replace(test::kOriginItem, "x");
  memory.package.open(OpenMode::Modify);

  EXPECT_EQ(
      faultOf([&] { addSignature(memory.package, ada().signer(), kSigningTime); }).text,
      "cannot sign '/" + std::string(test::kOriginItem) + "': the signature origin is not empty");
}
