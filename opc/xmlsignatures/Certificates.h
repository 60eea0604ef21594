// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "opc/interfaces/IXmlSignatures.h"

namespace opc::xmlsignatures {

struct OpenSslDeleter {
  void operator()(X509* object) const { X509_free(object); }
  void operator()(EVP_PKEY* object) const { EVP_PKEY_free(object); }
  void operator()(BIO* object) const { BIO_free(object); }
};
using Certificate = std::unique_ptr<X509, OpenSslDeleter>;
using Key = std::unique_ptr<EVP_PKEY, OpenSslDeleter>;
using Bio = std::unique_ptr<BIO, OpenSslDeleter>;

struct TrustAnchors final : interfaces::ITrustAnchors {
  std::vector<Certificate> certificates;
};

/// Returns null if it is none.
Certificate fromDer(std::string_view der);
/// Every certificate of a file in PEM, in order. Nothing if one of them cannot be read.
std::vector<Certificate> fromPem(std::span<const unsigned char> pem);
std::string toDer(const X509& certificate);

/// The bytes of a file, which must outlive it.
Bio readerOf(std::span<const unsigned char> bytes);

interfaces::CertificateInfo describe(const X509& certificate);

/// Moves to the front the one that none of the others was issued by.
void putSignerFirst(std::vector<Certificate>& certificates);

/// Whether a key may make signatures.
struct KeyVerdict {
  interfaces::SignatureState state;  ///< Valid, Weak or Unsupported
  std::string reason;
};
KeyVerdict judgeKey(const EVP_PKEY& key);
/// Whether the certificate says that it may be used for signatures, or nothing of it.
bool mayMakeSignatures(X509& certificate);
bool isValidAt(const X509& certificate, std::int64_t time);

/// Why the chain of the first certificate reaches none of the anchors at that time; nothing if it
/// does.
std::optional<std::string> findDistrust(const std::vector<Certificate>& chain,
                                        const TrustAnchors& anchors, std::int64_t time);

}  // namespace opc::xmlsignatures
