// SPDX-License-Identifier: MIT
#include "opc/signatures/SignableParts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/opc/signatures/SignedPackage.h"

using opc::interfaces::OpenMode;
using opc::signatures::parseReference;
using opc::signatures::SignablePart;
using opc::signatures::signableParts;
using opc::signatures::toReference;
using test::SignedPackage;

namespace {

std::vector<std::string> referencesOf(opc::model::Package& package) {
  std::vector<std::string> references;
  for (const SignablePart& part : signableParts(package)) references.push_back(toReference(part));
  return references;
}

const std::string kRelationships = "?ContentType=" + std::string(test::kRelationshipsTypeName);

}  // namespace

TEST(SignableParts, AreAllPartsAndRelationshipsPartsByName) {
  SignedPackage memory;
  memory.with("files/Z.m").with("files/\xC3\xB6.m").with("[trash]/0000.dat");
  memory.package.open(OpenMode::Read);

  EXPECT_EQ(referencesOf(memory.package),
            (std::vector<std::string>{
                "/_rels/.rels" + kRelationships, "/files/%C3%B6.m?ContentType=text/plain",
                "/files/Z.m?ContentType=text/plain", "/files/a.m?ContentType=text/plain",
                "/files/b%20c.m?ContentType=text/plain"}));
}

TEST(SignableParts, AreThoseThatACommitWouldLeave) {
  SignedPackage memory;
  memory.package.open(OpenMode::Modify);
  memory.package.deletePart(test::partName(u"/files/b%20c.m"));
  memory.create(u"/files/n.m", u"text/plain; charset=utf-8", "new");
  memory.package.createInternalRelationship(u"urn:new", opc::model::URI(u"/files/n.m"), u"");

  const std::vector<SignablePart> parts = signableParts(memory.package);

  ASSERT_EQ(parts.size(), 3U);
  EXPECT_EQ(parts[0].name, "/_rels/.rels");
  EXPECT_TRUE(parts[0].isRelationships());
  EXPECT_FALSE(parts[0].id);
  const std::string relationships = test::readAll(*open(memory.package, parts[0]));
  EXPECT_NE(relationships.find("urn:new"), relationships.npos);
  EXPECT_EQ(toReference(parts[2]), "/files/n.m?ContentType=text/plain;charset=utf-8");
  EXPECT_FALSE(parts[2].isRelationships());
  EXPECT_EQ(test::readAll(*open(memory.package, parts[2])), "new");
}

TEST(SignableParts, AReferenceIsANameAndAType) {
  const auto parsed = parseReference("/files/b%20c.m?ContentType=text/plain;charset=%22utf-8%22");

  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->name, "/files/b%20c.m");
  EXPECT_EQ(parsed->type, "text/plain;charset=\"utf-8\"");
}

TEST(SignableParts, AnythingElseIsNotAReference) {
  for (const char* uri : {"", "/", "?ContentType=text/plain", "/?ContentType=text/plain",
                          "/files/a.m", "/files/a.m?", "/files/a.m?contenttype=text/plain",
                          "/files/a.m?ContentType=", "/files/a.m?ContentType=text",
                          "/files/a.m?x&ContentType=a/b", "/files/a.m?ContentType=%zz"}) {
    EXPECT_FALSE(parseReference(uri)) << uri;
  }
}
