// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "opc/Streams.h"
#include "opc/model/XercesHelper.h"

namespace test {

/// Collects what is written to it.
class StringOutputStream final : public opc::OutputStream {
 public:
  void write(const unsigned char* data, std::size_t size) override {
    ++writes;
    text.append(reinterpret_cast<const char*>(data), size);
  }

  std::string text;
  int writes = 0;
};

/// A parser and the document that it read.
class ParsedXml {
 public:
  explicit ParsedXml(std::string_view xml) { read(xml); }

  xercesc::DOMDocument* read(std::string_view xml) {
    opc::MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
    document_ = nullptr;
    document_ =
        opc::model::XercesHelper::readDocumentFromStream(parser_, stream, false, u"", u"urn:any");
    return document_;
  }

  xercesc::DOMElement* root() const { return document_->getDocumentElement(); }

  std::u16string text() const {
    std::u16string value;
    opc::model::XercesHelper::getElementText(root(), value);
    return value;
  }

 private:
  opc::model::ParserPointer parser_ = opc::model::XercesHelper::createParser();
  xercesc::DOMDocument* document_ = nullptr;
};

/// What reading `xml` throws.
inline opc::model::InvalidXMLDocument faultOf(std::string_view xml) {
  try {
    ParsedXml parsed(xml);
  } catch (const opc::model::InvalidXMLDocument& fault) {
    return fault;
  }
  return {"it was read", 0, 0, "none"};
}

/// UTF-16 of `text` as bytes, without a mark.
inline std::string utf16Bytes(std::u16string_view text, bool bigEndian) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xFF);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

inline std::string repeat(std::string_view text, std::size_t count) {
  std::string result;
  result.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

}  // namespace test
