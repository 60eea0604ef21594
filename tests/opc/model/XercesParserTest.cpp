// SPDX-License-Identifier: MIT
#include "opc/model/XercesParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "opc/Exception.h"
#include "tests/opc/model/XmlTestSupport.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::model {
namespace {

using std::string_literals::operator""s;
using test::faultOf;
using test::ParsedXml;
using test::repeat;
using test::utf16Bytes;
using testing::HasSubstr;

struct Fault {
  const char* name;
  std::string xml;
  const char* rule;
  const char* text;
  std::uint64_t line;
};

void PrintTo(const Fault& fault, std::ostream* out) {
  *out << fault.name;
}

class RefusedXml : public testing::TestWithParam<Fault> {};

TEST_P(RefusedXml, IsRefusedWithRulePlaceAndReason) {
  const InvalidXMLDocument fault = faultOf(GetParam().xml);

  EXPECT_EQ(fault.rule(), GetParam().rule) << fault.what();
  EXPECT_THAT(fault.what(), HasSubstr(GetParam().text));
  EXPECT_EQ(fault.line(), GetParam().line) << fault.what();
  EXPECT_EQ(fault.code(), ErrorCode::InvalidXml);
  EXPECT_EQ(std::string(fault.what()).find('\n'), std::string::npos);
}

std::string nameOf(const testing::TestParamInfo<Fault>& info) {
  return info.param.name;
}

const char16_t kDeclared16[] = u"<?xml version='1.0' encoding='UTF-16'?><a/>";

INSTANTIATE_TEST_SUITE_P(
    Encodings, RefusedXml,
    testing::Values(
        Fault{"Overlong", "<a>\xC0\xBC</a>", "XM-1", "not UTF-8", 1},
        Fault{"Surrogate", "<a>\n\xED\xA0\x80</a>", "XM-1", "(line 2, column 1)", 2},
        Fault{"Truncated", "<a/>\xE2\x82", "XM-1", "not UTF-8", 1},
        Fault{"AfterAPairOfSurrogates", "<a>\n\xC3\xA9\xF0\x9F\x98\x80\xFF</a>", "XM-1",
              "(line 2, column 4)", 2},
        Fault{"BeyondUnicode", "<a>\xF4\x90\x80\x80</a>", "XM-1", "not UTF-8", 1},
        Fault{"Latin1", "<?xml version='1.0' encoding='ISO-8859-1'?><a/>", "XM-1", "ISO-8859-1", 1},
        Fault{"Ascii", "<?xml version='1.0' encoding='US-ASCII'?><a/>", "XM-1", "US-ASCII", 1},
        Fault{"Utf16Le", "<?xml version='1.0' encoding='UTF-16LE'?><a/>", "XM-1", "UTF-16LE", 1},
        Fault{"Unknown", "<?xml version='1.0' encoding='bogus'?><a/>", "XM-1", "bogus", 1},
        Fault{"Declared16ButIs8", "<?xml version='1.0' encoding='utf-16'?><a/>", "XM-1",
              "UTF-16 is declared, the bytes are UTF-8", 1},
        Fault{"Declared8ButIs16",
              "\xFE\xFF" + utf16Bytes(u"<?xml version='1.0' encoding='UTF-8'?><a/>", true), "XM-1",
              "UTF-8 is declared, the bytes are UTF-16", 1},
        Fault{"Utf16BigEndianWithoutMark", utf16Bytes(kDeclared16, true), "XM-1", "without", 1},
        Fault{"Utf16LittleEndianWithoutMark", utf16Bytes(kDeclared16, false), "XM-1", "without", 1},
        Fault{"HalfACodeUnit", "\xFF\xFE" + utf16Bytes(u"<a/>", false) + " ", "XM-1", "not UTF-16",
              1},
        Fault{"LoneHighSurrogate", "\xFF\xFE" + utf16Bytes(u"<a>\n\xD800x</a>", false), "XM-1",
              "(line 2, column 1)", 2},
        Fault{"LoneLowSurrogate", "\xFF\xFE" + utf16Bytes(u"<a>\xDC00</a>", false), "XM-1",
              "not UTF-16", 1},
        Fault{"HighSurrogateAtTheEnd", "\xFE\xFF" + utf16Bytes(u"<a/>\xD800", true), "XM-1",
              "not UTF-16", 1},
        Fault{"Utf32LittleEndian", "\xFF\xFE\0\0<\0\0\0a\0\0\0/\0\0\0>\0\0\0"s, "XM-1", "UTF-32",
              1},
        Fault{"Utf32BigEndian", "\0\0\xFE\xFF\0\0\0<\0\0\0a\0\0\0/\0\0\0>"s, "XM-1", "UTF-32", 1}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    DocumentTypes, RefusedXml,
    testing::Values(
        Fault{"Empty", "<!DOCTYPE a><a/>", "XM-2", "document type", 1},
        Fault{"AfterComment", "<!-- <!DOCTYPE x> -->\n<!DOCTYPE a []><a/>", "XM-2",
              "(line 2, column 1)", 2},
        Fault{"Internal", "<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>", "XM-2", "document type", 1},
        Fault{"Parameter", "<!DOCTYPE a [<!ENTITY % p SYSTEM 'file:///etc/passwd'>%p;]><a/>",
              "XM-2", "document type", 1},
        Fault{"InUtf16", "\xFE\xFF" + utf16Bytes(u"<!DOCTYPE a><a/>", true), "XM-2",
              "document type", 1}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    WellFormedness, RefusedXml,
    testing::Values(
        Fault{"Nothing", "", "XM-3", "not well-formed: ", 1},
        Fault{"OnlySpace", " \n", "XM-3", "not well-formed: ", 2},
        Fault{"Unclosed", "<a>\n  <b>\n</a>", "XM-3",
              "not well-formed: expected end of tag 'b' (line 3, column ", 3},
        Fault{"Cut", "<a>text", "XM-3", "not well-formed: ", 1},
        Fault{"CutInATag", "<a b", "XM-3", "not well-formed: ", 1},
        Fault{"CutInAValue", "<a b='", "XM-3", "not well-formed: ", 1},
        Fault{"CutInAComment", "<a><!-- ", "XM-3", "not well-formed: ", 1},
        Fault{"CutInCdata", "<a><![CDATA[x", "XM-3", "not well-formed: ", 1},
        Fault{"TwoRoots", "<a/><b/>", "XM-3", "not well-formed: ", 1},
        Fault{"TextAfterTheRoot", "<a/>x", "XM-3", "not well-formed: ", 1},
        Fault{"NullAfterTheRoot", "<a/>\n\0"s, "XM-3", "U+0000", 2},
        Fault{"NullInText", "<a>\0</a>"s, "XM-3", "U+0000", 1},
        Fault{"NullInUtf16", "\xFF\xFE" + utf16Bytes(u"<a/>\0"s, false), "XM-3", "U+0000", 1},
        Fault{"Control", "<a>\x01</a>", "XM-3", "not well-formed: ", 1},
        Fault{"ControlByReference", "<a>&#1;</a>", "XM-3", "not well-formed: ", 1},
        Fault{"NullByReference", "<a b='&#0;'/>", "XM-3", "not well-formed: ", 1},
        Fault{"SurrogateByReference", "<a>&#xD800;</a>", "XM-3", "not well-formed: ", 1},
        Fault{"ReferenceBeyond32Bits", "<a>&#4294967361;</a>", "XM-3", "not well-formed: ", 1},
        Fault{"Noncharacter", "<a>\xEF\xBF\xBE</a>", "XM-3", "0xFFFE", 1},
        Fault{"UnknownEntity", "<a>&foo;</a>", "XM-3", "foo", 1},
        Fault{"UnboundPrefix", "<x:a/>", "XM-3", "'x'", 1},
        Fault{"UnboundAttributePrefix", "<a x:b=''/>", "XM-3", "'x'", 1},
        Fault{"RepeatedAttribute", "<a b='' b=''/>", "XM-3", "'b'", 1},
        Fault{"RepeatedByNamespace", "<a xmlns:p='u' xmlns:q='u' p:b='' q:b=''/>", "XM-3", "'b'",
              1},
        Fault{"Version11", "<?xml version='1.1'?><a/>", "XM-3", "'1.1'", 1},
        Fault{"SpaceBeforeTheDeclaration", " <?xml version='1.0'?><a/>", "XM-3",
              "not well-formed: ", 1}),
    nameOf);

/// XML beyond a limit is large: it is made when its test runs, not for every test of the program.
struct LimitFault {
  const char* name;
  std::string (*make)();
  const char* rule;
  const char* text;
  std::uint64_t line;
};

void PrintTo(const LimitFault& fault, std::ostream* out) {
  *out << fault.name;
}

class XmlBeyondALimit : public testing::TestWithParam<LimitFault> {};

TEST_P(XmlBeyondALimit, IsRefusedWithRulePlaceAndReason) {
  const InvalidXMLDocument fault = faultOf(GetParam().make());

  EXPECT_EQ(fault.rule(), GetParam().rule) << fault.what();
  EXPECT_THAT(fault.what(), HasSubstr(GetParam().text));
  EXPECT_EQ(fault.line(), GetParam().line) << fault.what();
}

INSTANTIATE_TEST_SUITE_P(
    Limits, XmlBeyondALimit,
    testing::Values(LimitFault{"Depth", [] { return repeat("<a>", 257) + repeat("</a>", 257); },
                               "RB-11", "256 deep", 1},
                    LimitFault{"DepthOfAnEmptyTag",
                               [] { return repeat("<a>\n", 256) + "<a/>" + repeat("</a>", 256); },
                               "RB-11", "(line 257, column 1)", 257},
                    LimitFault{"DepthOfAHundredThousand", [] { return repeat("<a>", 100000); },
                               "RB-11", "256 deep", 1},
                    LimitFault{"AttributeLength",
                               [] { return "<a b='" + std::string((1u << 20) + 1, 'x') + "'/>"; },
                               "RB-10", "1048576 bytes", 1},
                    LimitFault{"AttributeLengthOfReferences",
                               [] { return "<a b='" + repeat("&#x1F600;", 1u << 19) + "'/>"; },
                               "RB-10", "1048576 bytes", 1},
                    LimitFault{"Nodes", [] { return "<a>" + repeat("<a/>", 1u << 21) + "</a>"; },
                               "RB-1", "2097152 elements", 1},
                    LimitFault{"CdataSections",
                               [] { return "<a>" + repeat("<![CDATA[]]>", 1u << 21) + "</a>"; },
                               "RB-1", "2097152 elements", 1},
                    LimitFault{"Size", [] { return "<a>" + std::string(64u << 20, ' ') + "</a>"; },
                               "RB-1", "67108864 bytes", 0}),
    [](const auto& test) { return std::string(test.param.name); });

std::string attributes(std::size_t count, const std::string& prefix) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) result += " " + prefix + std::to_string(i) + "=''";
  return result;
}

TEST(XercesParser, FourThousandAndNinetySixAttributesAreReadAndOneMoreIsNot) {
  const ParsedXml most("<a" + attributes(4096, "b") + "/>");
  const InvalidXMLDocument fault = faultOf("<a" + attributes(4097, "b") + "/>");

  EXPECT_EQ(most.root()->getAttributes()->getLength(), 4096u);
  EXPECT_EQ(fault.rule(), "RB-10");
}

TEST(XercesParser, TwoHundredFiftySixLevelsAreRead) {
  ParsedXml deep(repeat("<a>", 256) + "x" + repeat("</a>", 256) + "<!-- -->");

  EXPECT_EQ(deep.text(), u"x");
}

TEST(XercesParser, SiblingsDoNotCountAsDepth) {
  const ParsedXml flat("<a>" + repeat("<b><c/></b>", 1000) + "</a>");

  EXPECT_EQ(XercesHelper::getElements(flat.root(), u"b").size(), 1000u);
}

TEST(XercesParser, AMebibyteOfReferencesInAnAttributeIsRead) {
  const ParsedXml parsed("<a b='" + repeat("&amp;", 1u << 20) + "'/>");

  std::u16string value;
  EXPECT_TRUE(XercesHelper::getElementAttribute(parsed.root(), u"b", value));
  EXPECT_EQ(value, std::u16string(1u << 20, u'&'));
}

// Each of these takes the parser's linear searches from a fraction of a second to minutes.
class QuadraticXml : public testing::TestWithParam<int> {
 protected:
  static std::string document(int kind) {
    std::string xml = "<r>";
    for (int i = 0; i < 400000; ++i) {
      const std::string n = std::to_string(i);
      if (kind == 0) xml += "<e" + n + "/>";
      if (kind == 1) xml += "<p:e xmlns:p='u" + n + "'/>";
      if (kind == 2) xml += "<e a" + n + "=''/>";
    }
    if (kind == 3) xml = "<r>" + repeat("<e" + attributes(4096, "a") + "/>", 400);
    if (kind == 4) xml = "<r" + attributes(4096, "xmlns:p") + ">" + repeat("<e/>", 1000000);
    return xml + "</r>";
  }
};

TEST_P(QuadraticXml, IsRefusedBeforeItTakesLong) {
  const std::string xml = document(GetParam());

  const InvalidXMLDocument fault = faultOf(xml);

  EXPECT_EQ(fault.rule(), "RB-7") << fault.what();
}

INSTANTIATE_TEST_SUITE_P(Kinds, QuadraticXml, testing::Range(0, 5));

TEST(XercesParser, DocumentTypesAreRefusedWhateverTheEnvironmentSays) {
  ::setenv("XERCES_DISABLE_DTD", "0", 1);
  const InvalidXMLDocument fault = faultOf("<!DOCTYPE a><a/>");
  ::unsetenv("XERCES_DISABLE_DTD");

  EXPECT_EQ(fault.rule(), "XM-2");
}

TEST(XercesParser, AnExternalEntityIsNeverOpened) {
  const test::TemporaryFolder folder;
  test::writeFile(folder / "secret", "secret");
  const std::string path = (folder / "secret").string();

  const InvalidXMLDocument fault =
      faultOf("<!DOCTYPE a [<!ENTITY x SYSTEM 'file://" + path + "'>]><a>&x;</a>");

  EXPECT_EQ(fault.rule(), "XM-2");
  EXPECT_EQ(std::string(fault.what()).find("secret"), std::string::npos);
}

TEST(XercesParser, ASchemaLocationIsNotFollowed) {
  const ParsedXml parsed(
      "<a xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
      " xsi:schemaLocation='urn:a file:///nowhere.xsd'/>");

  EXPECT_EQ(parsed.root()->getNodeName(), std::u16string(u"a"));
}

struct Encoded {
  const char* name;
  std::string xml;
};

void PrintTo(const Encoded& encoded, std::ostream* out) {
  *out << encoded.name;
}

class ReadXml : public testing::TestWithParam<Encoded> {};

TEST_P(ReadXml, GivesTheText) {
  const ParsedXml parsed(GetParam().xml);

  EXPECT_EQ(parsed.text(), u"\u00E9\U0001F600");
}

const char16_t kBody16[] = u"<a>\u00E9\U0001F600</a>";

INSTANTIATE_TEST_SUITE_P(
    Encodings, ReadXml,
    testing::Values(
        Encoded{"Utf8", "<a>\xC3\xA9\xF0\x9F\x98\x80</a>"},
        Encoded{"Utf8WithMark", "\xEF\xBB\xBF<a>\xC3\xA9\xF0\x9F\x98\x80</a>"},
        Encoded{"Utf8Declared",
                "<?xml version='1.0' encoding='utf-8'?><a>\xC3\xA9\xF0\x9F\x98\x80</a>"},
        Encoded{"Utf8MarkedAndDeclared",
                "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8' standalone='yes'?>"
                "<a>\xC3\xA9\xF0\x9F\x98\x80</a>"},
        Encoded{"Utf16LittleEndian", "\xFF\xFE" + utf16Bytes(kBody16, false)},
        Encoded{"Utf16BigEndian", "\xFE\xFF" + utf16Bytes(kBody16, true)},
        Encoded{"Utf16Declared",
                "\xFE\xFF" +
                    utf16Bytes(std::u16string(u"<?xml version='1.0' encoding='Utf-16'?>") + kBody16,
                               true)},
        Encoded{"References", "<a>&#233;&#x1F600;</a>"},
        Encoded{"CommentsInstructionsAndCdata",
                "<?p x?><!--<a>--><a>\xC3\xA9<!-- > --><?q ><?><![CDATA[\xF0\x9F\x98\x80]]></a>"
                "<!-- --> \n<?p?>"}),
    [](const testing::TestParamInfo<Encoded>& test) { return test.param.name; });

TEST(XercesParser, MarkupInsideCommentsCdataAndValuesIsText) {
  const ParsedXml parsed(
      "<a b='>/' c=\"'-->\"><!-- <b> <!DOCTYPE x> --><![CDATA[<c><!DOCTYPE y>]]></a>");

  EXPECT_EQ(parsed.text(), u"<c><!DOCTYPE y>");
}

TEST(XercesParser, ALessThanSignInAValueIsNotWellFormed) {
  EXPECT_EQ(faultOf("<a b='<'/>").rule(), "XM-3");
}

TEST(XercesParser, CanBeUsedAgainAfterAFailure) {
  ParsedXml parsed("<a>first</a>");
  for (const char* bad : {"<a><b></a>", "<!DOCTYPE a><a/>", "<?xml version='1.1'?><a/>", ""}) {
    EXPECT_THROW(parsed.read(bad), InvalidXMLDocument);
  }

  parsed.read("<a>second</a>");

  EXPECT_EQ(parsed.text(), u"second");
}

class FailingInputStream final : public InputStream {
 public:
  std::size_t read(unsigned char* buffer, std::size_t) override {
    if (++reads_ > 1) throw Exception(ErrorCode::Damaged, "checksum of 'x' differs");
    buffer[0] = '<';
    return 1;
  }
  bool isEnd() override { return false; }

