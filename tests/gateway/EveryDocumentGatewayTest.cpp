// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/gateway/DocumentSlots.h"
#include "tests/gateway/GatewayFixture.h"

// What holds for the setter and the getter of all six documents.

namespace {

using test::describe;
using test::DocumentSlots;
using test::HostArray;
using Strings = std::vector<std::string>;

const std::string kRoot = "http://schemas.pellandry.example/korvan/addon/2014/";

class EveryDocumentGateway : public test::GatewayTest,
                             public testing::WithParamInterface<DocumentSlots> {
 protected:
  void SetUp() override { createPackage(); }

  void set(const HostArray& document) const { write(GetParam().set, {document.get()}); }
  void setSample() const { set(GetParam().sample()); }
  std::string get() const { return describe(read(GetParam().get).get()); }
  std::string sample() const { return describe(GetParam().sample().get()); }

  std::string item() const { return std::string("metadata/") + GetParam().name + ".xml"; }
  std::string relationshipType() const { return kRoot + "relationships/" + GetParam().name; }

  /// Sets what must not be accepted: the host error is this one, and the package stays as it is.
  void expectRefusal(const kxArray* document, const char* hostError) const {
    const std::string before = packageBytes();
    EXPECT_EQ(callCleanly(GetParam().set, 0, {path(), document}).hostError, hostError);
    EXPECT_EQ(packageBytes(), before);
  }
};
INSTANTIATE_TEST_SUITE_P(Documents, EveryDocumentGateway, testing::ValuesIn(test::kDocumentSlots),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(EveryDocumentGateway, ThatWasNeverSetGivesTheEmptyDocument) {
  EXPECT_EQ(get(), GetParam().empty);
}

TEST_P(EveryDocumentGateway, GivesWhatWasSet) {
  setSample();

  EXPECT_EQ(get(), sample());
}

TEST_P(EveryDocumentGateway, StoresAPartOfItsTypeInItsNamespaceWithOneRelationship) {
  setSample();

  EXPECT_EQ(inspector().contentType(item()),
            std::string("application/vnd.pellandry.korvan.addon.") + GetParam().name + "+xml");
  const std::string start =
      std::string("<") + GetParam().name + " xmlns=\"" + kRoot + GetParam().name + "\">";
  const std::string xml = inspector().canonical(item());
  EXPECT_EQ(xml.substr(0, start.size()), start);
  EXPECT_EQ(xml.find("xmlns", start.size()), std::string::npos) << xml;
  const auto relationships = inspector().relationships(relationshipType());
  ASSERT_EQ(relationships.size(), 1u);
  EXPECT_TRUE(relationships[0].ends_with(" /" + item())) << relationships[0];
}

TEST_P(EveryDocumentGateway, SettingTwiceLeavesOnePartWithTheSecondAndTheFirstRelationship) {
  setSample();
  const Strings first = inspector().relationships(relationshipType());

  set(GetParam().other());

  const Strings names = inspector().names();
  EXPECT_EQ(std::count(names.begin(), names.end(), item()), 1);
  EXPECT_EQ(inspector().relationships(relationshipType()), first);
  EXPECT_EQ(get(), describe(GetParam().other().get()));
  EXPECT_NE(get(), sample());
}

TEST_P(EveryDocumentGateway, WhatWasReadCanBeStoredAgain) {
  setSample();
  const std::string before = inspector().content(item());

  set(read(GetParam().get));

  EXPECT_EQ(inspector().content(item()), before);
  EXPECT_EQ(get(), sample());
}

TEST_P(EveryDocumentGateway, TheEmptyDocumentCanBeStoredAgain) {
  const HostArray empty = read(GetParam().get);

  set(empty);

  EXPECT_EQ(get(), GetParam().empty);
  EXPECT_EQ(inspector().relationships(relationshipType()).size(), 1u);
}

TEST_P(EveryDocumentGateway, LeavesTheOthersAsTheyWere) {
  for (const DocumentSlots& document : test::kDocumentSlots) {
    write(document.set, {document.sample().get()});
  }

  set(GetParam().other());

  for (const DocumentSlots& document : test::kDocumentSlots) {
    const auto expected = document.set == GetParam().set ? document.other() : document.sample();
    EXPECT_EQ(describe(read(document.get).get()), describe(expected.get())) << document.name;
  }
}

TEST_P(EveryDocumentGateway, TwoRelationshipsOfItsTypeReadAsNone) {
  setSample();

  inspector().doubleRelationship(relationshipType());

  EXPECT_EQ(get(), GetParam().empty);
}

TEST_P(EveryDocumentGateway, WithAMissingOrMalformedPartGivesNothing) {
  setSample();

  inspector().replace(item(), "<a><b></a>");
  EXPECT_EQ(read(GetParam().get), nullptr);
  inspector().replace(item(), "");
  EXPECT_EQ(read(GetParam().get), nullptr);
  inspector().remove(item());
  EXPECT_EQ(read(GetParam().get), nullptr);
}

TEST_P(EveryDocumentGateway, WithAPartOfOtherContentGivesTheEmptyDocument) {
  setSample();

  inspector().replace(item(), "<other><x name='a'>text</x></other>");

  EXPECT_EQ(get(), GetParam().empty);
}

TEST_P(EveryDocumentGateway, RefusesWhatIsNotAStruct) {
  setSample();

  expectRefusal(test::makeNumber(1).get(), "Korvan:notStruct");
  expectRefusal(test::makeText(u"text").get(), "Korvan:notStruct");
  expectRefusal(test::makeCell({u"a"}).get(), "Korvan:notStruct");
}

TEST_P(EveryDocumentGateway, TextThatXmlCannotCarryChangesNothing) {
  setSample();
  const std::string before = packageBytes();

  for (const int code : {0x1, 0x8, 0xB, 0x1F, 0xD83D, 0xDE00, 0xFFFE, 0xFFFF, 0x0}) {
    const std::u16string text = {u'a', static_cast<char16_t>(code), u'b'};
    HostArray document = GetParam().sample();
    kxArray* inner = document.get();
    // Down to the first text of the first element of the first list.
    for (;;) {
      if (kxIsCell(inner)) {
        kxSetCell(inner, 0, test::makeText(text).release());
        break;
      }
      const char* field = kxGetFieldName(inner, 0);
      kxArray* value = kxGetField(inner, 0, field);
      if (kxIsChar(value)) {
        kxSetField(inner, 0, field, test::makeText(text).release());
        break;
      }
      inner = value;
    }
    set(document);
    EXPECT_EQ(packageBytes(), before) << code;
  }
}

TEST_P(EveryDocumentGateway, DoesNotCreateAMissingPackage) {
  std::filesystem::remove(file());

  setSample();

  EXPECT_EQ(read(GetParam().get), nullptr);
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_P(EveryDocumentGateway, AStructWithoutFieldsIsTheHostsErrorUnlessAllAreOptional) {
  const HostArray bare = test::makeStructArray({1, 1}, {"unknown"});
  const bool allOptional =
      GetParam().set == test::kSetConfiguration || GetParam().set == test::kSetSystemRequirements;

  if (!allOptional) return expectRefusal(bare.get(), "Korvan:missingValue");

  set(bare);
  EXPECT_EQ(get(), GetParam().empty);
}

}  // namespace
