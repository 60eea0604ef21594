// SPDX-License-Identifier: MIT
#include "opc/model/InvalidXMLDocument.h"

#include <gtest/gtest.h>

namespace opc::model {
namespace {

TEST(InvalidXMLDocument, NamesItsPlaceOnlyWhenThereIsOne) {
  const InvalidXMLDocument read("not well-formed: cut", 3, 7, "XM-3");
  const InvalidXMLDocument written("cannot write XML: no element", 0, 0);

  EXPECT_STREQ(read.what(), "not well-formed: cut (line 3, column 7)");
  EXPECT_EQ(read.line(), 3u);
  EXPECT_EQ(read.column(), 7u);
  EXPECT_EQ(read.rule(), "XM-3");
  EXPECT_STREQ(written.what(), "cannot write XML: no element");
  EXPECT_EQ(written.rule(), "");
}

TEST(InvalidXMLDocument, IsCaughtAsAnExceptionOfTheLayer) {
  try {
    throw InvalidXMLDocument("why", 1, 2);
  } catch (Exception& fault) {
    fault.addContext("part '/a.xml'");
    EXPECT_EQ(fault.code(), ErrorCode::InvalidXml);
    EXPECT_STREQ(fault.what(), "part '/a.xml': why (line 1, column 2)");
  }
}

}  // namespace
}  // namespace opc::model
