// SPDX-License-Identifier: MIT
#include "opc/signatures/XmlSignatureLibrary.h"

#include <dlfcn.h>

#include <string>

#include "opc/Exception.h"

namespace opc::signatures {

using interfaces::IXmlSignatures;

namespace {

/// A bare name: the loader finds it by the program's own search path.
constexpr const char* kLibrary = "libkraddon_xmlsignatures.so";
constexpr const char* kFunction = "kraddonXmlSignatures1";

const IXmlSignatures& load() {
  const auto fail = [] {
    const char* error = ::dlerror();
    return Exception(ErrorCode::Unsupported,
                     sentence("cannot load the library for signatures", kLibrary,
                              error == nullptr ? "the loader gives no reason" : error));
  };
  void* library = ::dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw fail();
  using Function = const IXmlSignatures* (*)();
  const auto function = reinterpret_cast<Function>(::dlsym(library, kFunction));
  if (function == nullptr) throw fail();
  return *function();
}

}  // namespace

const IXmlSignatures& xmlSignatures() {
  static const IXmlSignatures& library = load();
  return library;
}

}  // namespace opc::signatures
