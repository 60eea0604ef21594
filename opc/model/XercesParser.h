// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <xercesc/dom/DOM.hpp>

#include "opc/Streams.h"
#include "opc/model/XercesHelper.h"

namespace opc::model {

/// Takes a document in pieces, so that it never is in memory as a whole DOM.
class DocumentPieces {
 public:
  virtual ~DocumentPieces() = default;

  /// The root element with its attributes; its content is not there.
  virtual void startRoot(const xercesc::DOMElement& root) = 0;
  /// A child of the root with all that is below it, in document order. It is gone after the call.
  /// Long text may come as several nodes.
  virtual void takeChild(const xercesc::DOMNode& child) = 0;
};

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

  /// Parses all of `stream` and hands it to `pieces` meanwhile, which may throw. Refuses a child of
  /// the root, and a comment, of more than kMaxPieceSize bytes or kMaxPieceNodes nodes.
  static void parse(InputStream& stream, DocumentPieces& pieces);
  static constexpr std::size_t kMaxPieceSize = 4u << 20;
  static constexpr std::size_t kMaxPieceNodes = 1u << 16;

 private:
  class DomParser;
  class PieceParser;

  std::unique_ptr<DomParser> parser_;
  bool comparesEncoding_ = true;
};

}  // namespace opc::model
