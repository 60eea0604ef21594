// SPDX-License-Identifier: MIT
#include "opc/model/detail/StrictParser.h"

#include <gtest/gtest.h>

namespace opc::model::detail {
namespace {

TEST(RefusingEntityResolver, NamesTheEntityAndNoPlace) {
  RefusingEntityResolver resolver;

  try {
    resolver.resolveEntity(nullptr, u"file:///etc/passwd");
    FAIL() << "it was opened";
  } catch (const InvalidXMLDocument& fault) {
    EXPECT_EQ(fault.rule(), "RB-9");
    EXPECT_STREQ(fault.what(), "external entity 'file:///etc/passwd' is not allowed");
    EXPECT_EQ(fault.line(), 0u);
    EXPECT_EQ(fault.column(), 0u);
  }
}

}  // namespace
}  // namespace opc::model::detail
