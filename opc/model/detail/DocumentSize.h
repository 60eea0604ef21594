// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "opc/Exception.h"

namespace opc::model::detail {

/// What an element takes of a document: bytes, and itself and its attributes as nodes.
struct ElementSize {
  std::uint64_t bytes = 0;
  std::uint64_t nodes = 0;
};

/// How much of what is read of one document (see XercesHelper) a document takes that is to be
/// written, kept while entries come and go.
class DocumentSize {
 public:
  /// Of the document without entries.
  explicit DocumentSize(const ElementSize& frame) : taken_(frame) {}

  void add(const ElementSize& entry);
  void remove(const ElementSize& entry);
  bool hasRoomFor(const ElementSize& entry) const;

 private:
  ElementSize taken_;
};

/// Whether an attribute's value of that many bytes in UTF-8 can be read back.
bool isReadableLength(std::size_t length);

/// ErrorCode::TooLarge: "`what` has N bytes, ...", and "`what`: there is no room ...".
Exception unreadableLength(const std::string& what, std::size_t length);
Exception noRoom(const std::string& what);

/// Throws ErrorCode::TooLarge, naming `what`, for a document that could not be read back.
void requireReadableDocument(std::string_view xml, const std::string& what);

}  // namespace opc::model::detail
