// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "opc/model/DocumentPieces.h"

namespace opc::model::detail {

/// Receives what markup compatibility leaves of a document, in document order.
class MarkupConsumer {
 public:
  virtual ~MarkupConsumer() = default;

  /// `attributes` without namespace declarations and without what is ignored.
  virtual void startElement(const XmlNode& element,
                            const std::vector<const XmlAttribute*>& attributes) = 0;
  virtual void endElement() = 0;
  virtual void characters(std::u16string_view text) = 0;
};

/// Applies markup compatibility (ISO/IEC 29500-3) to a document for a reader that understands one
/// namespace only. Ignorable elements and attributes are left out, AlternateContent is replaced by
/// the branch that applies. Throws FormatError (RL-13) for what must be understood and is not, and
/// for markup that breaks the rules of compatibility; it is for nothing else then.
class MarkupProcessor {
 public:
  /// `consumer` must outlive it.
  MarkupProcessor(std::u16string_view understoodNamespace, MarkupConsumer& consumer);
  ~MarkupProcessor();
  MarkupProcessor(const MarkupProcessor&) = delete;
  MarkupProcessor& operator=(const MarkupProcessor&) = delete;

  /// To be called once, first; the root must outlive this.
  void startRoot(const XmlNode& root);
  /// For each child of the root, in order. It need not stay.
  void takeChild(const XmlNode& child);

 private:
  class State;
  std::unique_ptr<State> state_;
};

}  // namespace opc::model::detail
