// SPDX-License-Identifier: MIT
#pragma once

#include <libxml/xmlerror.h>

#include "opc/Exception.h"

namespace opc::xmlsignatures {

/// Notices when one of the libraries runs out of memory, which they report like any other failure.
/// libxml2 prints nothing on this thread meanwhile.
class MemoryWatch {
 public:
  MemoryWatch();
  ~MemoryWatch();
  MemoryWatch(const MemoryWatch&) = delete;
  MemoryWatch& operator=(const MemoryWatch&) = delete;

  /// Throws std::bad_alloc if there was not enough memory. Forgets OpenSSL's errors.
  void requireMemory();

 private:
  unsigned before_;
  // What the thread had before.
  void* errorContext_;
  xmlStructuredErrorFunc errorHandler_;
  void* printContext_;
  xmlGenericErrorFunc printer_;
};

/// What `body` returns. Throws std::bad_alloc if a library ran out of memory.
template <typename Body>
auto withMemory(const Body& body) {
  MemoryWatch watch;
  try {
    auto result = body();
    watch.requireMemory();
    return result;
  } catch (const Exception&) {
    watch.requireMemory();
    throw;
  }
}

/// Lets the watch see OpenSSL's allocations, some of whose failures it does not report, and clears
/// what it gives back. Does nothing if OpenSSL was used before.
void watchOpenSsl();
/// Lets the watch see the allocations of libxml2 and libxmlsec1, which do not report all failures,
/// and some of them as another fault.
void watchLibXml();

}  // namespace opc::xmlsignatures