 private:
  int reads_ = 0;
};

TEST(XercesParser, AFailureOfTheStreamPassesUnchanged) {
  FailingInputStream stream;
  const ParserPointer parser = XercesHelper::createParser();

  try {
    XercesHelper::readDocumentFromStream(parser, stream, false, u"", u"");
    FAIL() << "it was read";
  } catch (const Exception& fault) {
    EXPECT_EQ(fault.code(), ErrorCode::Damaged);
    EXPECT_STREQ(fault.what(), "checksum of 'x' differs");
  }
}

class EndlessInputStream final : public InputStream {
 public:
  std::size_t read(unsigned char* buffer, std::size_t size) override {
    std::fill(buffer, buffer + size, static_cast<unsigned char>(' '));
    handedOut_ += size;
    return size;
  }
  bool isEnd() override { return false; }
  std::uint64_t handedOut() const { return handedOut_; }

 private:
  std::uint64_t handedOut_ = 0;
};

TEST(XercesParser, StopsReadingAtTheSizeLimit) {
  EndlessInputStream stream;
  const ParserPointer parser = XercesHelper::createParser();

  EXPECT_THROW(XercesHelper::readDocumentFromStream(parser, stream, false, u"", u""),
               InvalidXMLDocument);
  EXPECT_LE(stream.handedOut(), XercesHelper::kMaxDocumentSize + (1u << 20));
}

TEST(XercesParser, ValidationIsRefused) {
  ParsedXml parsed("<a/>");
  const ParserPointer parser = XercesHelper::createParser();
  MemoryInputStream stream(nullptr, 0);

  EXPECT_THROW(XercesHelper::readDocumentFromStream(parser, stream, true, u"", u""), Exception);
  EXPECT_THROW(XercesHelper::readDocumentFromStream(parser, stream, false, u"urn:a a.xsd", u""),
               Exception);
}

// Cut at every byte and changed at every byte: any outcome but a crash or a foreign exception.
TEST(XercesParser, SurvivesEveryCutAndEveryChangedByte) {
  const std::string xml =
      "<?xml version='1.0' encoding='UTF-8'?><!-- c --><a xmlns='urn:a' xmlns:p='urn:p' p:b='&lt;'>"
      "\xC3\xA9<p:c d=\"1\">&#x41;</p:c><![CDATA[<x>]]><?pi data?></a>\n";
  for (std::size_t at = 0; at < xml.size(); ++at) {
    faultOf(xml.substr(0, at));
    for (const char byte : {'\0', '<', '>', '/', '\'', '=', '&', '!', ' ', 'x', '\x80', '\xFF'}) {
      std::string changed = xml;
      changed[at] = byte;
      faultOf(changed);
    }
  }
  EXPECT_EQ(faultOf(xml).rule(), "none");
}

}  // namespace
}  // namespace opc::model
