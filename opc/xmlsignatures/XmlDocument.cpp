// SPDX-License-Identifier: MIT
#include "opc/xmlsignatures/XmlDocument.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <openssl/evp.h>

#include <algorithm>
#include <limits>

#include "opc/Exception.h"

namespace opc::xmlsignatures {

namespace {

struct FreeParser {
  void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
};
using Parser = std::unique_ptr<xmlParserCtxt, FreeParser>;

Exception invalid(const std::string& why) {
  return {ErrorCode::InvalidXml, why};
}

// Called at the beginning of a document type, before anything in it is read.
void refuseDoctype(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  auto* parser = static_cast<xmlParserCtxt*>(context);
  *static_cast<bool*>(parser->_private) = true;
  xmlStopParser(parser);
}

bool isUnicode(const xmlDoc& document) {
  if (document.encoding == nullptr) return true;
  std::string name(toView(document.encoding));
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
  return name == "UTF-8" || name.starts_with("UTF-16");
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

bool isText(const xmlNode* node) {
  return node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
}

std::string describe(const xmlNode* node) {
  return "its element '" + std::string(nameOf(node)) + "'";
}

}  // namespace

std::string_view toView(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

Document parse(std::string_view xml) {
  if (xml.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw invalid("it is too large");
  }
  const Parser parser(xmlNewParserCtxt());
  if (!parser) throw std::bad_alloc();
  bool hasDoctype = false;
  parser->_private = &hasDoctype;
  parser->sax->internalSubset = refuseDoctype;
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  Document document(xmlCtxtReadMemory(parser.get(), xml.data(), static_cast<int>(xml.size()),
                                      nullptr, nullptr, kOptions));
  if (hasDoctype) throw invalid("it has a document type declaration");
  if (!document || parser->wellFormed == 0) throw invalid("it is not well-formed");
  if (document->intSubset != nullptr) throw invalid("it has a document type declaration");
  if (!isUnicode(*document)) throw invalid("its encoding is neither UTF-8 nor UTF-16");
  return document;
}

bool isNamed(const xmlNode* node, std::string_view space, std::string_view name) {
  return node->type == XML_ELEMENT_NODE && node->ns != nullptr && toView(node->ns->href) == space &&
         nameOf(node) == name;
}

std::string_view nameOf(const xmlNode* node) {
  return toView(node->name);
}

std::string attributeOf(const xmlNode* node, const char* name) {
  xmlChar* value = xmlGetNoNsProp(node, reinterpret_cast<const xmlChar*>(name));
  if (value == nullptr) return {};
  std::string text(toView(value));
  xmlFree(value);
  return text;
}

std::vector<xmlNode*> elementsOf(const xmlNode* node) {
  std::vector<xmlNode*> elements;
  for (xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (child->type == XML_ELEMENT_NODE) {
      elements.push_back(child);
    } else if (!isText(child) || !isBlank(toView(child->content))) {
      throw Refusal{describe(node) + " holds something else than elements"};
    }
  }
  return elements;
}

std::string textOf(const xmlNode* node) {
  std::string text;
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (!isText(child)) throw Refusal{describe(node) + " holds something else than text"};
    text += toView(child->content);
  }
  return text;
}

void allowAttributes(const xmlNode* node, std::initializer_list<std::string_view> names) {
  for (const xmlAttr* attribute = node->properties; attribute != nullptr;
       attribute = attribute->next) {
    const std::string_view name = toView(attribute->name);
    const bool isKnown = std::find(names.begin(), names.end(), name) != names.end();
    if (attribute->ns == nullptr && isKnown) continue;
    throw Refusal{describe(node) + " has an attribute '" + std::string(name) + "'"};
  }
}

std::string base64Of(const xmlNode* node) {
  std::string text = textOf(node);
  std::erase_if(text, [](char c) { return isBlank({&c, 1}); });
  const std::size_t padding = text.size() - std::min(text.find_last_not_of('=') + 1, text.size());
  std::string bytes(text.size() / 4 * 3, '\0');
  const int size =
      text.size() % 4 != 0 || text.empty() || padding > 2 || text.size() > (std::size_t{1} << 30)
          ? -1
          : EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                            reinterpret_cast<const unsigned char*>(text.data()),
                            static_cast<int>(text.size()));
  if (size < 0 || static_cast<std::size_t>(size) < padding) {
    throw Refusal{describe(node) + " is not in Base64"};
  }
  bytes.resize(static_cast<std::size_t>(size) - padding);
  return bytes;
}

std::string toBase64(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
  const int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                   reinterpret_cast<const unsigned char*>(bytes.data()),
                                   static_cast<int>(bytes.size()));
  text.resize(static_cast<std::size_t>(size));
  return text;
}

void appendAttribute(std::string& xml, std::string_view name, std::string_view value) {
  xml += ' ';
  xml += name;
  xml += "=\"";
  for (const char c : value) {
    switch (c) {
      case '&':
        xml += "&amp;";
        break;
      case '<':
        xml += "&lt;";
        break;
      case '"':
        xml += "&quot;";
        break;
      case '\t':
        xml += "&#x9;";
        break;
      case '\n':
        xml += "&#xA;";
        break;
      case '\r':
        xml += "&#xD;";
        break;
      default:
        xml += c;
    }
  }
  xml += '"';
}

}  // namespace opc::xmlsignatures
