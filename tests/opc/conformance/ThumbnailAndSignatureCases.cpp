// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;

std::string thumbnailTo(std::string_view target) {
  return "<Relationship Id=\"rId2\" Target=\"" + std::string(target) + "\" Type=\"" +
         std::string(kThumbnailRelation) + "\"/>";
}

void addImage(PackageSpec& p) {
  p.types = defaultXml("png", "image/png");
  p.add("t.png", "image");
}

void addSignature(PackageSpec& p) {
  p.types = overrideXml("/sig/origin", kOriginType) +
            overrideXml("/sig/one.xml",
                        "application/vnd.openxmlformats-package.digital-signature-"
                        "xmlsignature+xml");
  p.relationships = "<Relationship Id=\"rId2\" Target=\"sig/origin\" Type=\"" +
                    std::string(kOriginRelation) + "\"/>";
  p.add("sig/origin", "");
  p.add("sig/one.xml", "no signature at all");
}

}  // namespace

std::vector<Case> thumbnailAndSignatureCases() {
  return {
      {"TH-1", "AThumbnailOfThePackageIsAnImage", Accepted, Silent,
       [](PackageSpec& p) {
         addImage(p);
         p.relationships = thumbnailTo("t.png");
       },
       [](const ReadPackage& read) { EXPECT_EQ(read.targets.at("rId2"), "/t.png"); }},
      {"TH-1", "APartMayHaveOneToo", Accepted, Silent,
       [](PackageSpec& p) {
         addImage(p);
         p.addRelations("_rels/b.m.rels", thumbnailTo("t.png"));
       },
       [](const ReadPackage& read) { EXPECT_EQ(read.targetsOfPart.at("rId2"), "/t.png"); }},
      {"TH-1", "AnImageMayHaveOtherRelationshipsToo", Accepted, Silent,
       [](PackageSpec& p) {
         addImage(p);
         p.relationships = thumbnailTo("t.png") + relationXml("rId3", "t.png");
       }},
      {"TH-1", "WhatIsNoImageDrawsAWarning", Accepted, Warning, relations(thumbnailTo("b.m"))},
      {"DS-1", "SignaturePartsAreReadLikeAny", Accepted, Warning, addSignature,
       [](const ReadPackage& read) {
         EXPECT_EQ(read.parts.at("sig/one.xml").content, "no signature at all");
         EXPECT_EQ(read.parts.at("sig/origin").content, "");
       }},
  };
}

}  // namespace test::conformance
