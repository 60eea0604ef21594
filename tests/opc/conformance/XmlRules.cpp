// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "opc/model/InvalidXMLDocument.h"
#include "opc/plservices/CorePropertiesManager.h"
#include "tests/opc/conformance/support/PackageSpec.h"
#include "tests/opc/conformance/support/ReadPackage.h"
#include "tests/opc/conformance/support/WrittenZip.h"

namespace test::conformance {

using opc::model::Package;

TEST(RuleXM1, AllPackageXmlIsWrittenAsDeclaredUtf8WithoutMark) {
  const WrittenZip zip(writtenPackage([](Package& package) {
    opc::plservices::CoreProperties properties(u"", u"", u"");
    properties.setTitle(u"\u00e9");
    opc::plservices::CorePropertiesManager(package).setCoreProperties(properties);
  }));

  for (const auto* name : {"[Content_Types].xml", "_rels/.rels", "metadata/coreProperties.xml"}) {
    const std::string& text = zip.content(name);
    EXPECT_TRUE(text.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"")) << text;
  }
  EXPECT_THAT(zip.content("metadata/coreProperties.xml"), testing::HasSubstr("\xc3\xa9"));
}

TEST(RuleXM3, TextThatXmlCannotCarryIsRefusedBeforeItIsWritten) {
  const auto write = [] {
    writtenPackage([](Package& package) {
      opc::plservices::CoreProperties properties(u"", u"", u"");
      properties.setTitle(u"bell \a");
      opc::plservices::CorePropertiesManager(package).setCoreProperties(properties);
    });
  };

  EXPECT_THROW(write(), opc::model::InvalidXMLDocument);
}

TEST(RuleXM5, MarkupInValuesIsEscapedAndComesBack) {
  const std::u16string title = u"a<b>&\"'\t\r\n]]>";
  const std::string bytes = writtenPackage([&](Package& package) {
    opc::plservices::CoreProperties properties(u"", u"", u"");
    properties.setTitle(title);
    opc::plservices::CorePropertiesManager(package).setCoreProperties(properties);
  });

  const ReadPackage read = readPackage(bytes);

  ASSERT_TRUE(read.core);
  EXPECT_EQ(read.core->text(opc::plservices::TextProperty::Title), title);
}

}  // namespace test::conformance
