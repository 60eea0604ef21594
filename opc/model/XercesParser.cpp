// SPDX-License-Identifier: MIT
#include "opc/model/XercesParser.h"

#include <xercesc/parsers/XercesDOMParser.hpp>

#include "opc/model/detail/StrictParser.h"
#include "opc/model/detail/XercesMemory.h"
#include "opc/model/detail/XmlLimits.h"

namespace opc::model {

namespace {

class DomParser final : public detail::StrictParser<xercesc::XercesDOMParser> {
 public:
  DomParser() {
    setCreateEntityReferenceNodes(false);
    setCreateCommentNodes(false);  // text on both sides of a comment is one text
  }
};

}  // namespace

XercesParser::XercesParser() {
  detail::startXerces();
}
XercesParser::~XercesParser() = default;

xercesc::DOMDocument* XercesParser::parse(InputStream& stream) {
  document_.reset();
  const std::string bytes = detail::readDocument(stream);
  const XmlText text(bytes);
  detail::checkXmlLimits(text.utf8());
  translatingXercesErrors("cannot read XML", [&] {
    detail::withKeptParser<DomParser>(text, [&](DomParser& parser) {
      parser.parseText(text, comparesEncoding_);
      document_.reset(parser.adoptDocument());
      parser.resetDocumentPool();
    });
  });
  return document_.get();
}

}  // namespace opc::model
