// SPDX-License-Identifier: MIT
#include "opc/plservices/HostPropertiesPart.h"

#include <gtest/gtest.h>

#include "opc/model/InvalidXMLDocument.h"
#include "tests/opc/model/XmlTestSupport.h"

namespace opc::plservices {
namespace {

HostPropertiesPart read(const std::string& xml) {
  MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  return HostPropertiesPart::read(stream);
}

TEST(HostPropertiesPart, IsWrittenInItsNamespace) {
  test::StringOutputStream stream;
  HostPropertiesPart{u"a/b", u"A & B", u""}.write(stream);

  EXPECT_EQ(stream.text,
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>"
            "<hostProperties"
            " xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/hostProperties\">"
            "<contentType>a/b</contentType>"
            "<contentTypeFriendlyName>A &amp; B</contentTypeFriendlyName>"
            "<korvanRelease/></hostProperties>");
}

TEST(HostPropertiesPart, ComesBackAsItWas) {
  const HostPropertiesPart part{u"a/b", u"\u00E9\r\n\U0001F600", u" R1 "};
  test::StringOutputStream stream;

  part.write(stream);

  EXPECT_EQ(read(stream.text), part);
}

TEST(HostPropertiesPart, IsReadLeniently) {
  EXPECT_EQ(read("<x><other/><korvanRelease a='b'>R1</korvanRelease></x>"),
            (HostPropertiesPart{u"", u"", u"R1"}));
  EXPECT_EQ(read("<hostProperties/>"), HostPropertiesPart());
}

TEST(HostPropertiesPart, XmlThatIsNotWellFormedIsRefused) {
  EXPECT_THROW(read("<hostProperties>"), model::InvalidXMLDocument);
}

}  // namespace
}  // namespace opc::plservices
