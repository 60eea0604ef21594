// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "hostarray/standin/CallScope.h"
#include "tests/addon/packaging/DocumentGenerators.h"
#include "tests/support/HostValues.h"

// What holds for any document of every kind.

using hostarray::standin::CallScope;
using opc::model::InvalidXMLDocument;
using test::HostArray;

namespace {

template <typename Document>
std::string described(Document& document) {
  return test::describe(HostArray(document.getStructArray()).get());
}

template <typename Document>
class AnyDocument : public testing::Test {};

using DocumentTypes =
    testing::Types<addon::packaging::AddonProperties, addon::packaging::AddonLicense,
                   addon::packaging::AddonConfiguration, addon::packaging::AddonAppInstallList,
                   addon::packaging::AddonExamples, addon::packaging::AddonRevisionHistory,
                   addon::packaging::AddonSystemRequirements>;
TYPED_TEST_SUITE(AnyDocument, DocumentTypes);

TYPED_TEST(AnyDocument, GoesToTheHostAndBackUnchanged) {
  EXPECT_TRUE(rc::check("struct round trip", [] {
    const CallScope scope;
    TypeParam document = test::anyDocument<TypeParam>();
    const HostArray s(document.getStructArray());

    TypeParam back(s.get());

    RC_ASSERT(described(back) == test::describe(s.get()));
    RC_ASSERT(back.getAsXMLString() == document.getAsXMLString());
  }));
}

TYPED_TEST(AnyDocument, GoesToXmlAndBackUnchanged) {
  EXPECT_TRUE(rc::check("XML round trip", [] {
    TypeParam document = test::anyDocument<TypeParam>();
    TypeParam back;

    back.populateFromXML(document.getAsXMLString());

    RC_ASSERT(described(back) == described(document));
  }));
}

TYPED_TEST(AnyDocument, WithATextThatXmlCannotCarryIsRefused) {
  EXPECT_TRUE(rc::check("refusal", [] {
    TypeParam document = test::anyDocument<TypeParam>();
    const test::TextPointers texts = test::textsOf(document);
    RC_PRE(!texts.empty());
    std::u16string& text = *texts[*rc::gen::inRange<std::size_t>(0, texts.size())];
    // Alone between others, so that a surrogate has no other half.
    text += u"." + std::u16string(1, *test::forbiddenUnit()) + u".";

    RC_ASSERT_THROWS_AS(document.getAsXMLString(), InvalidXMLDocument);
  }));
}

}  // namespace
