// SPDX-License-Identifier: MIT
#include "opc/model/detail/DocumentSize.h"

#include "opc/model/InvalidXMLDocument.h"
#include "opc/model/XercesHelper.h"
#include "opc/model/detail/XmlLimits.h"

namespace opc::model::detail {
namespace {

bool hasRoom(std::uint64_t taken, std::uint64_t more, std::uint64_t limit) {
  return taken <= limit && more <= limit - taken;
}

}  // namespace

void DocumentSize::add(const ElementSize& entry) {
  taken_.bytes += entry.bytes;
  taken_.nodes += entry.nodes;
}

void DocumentSize::remove(const ElementSize& entry) {
  taken_.bytes -= entry.bytes;
  taken_.nodes -= entry.nodes;
}

bool DocumentSize::hasRoomFor(const ElementSize& entry) const {
  return hasRoom(taken_.bytes, entry.bytes, XercesHelper::kMaxDocumentSize) &&
         hasRoom(taken_.nodes, entry.nodes, XercesHelper::kMaxNodes);
}

bool isReadableLength(std::size_t length) {
  return length <= XercesHelper::kMaxAttributeLength;
}

Exception unreadableLength(const std::string& what, std::size_t length) {
  return {ErrorCode::TooLarge, what + " has " + std::to_string(length) + " bytes, more than the " +
                                   std::to_string(XercesHelper::kMaxAttributeLength) +
                                   " that are read"};
}

Exception noRoom(const std::string& what) {
  return {ErrorCode::TooLarge, what + ": there is no room for it in the " +
                                   std::to_string(XercesHelper::kMaxDocumentSize) + " bytes and " +
                                   std::to_string(XercesHelper::kMaxNodes) +
                                   " elements and attributes that are read of one document"};
}

void requireReadableDocument(std::string_view xml, const std::string& what) {
  if (xml.size() > XercesHelper::kMaxDocumentSize) {
    throw Exception(ErrorCode::TooLarge,
                    what + ": it has " + std::to_string(xml.size()) + " bytes, more than the " +
                        std::to_string(XercesHelper::kMaxDocumentSize) + " that are read");
  }
  try {
    checkXmlLimits(xml);
  } catch (const InvalidXMLDocument& fault) {
    throw Exception(ErrorCode::TooLarge, what + ": " + fault.what());
  }
}

}  // namespace opc::model::detail
