// SPDX-License-Identifier: MIT
#include "opc/signatures/SignatureParts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/opc/signatures/SignedPackage.h"

using opc::interfaces::OpenMode;
using opc::model::ContentType;
using opc::signatures::countSignatures;
using opc::signatures::findSignatures;
using opc::signatures::isSignatureType;
using opc::signatures::partNameOf;
using opc::signatures::removeSignatures;
using opc::signatures::SignatureParts;
using test::SignedPackage;
using test::TestKeys;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

const TestKeys& ada() {
  static const TestKeys keys("Ada");
  return keys;
}

/// What the relationships of the origin lead to, in a package of Ada.
SignatureParts foundIn(SignedPackage& memory) {
  memory.package.open(OpenMode::Read);
  return findSignatures(memory.package);
}

std::string faultOf(const std::function<void(SignedPackage&)>& change) {
  SignedPackage memory;
  memory.sign(ada());
  change(memory);
  const SignatureParts found = foundIn(memory);
  return found.faults.size() == 1 ? found.faults.front().part + ": " + found.faults.front().message
                                  : std::to_string(found.faults.size()) + " faults";
}

void replaceIn(SignedPackage& memory, const std::string& item, const std::string& old,
               const std::string& text) {
  std::string bytes = memory.disk.bytes(item);
  const std::size_t at = bytes.find(old);
  ASSERT_NE(at, bytes.npos) << old;
  memory.replace(item, bytes.replace(at, old.size(), text));
}

const std::string kOriginName = "/" + std::string(test::kOriginItem);

}  // namespace

TEST(SignatureParts, NamesArePercentEncoded) {
  EXPECT_EQ(partNameOf("files/\xC3\xB6.m"), "/files/%C3%B6.m");
  EXPECT_EQ(partNameOf("files/b%20c.m"), "/files/b%20c.m");
}

TEST(SignatureParts, TypesOfSignaturesAreKnownInAnyCase) {
  EXPECT_TRUE(isSignatureType(
      ContentType(u"Application/vnd.openxmlformats-package.Digital-Signature-origin")));
  EXPECT_FALSE(isSignatureType(ContentType(u"text/plain")));
}

TEST(SignatureParts, OfAPackageWithoutSignatureAreNone) {
  SignedPackage memory;
  const SignatureParts found = foundIn(memory);

  EXPECT_FALSE(found.origin);
  EXPECT_THAT(found.signatures, IsEmpty());
  EXPECT_THAT(found.faults, IsEmpty());
  EXPECT_THAT(found.exempt, IsEmpty());
  EXPECT_EQ(countSignatures(memory.package), 0U);
}

TEST(SignatureParts, AreFoundAlongTheRelationships) {
  SignedPackage memory;
  const std::string first = memory.sign(ada());
  const std::string second = memory.sign(ada());
  const SignatureParts found = foundIn(memory);

  ASSERT_TRUE(found.origin);
  ASSERT_EQ(found.signatures.size(), 2U);
  EXPECT_EQ(partNameOf(memory.package.itemNameOf(found.signatures[0].part)), first);
  EXPECT_EQ(partNameOf(memory.package.itemNameOf(found.signatures[1].part)), second);
  EXPECT_THAT(found.faults, IsEmpty());
  EXPECT_EQ(found.exempt.size(), 6U);
  EXPECT_TRUE(found.exempt.contains(kOriginName));
  EXPECT_TRUE(found.exempt.contains("/" + std::string(test::kOriginRelationshipsItem)));
  EXPECT_TRUE(found.exempt.contains(first));
  EXPECT_EQ(countSignatures(memory.package), 2U);
}

TEST(SignatureParts, MalformedPartsAreFaults) {
  const std::string rels = test::kOriginRelationshipsItem;
  EXPECT_EQ(faultOf([](auto& memory) { memory.replace(test::kOriginItem, "x"); }),
            kOriginName + ": the signature origin is not empty");
  EXPECT_EQ(faultOf([&](auto& memory) { memory.remove(rels); }),
            kOriginName + ": the signature origin leads to no signature");
  EXPECT_THAT(faultOf([](auto& memory) { memory.remove(test::kOriginItem); }),
              HasSubstr("which is not in the package"));
  EXPECT_THAT(faultOf([&](auto& memory) {
                replaceIn(memory, rels, "digital-signature/signature", "digital-signature/other");
              }),
              HasSubstr("does not lead to a signature"));
  EXPECT_THAT(
      faultOf([](auto& memory) { replaceIn(memory, "_rels/.rels", kOriginName, "/files/a.m"); }),
      HasSubstr("whose content type 'text/plain' is not that of a signature origin"));
  EXPECT_THAT(faultOf([](auto& memory) {
                replaceIn(memory, "_rels/.rels", "digital-signature/origin", "digital-signature/x");
              }),
              HasSubstr("2 faults"));
}

TEST(SignatureParts, NoneLiesInTheFoldersOfTheAddOn) {
  const std::string fault = faultOf([](SignedPackage& memory) {
    const std::string origin = "<Override PartName=\"/files/o\" ContentType=\"" +
                               std::string(opc::signatures::kOriginType) + "\"/></Types>";
    memory.with("files/o", "");
    replaceIn(memory, "_rels/.rels", kOriginName, "/files/o");
    replaceIn(memory, "[Content_Types].xml", "</Types>", origin);
  });

  EXPECT_THAT(fault, HasSubstr("which is part of the add-on"));
}

TEST(SignatureParts, RemovingLeavesThePackageAsItWas) {
  SignedPackage memory;
  memory.package.open(OpenMode::Modify);
  EXPECT_FALSE(removeSignatures(memory.package));
  memory.package.close(true);
  const std::vector<std::string> names = memory.disk.names();
  memory.sign(ada());
  memory.sign(ada());

  memory.package.open(OpenMode::Modify);
  EXPECT_TRUE(removeSignatures(memory.package));
  memory.package.close(false);

  EXPECT_THAT(memory.disk.names(), testing::UnorderedElementsAreArray(names));
  EXPECT_FALSE(memory.verify().isSigned());
}
