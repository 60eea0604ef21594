// SPDX-License-Identifier: MIT
#include "opc/xmlsignatures/MemoryWatch.h"

#include <libxml/globals.h>
#include <libxml/xmlmemory.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <new>

namespace opc::xmlsignatures {

namespace {

// Of all threads: where one lacks memory, the others do, too.
std::atomic<unsigned> shortages = 0;

void noteXmlError(void*, xmlErrorPtr error) {
  if (error->code == XML_ERR_NO_MEMORY) ++shortages;
}

// What libxml2 prints, without a code, is that it has no memory for one of its lists.
void notePrinted(void*, const char*, ...) {
  ++shortages;
}

// How the memory of libxml2, which libxmlsec1 uses as well, was managed before.
xmlFreeFunc freeXml = nullptr;
xmlMallocFunc allocateXml = nullptr;
xmlMallocFunc allocateXmlText = nullptr;
xmlReallocFunc resizeXml = nullptr;
xmlStrdupFunc copyXml = nullptr;

template <typename Item>
Item* noted(Item* block) {
  if (block == nullptr) ++shortages;
  return block;
}

// OpenSSL's memory. It may hold keys, so it is cleared before it is given back; its size is before
// it.
constexpr std::size_t kHeader = alignof(std::max_align_t);

void* allocate(std::size_t size, const char*, int) {
  if (size == 0) return nullptr;
  auto* block = static_cast<unsigned char*>(::operator new(size + kHeader, std::nothrow));
  if (block == nullptr) {
    ++shortages;
    return nullptr;
  }
  std::memcpy(block, &size, sizeof size);
  return block + kHeader;
}

std::size_t sizeOf(const void* bytes) {
  std::size_t size = 0;
  if (bytes != nullptr) {
    std::memcpy(&size, static_cast<const unsigned char*>(bytes) - kHeader, sizeof size);
  }
  return size;
}

void release(void* bytes, const char*, int) {
  if (bytes == nullptr) return;
  ::explicit_bzero(bytes, sizeOf(bytes));
  ::operator delete(static_cast<unsigned char*>(bytes) - kHeader);
}

void* resize(void* bytes, std::size_t size, const char* file, int line) {
  void* larger = allocate(size, file, line);
  if (larger == nullptr && size != 0) return nullptr;
  if (larger != nullptr && bytes != nullptr) {
    std::memcpy(larger, bytes, std::min(size, sizeOf(bytes)));
  }
  release(bytes, file, line);
  return larger;
}

}  // namespace

MemoryWatch::MemoryWatch()
    : before_(shortages),
      errorContext_(xmlStructuredErrorContext),
      errorHandler_(xmlStructuredError),
      printContext_(xmlGenericErrorContext),
      printer_(xmlGenericError) {
  ERR_clear_error();
  xmlSetStructuredErrorFunc(nullptr, noteXmlError);
  xmlSetGenericErrorFunc(nullptr, notePrinted);
}

MemoryWatch::~MemoryWatch() {
  xmlSetStructuredErrorFunc(errorContext_, errorHandler_);
  xmlSetGenericErrorFunc(printContext_, printer_);
}

void MemoryWatch::requireMemory() {
  while (const unsigned long error = ERR_get_error()) {
    if (ERR_GET_REASON(error) == ERR_R_MALLOC_FAILURE) ++shortages;
  }
  if (shortages != before_) throw std::bad_alloc();
}

void watchOpenSsl() {
  CRYPTO_set_mem_functions(allocate, resize, release);
}

void watchLibXml() {
  if (freeXml != nullptr) return;
  xmlGcMemGet(&freeXml, &allocateXml, &allocateXmlText, &resizeXml, &copyXml);
  xmlGcMemSetup(
      freeXml, [](std::size_t size) { return noted(allocateXml(size)); },
      [](std::size_t size) { return noted(allocateXmlText(size)); },
      [](void* block, std::size_t size) {
        // With a size of 0 it frees the block and may return null.
        return size == 0 ? resizeXml(block, size) : noted(resizeXml(block, size));
      },
      [](const char* text) { return noted(copyXml(text)); });
}

}  // namespace opc::xmlsignatures
