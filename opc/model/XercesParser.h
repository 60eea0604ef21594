// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <xercesc/dom/DOM.hpp>

#include "opc/Streams.h"
#include "opc/model/XercesHelper.h"

namespace opc::model {

/// The parser behind XercesHelper::createParser. May be used again and again, after failures too.
class XercesParser {
 public:
  XercesParser();
  ~XercesParser();
  XercesParser(const XercesParser&) = delete;
  XercesParser& operator=(const XercesParser&) = delete;

  /// For text that was converted to UTF-8 just now: the encoding that its declaration names is what
  /// it had, or was to have, elsewhere, and is no longer compared with the bytes.
  void ignoreDeclaredEncoding() { comparesEncoding_ = false; }

  /// Parses all of `stream`. The document lives until the next parse or the parser's end. Throws
  /// InvalidXMLDocument, and what the stream throws; there is no document then.
  xercesc::DOMDocument* parse(InputStream& stream);

 private:
  DocumentPointer document_;
  bool comparesEncoding_ = true;
};

}  // namespace opc::model
