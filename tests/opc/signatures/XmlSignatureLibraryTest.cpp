// SPDX-License-Identifier: MIT
#include "opc/signatures/XmlSignatureLibrary.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "opc/Exception.h"
#include "tests/opc/signatures/TestKeys.h"

using opc::interfaces::CanonicalXml;
using opc::interfaces::ManifestReference;
using opc::interfaces::SignatureState;
using opc::signatures::xmlSignatures;
using test::TestKeys;

TEST(XmlSignatureLibrary, IsLoadedOnce) {
  EXPECT_EQ(&xmlSignatures(), &xmlSignatures());
}

TEST(XmlSignatureLibrary, CanonicalFormsSayWhatTheyLeaveOut) {
  const std::string xml = "<a  b='1'><!-- c --></a>";
  const CanonicalXml without = xmlSignatures().canonicalise(xml, false);
  const CanonicalXml with = xmlSignatures().canonicalise(xml, true);

  EXPECT_EQ(without.bytes, "<a b=\"1\"></a>");
  EXPECT_TRUE(without.lacksComments);
  EXPECT_EQ(with.bytes, "<a b=\"1\"><!-- c --></a>");
  EXPECT_FALSE(with.lacksComments);
  EXPECT_THROW(xmlSignatures().canonicalise("<!DOCTYPE a><a/>", true), opc::Exception);
  EXPECT_THROW(xmlSignatures().canonicalise("<a>", true), opc::Exception);
}

TEST(XmlSignatureLibrary, SelectedRelationshipsAreInTheOrderOfTheirIds) {
  ManifestReference reference;
  reference.ids = {"b", "a"};
  const CanonicalXml found = xmlSignatures().selectRelationships(
      "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
      "<Relationship Id=\"c\" Type=\"urn:c\" Target=\"/c\"/>"
      "<Relationship Id=\"b\" Type=\"urn:b\" Target=\"/b\" TargetMode=\"Internal\"/>"
      "<Relationship Id=\"a\" Type=\"urn:a\" Target=\"/a?x&amp;y\"/></Relationships>",
      reference);

  EXPECT_EQ(found.bytes,
            "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
            "<Relationship Id=\"a\" Target=\"/a?x&amp;y\" TargetMode=\"Internal\" Type=\"urn:a\">"
            "</Relationship><Relationship Id=\"b\" Target=\"/b\" TargetMode=\"Internal\" "
            "Type=\"urn:b\"></Relationship></Relationships>");
  ASSERT_EQ(found.lacking.size(), 1U);
  EXPECT_EQ(found.lacking[0].id, "c");
}

TEST(XmlSignatureLibrary, ASignatureIsJudgedWithoutItsParts) {
  const TestKeys ada("Ada");
  const std::string xml = ada.signer()->sign(
      {{"/a.m?ContentType=text/plain", std::string(32, 'd')}}, test::kSigningTime);
  const auto read = xmlSignatures().read(xml, {}, nullptr);

  EXPECT_EQ(read.state, SignatureState::Valid);
  EXPECT_EQ(read.algorithm, "ecdsa-sha256");
  ASSERT_EQ(read.references.size(), 1U);
  EXPECT_EQ(read.references[0].uri, "/a.m?ContentType=text/plain");
  EXPECT_EQ(read.references[0].digest, std::string(32, 'd'));
  std::string other = xml;
  other.replace(other.find("/a.m?"), 4, "/b.m");
  EXPECT_EQ(xmlSignatures().read(other, {}, nullptr).state, SignatureState::Broken);
}

TEST(XmlSignatureLibrary, FilesThatAreNotAsTheyShouldBeAreNamed) {
  std::unique_ptr<opc::interfaces::ITrustAnchors> anchors;
  try {
    xmlSignatures().addAnchors(anchors, "x.pem", "no certificate");
    FAIL();
  } catch (const opc::Exception& error) {
    EXPECT_STREQ(error.what(), "cannot use certificates 'x.pem': it holds no certificates in PEM");
  }
  TestKeys ada("Ada");
  ada.key = TestKeys("Bo").key;
  try {
    ada.signer();
    FAIL();
  } catch (const opc::Exception& error) {
    EXPECT_STREQ(error.what(),
                 "cannot use key 'test.key': it does not match the certificate 'test.pem'");
  }
}
