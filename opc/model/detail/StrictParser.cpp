// SPDX-License-Identifier: MIT
#include "opc/model/detail/StrictParser.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "opc/model/XercesHelper.h"

namespace opc::model::detail {

std::string readDocument(InputStream& stream) {
  constexpr std::size_t kBlockSize = 32768;
  std::string bytes;
  // Not on the stack, which may be small in a host's thread; not zeroed, as that would take longer
  // than reading a short document.
  const auto block = std::make_unique_for_overwrite<unsigned char[]>(kBlockSize);
  while (const std::size_t count = stream.read(block.get(), kBlockSize)) {
    if (count > XercesHelper::kMaxDocumentSize - bytes.size()) {
      throw InvalidXMLDocument("the document is longer than " +
                                   std::to_string(XercesHelper::kMaxDocumentSize) + " bytes",
                               0, 0, "RB-1");
    }
    const std::size_t needed = bytes.size() + count;
    if (needed > bytes.capacity()) {
      bytes.reserve(std::min<std::size_t>(std::max(needed, bytes.capacity() * 2),
                                          XercesHelper::kMaxDocumentSize));
    }
    bytes.append(reinterpret_cast<const char*>(block.get()), count);
  }
  return bytes;
}

void StoppingErrorHandler::fail(const xercesc::SAXParseException& fault) {
  throw InvalidXMLDocument("not well-formed: " + xercesMessage(fault.getMessage()),
                           fault.getLineNumber(), fault.getColumnNumber(), "XM-3");
}

xercesc::InputSource* RefusingEntityResolver::resolveEntity(const XMLCh*, const XMLCh* systemId) {
  throw InvalidXMLDocument("external entity '" + xercesMessage(systemId) + "' is not allowed", 0, 0,
                           "RB-9");
}

}  // namespace opc::model::detail
