// SPDX-License-Identifier: MIT
#include "addon/packaging/XMLPartType.h"

#include <sstream>
#include <utility>

#include "fl/i18n/codecvt.h"
#include "opc/Streams.h"
#include "opc/model/XercesParser.h"

namespace addon::packaging {

using opc::model::XercesHelper;

XMLPartType::XMLPartType(std::u16string name, std::u16string type, std::u16string uri,
                         std::u16string relationship)
    : partName(std::move(name)),
      contentType(std::move(type)),
      namespaceURI(std::move(uri)),
      relationshipType(std::move(relationship)) {}

XMLPartType::~XMLPartType() = default;

// By value: the signature that callers already use.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void XMLPartType::populateFromXML(std::u16string xml) {
  const fl::i18n::codecvt_ustring_to_string toBytes("UTF-8", true);
  std::istringstream bytes(toBytes.convert(xml));
  opc::StdIStreamAdaptor stream(bytes);
  const opc::model::ParserPointer parser = XercesHelper::createParser();
  parser->ignoreDeclaredEncoding();
  populateFromDOM(XercesHelper::readDocumentFromStream(parser, stream, false, u"", u""));
}

std::u16string XMLPartType::getAsXMLString() {
  std::ostringstream bytes;
  opc::StdOStreamAdaptor stream(bytes);
  const opc::model::WriterPointer writer = XercesHelper::createWriter();
  opc::model::DocumentPointer document = XercesHelper::createDocument();
  document->setXmlStandalone(true);
  buildDOM(document);
  XercesHelper::writeDocumentToStream(writer, document, stream);
  document.reset();

  const fl::i18n::codecvt_string_to_ustring toText("UTF-8", true);
  return toText.convert(bytes.view());
}

}  // namespace addon::packaging
