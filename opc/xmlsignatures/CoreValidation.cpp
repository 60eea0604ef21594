// SPDX-License-Identifier: MIT
#include "opc/xmlsignatures/CoreValidation.h"

#include <libxml/parser.h>
#include <libxml/xmlIO.h>
#include <openssl/crypto.h>
#include <xmlsec/xmlsec.h>  // which the next one needs

#include <xmlsec/errors.h>
#include <xmlsec/io.h>
#include <xmlsec/keys.h>
#include <xmlsec/openssl/crypto.h>
#include <xmlsec/openssl/evp.h>
#include <xmlsec/transforms.h>
#include <xmlsec/xmldsig.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "opc/Exception.h"
#include "opc/xmlsignatures/MemoryWatch.h"

namespace opc::xmlsignatures {

namespace {

struct FreeContext {
  void operator()(xmlSecDSigCtx* context) const { xmlSecDSigCtxDestroy(context); }
};
using Context = std::unique_ptr<xmlSecDSigCtx, FreeContext>;

[[noreturn]] void throwOutOfMemory() {
  throw std::bad_alloc();
}

void requireSuccess(int result) {
  if (result < 0) throwOutOfMemory();
}

xmlParserInput* refuseToLoad(const char*, const char*, xmlParserCtxt*) {
  return nullptr;
}

std::array<xmlSecTransformId, 6> signatureMethods() {
  return {xmlSecOpenSSLTransformRsaSha256Id,   xmlSecOpenSSLTransformRsaSha384Id,
          xmlSecOpenSSLTransformRsaSha512Id,   xmlSecOpenSSLTransformEcdsaSha256Id,
          xmlSecOpenSSLTransformEcdsaSha384Id, xmlSecOpenSSLTransformEcdsaSha512Id};
}

std::array<xmlSecTransformId, 3> digests() {
  return {xmlSecOpenSSLTransformSha256Id, xmlSecOpenSSLTransformSha384Id,
          xmlSecOpenSSLTransformSha512Id};
}

/// With the only key, algorithms and kind of reference that may be used.
Context contextFor(EVP_PKEY& key) {
  Context context(xmlSecDSigCtxCreate(nullptr));
  if (!context) throwOutOfMemory();
  // Ids are looked up as they are, without XPointer, which is XPath.
  context->flags = XMLSEC_DSIG_FLAGS_IGNORE_MANIFESTS | XMLSEC_DSIG_FLAGS_USE_VISA3D_HACK;
  context->enabledReferenceUris = xmlSecTransformUriTypeSameDocument;
  context->keyInfoReadCtx.flags |= XMLSEC_KEYINFO_FLAGS_STOP_ON_UNKNOWN_CHILD;
  for (const auto& id : {xmlSecTransformInclC14NId, xmlSecTransformInclC14NWithCommentsId}) {
    requireSuccess(xmlSecDSigCtxEnableReferenceTransform(context.get(), id));
    requireSuccess(xmlSecDSigCtxEnableSignatureTransform(context.get(), id));
  }
  for (const auto& id : digests()) {
    requireSuccess(xmlSecDSigCtxEnableReferenceTransform(context.get(), id));
  }
  for (const auto& id : signatureMethods()) {
    requireSuccess(xmlSecDSigCtxEnableSignatureTransform(context.get(), id));
  }
  context->signKey = xmlSecKeyCreate();
  if (context->signKey == nullptr || EVP_PKEY_up_ref(&key) != 1) throwOutOfMemory();
  xmlSecKeyDataPtr value = xmlSecOpenSSLEvpKeyAdopt(&key);
  if (value == nullptr) EVP_PKEY_free(&key);
  if (value == nullptr || xmlSecKeySetValue(context->signKey, value) < 0) throwOutOfMemory();
  return context;
}

/// Whether the library has looked at exactly the references that were checked before.
bool areReferencesValid(xmlSecDSigCtx& context, const std::vector<std::string>& uris) {
  xmlSecPtrList* list = &context.signedInfoReferences;
  if (xmlSecPtrListGetSize(list) != uris.size()) return false;
  for (xmlSecSize i = 0; i < uris.size(); ++i) {
    const auto* one = static_cast<xmlSecDSigReferenceCtx*>(xmlSecPtrListGetItem(list, i));
    if (one->status != xmlSecDSigStatusSucceeded || toView(one->uri) != uris[i]) return false;
  }
  return true;
}

}  // namespace

void prepareLibrary() {
  watchOpenSsl();
  watchLibXml();
  MemoryWatch watch;
  // Before anything else uses OpenSSL: its configuration file may name code to load.
  OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
  xmlInitParser();
  xmlSetExternalEntityLoader(refuseToLoad);
  xmlSecErrorsDefaultCallbackEnableOutput(0);
  const bool isReady = xmlSecInit() >= 0 && xmlSecOpenSSLInit() >= 0;
  watch.requireMemory();
  if (!isReady) {
    throw Exception(ErrorCode::Unsupported, "the library for signatures cannot be used");
  }
  xmlSecIOCleanupCallbacks();
  xmlCleanupInputCallbacks();
}

bool isSupportedMethod(std::string_view method) {
  const auto methods = signatureMethods();
  return std::any_of(methods.begin(), methods.end(),
                     [&](xmlSecTransformId id) { return toView(id->href) == method; });
}

bool isCoreValid(const SignatureDocument& signature, EVP_PKEY& key) {
  const Context context = contextFor(key);
  const int result = xmlSecDSigCtxVerify(context.get(), signature.signature);
  return result == 0 && context->status == xmlSecDSigStatusSucceeded &&
         areReferencesValid(*context, signature.signedUris);
}

bool signCore(xmlNode& signature, EVP_PKEY& key) {
  const Context context = contextFor(key);
  const int result = xmlSecDSigCtxSign(context.get(), &signature);
  return result == 0 && context->status == xmlSecDSigStatusSucceeded;
}

}  // namespace opc::xmlsignatures
