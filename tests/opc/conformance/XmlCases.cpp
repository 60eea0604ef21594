// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "opc/Text.h"
#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;

const std::string kTypesRoot =
    "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">";
const std::string kRelationsRoot =
    "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">";
const std::string kCoreRoot =
    "<coreProperties "
    "xmlns=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\">";

auto streamWith(std::string prologue, std::string behind = "") {
  return wholeTypes(prologue + kTypesRoot + kUsualDefaults + "</Types>" + behind);
}

auto relationsWith(std::string prologue, std::string behind = "") {
  return wholeRelations(prologue + kRelationsRoot + "</Relationships>" + behind);
}

auto coreWith(std::string prologue, std::string behind = "") {
  return wholeCore(prologue + kCoreRoot + "</coreProperties>" + behind);
}

std::string declared(std::string_view encoding) {
  return "<?xml version=\"1.0\" encoding=\"" + std::string(encoding) + "\"?>";
}

std::string utf16(std::string_view text, bool bigEndian) {
  std::string bytes = bigEndian ? "\xfe\xff" : "\xff\xfe";
  for (const char16_t unit : opc::fromUtf8(text)) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

std::string utf32(std::string_view text) {
  std::string bytes("\xff\xfe\0\0", 4);
  for (const char c : text) bytes += std::string{c, '\0', '\0', '\0'};
  return bytes;
}

std::string typesText(std::string_view prologue = "") {
  return std::string(prologue) + kTypesRoot + kUsualDefaults + "</Types>";
}

std::vector<Case> encodingCases() {
  return {
      {"XM-1", "Utf8WithMarkIsAccepted", Accepted, Silent, streamWith("\xef\xbb\xbf")},
      {"XM-1", "Utf8DeclaredInSmallLettersIsAccepted", Accepted, Silent,
       streamWith(declared("utf-8"))},
      {"XM-1", "Utf16InEitherOrderIsAccepted", Accepted, Silent,
       [](PackageSpec& p) {
         p.wholeTypes = utf16(typesText(declared("UTF-16")), false);
         p.wholeRelations = utf16(relationsDocument("").substr(39), true);
       }},
      {"XM-1", "Utf16WithoutMarkIsRefused", Refused, Error,
       wholeTypes(utf16(typesText(), false).substr(2))},
      {"XM-1", "ADeclarationThatContradictsTheBytesIsRefused", Refused, Error,
       streamWith(declared("UTF-16"))},
      {"XM-1", "Latin1IsRefusedInTheStream", Refused, Error, streamWith(declared("ISO-8859-1"))},
      {"XM-1", "AsciiIsRefusedInRelationships", Refused, Error,
       relationsWith(declared("US-ASCII"))},
      {"XM-1", "Latin1IsRefusedInCoreProperties", RefusedOnUse, Error,
       coreWith(declared("ISO-8859-1"))},
      {"XM-1", "Utf32IsRefused", Refused, Error, wholeTypes(utf32(typesText()))},
      {"XM-1", "Utf32WithoutMarkIsRefused", Refused, Error,
       wholeTypes(utf32(typesText()).substr(4))},
      {"XM-1", "MalformedUtf8IsRefused", Refused, Error, streamWith("<!-- \xff -->")},
      {"XM-1", "OverlongUtf8IsRefused", Refused, Error, streamWith("<!-- \xc0\xaf -->")},
      {"XM-2", "ADocumentTypeIsRefusedInTheStream", Refused, Error,
       streamWith("<!DOCTYPE Types [<!ENTITY a \"b\">]>")},
      {"XM-2", "AnEmptyDocumentTypeIsRefused", Refused, Error, streamWith("<!DOCTYPE Types>")},
      {"XM-2", "ADocumentTypeIsRefusedInRelationships", Refused, Error,
       relationsWith("<!DOCTYPE Relationships SYSTEM \"file:///etc/passwd\">")},
      {"XM-2", "ADocumentTypeIsRefusedInCoreProperties", RefusedOnUse, Error,
       coreWith("<!DOCTYPE coreProperties []>")},
      {"XM-2", "ADocumentTypeInACommentIsNone", Accepted, Silent,
       streamWith("<!-- <!DOCTYPE Types> -->")},
  };
}

std::vector<Case> formCases() {
  return {
      {"XM-3", "ASecondMarkIsRefused", Refused, Error, streamWith("\xef\xbb\xbf\xef\xbb\xbf")},
      {"XM-3", "ASecondMarkOfUtf16IsRefused", Refused, Error,
       wholeTypes(utf16("\xef\xbb\xbf" + typesText(), false))},
      {"XM-3", "ATagThatIsNotClosedIsRefused", Refused, Error, wholeTypes(kTypesRoot)},
      {"XM-3", "AnUndeclaredPrefixIsRefused", Refused, Error, types("<q:Default/>")},
      {"XM-3", "ASecondRootIsRefused", Refused, Error, streamWith("", "<Types/>")},
      {"XM-3", "TextBehindTheRootIsRefused", Refused, Error, relationsWith("", "text")},
      {"XM-3", "ANulBehindTheRootIsRefused", Refused, Error,
       relationsWith("", std::string("\0", 1))},
      {"XM-3", "ANulBehindCorePropertiesIsRefused", RefusedOnUse, Error,
       coreWith("", std::string("\0", 1))},
      {"XM-3", "AnEmptyStreamIsRefused", Refused, Error, wholeTypes("")},
      {"XM-3", "Version11IsRefused", Refused, Error, streamWith("<?xml version=\"1.1\"?>")},
      {"XM-3", "AnAttributeTwiceIsRefused", Refused, Error,
       types("<Default Extension=\"q\" Extension=\"q\" ContentType=\"text/x\"/>")},
      {"XM-3", "CommentsAndInstructionsMayFollow", Accepted, Silent,
       streamWith("", " <!-- c --><?p i?>\n")},
      {"XM-4", "AnXmlAttributeInTheStreamIsRefused", Refused, Error,
       types("<Default xml:lang=\"en\" Extension=\"q\" ContentType=\"text/x\"/>")},
      {"XM-4", "AnXsiAttributeInTheStreamIsRefused", Refused, Error,
       types("<Default xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:nil=\"true\" "
             "Extension=\"q\" ContentType=\"text/x\"/>")},
      {"XM-4", "AnXmlAttributeInRelationshipsIsRefused", Refused, Error,
       relations(relationXml("rId2", "b.m", "xml:space=\"preserve\""))},
      {"XM-4", "AnXsiAttributeInRelationshipsIsRefused", Refused, Error,
       relations(relationXml("rId2", "b.m",
                             "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                             "xsi:nil=\"true\"")),
       nullptr, "RL-13"},
      {"XM-4", "AnXmlAttributeInCorePropertiesIsRefused", RefusedOnUse, Error,
       core("<dc:title xml:space=\"preserve\"/>")},
      {"XM-4", "AnXsiAttributeInCorePropertiesIsRefused", RefusedOnUse, Error,
       core("<dc:title xsi:nil=\"true\"/>")},
      {"XM-5", "AllSpellingsAreTheSameContent", Accepted, Silent,
       [](PackageSpec& p) {
         p.wholeRelations =
             "<?p i?><!-- c --><r:Relationships "
             "xmlns:r='http://schemas.openxmlformats.org/package/2006/relationships'>"
             "<!-- c --><r:Relationship Id='r&#73;d2' Type='urn:t' Target='b&#x2E;m'>"
             "<?p i?></r:Relationship></r:Relationships>";
         p.core = "<dc:title>a<![CDATA[<b>]]>&#99;<!-- no -->&amp;</dc:title>";
         p.wholeRelations->insert(p.wholeRelations->rfind("</r:Relationships>"),
                                  "<r:Relationship Id='c' Target='core.xml' Type='" +
                                      std::string(kCoreRelation) + "'/>");
       },
       [](const ReadPackage& read) {
         EXPECT_EQ(read.targets.at("rId2"), "/b.m");
         ASSERT_TRUE(read.core);
         EXPECT_EQ(read.core->text(opc::plservices::TextProperty::Title), u"a<b>c&");
       }},
  };
}

}  // namespace

std::vector<Case> xmlCases() {
  std::vector<Case> all = encodingCases();
  const std::vector<Case> more = formCases();
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

}  // namespace test::conformance
