// SPDX-License-Identifier: MIT
#include "opc/xmlsignatures/Certificates.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509_vfy.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <limits>

namespace opc::xmlsignatures {

using interfaces::CertificateInfo;
using interfaces::SignatureState;

namespace {

std::string contentOf(BIO& bio) {
  char* text = nullptr;
  const long size = BIO_get_mem_data(&bio, &text);
  return {text, static_cast<std::size_t>(size)};
}

/// As in RFC 2253, but readable.
std::string nameText(const X509_NAME* name) {
  const Bio bio(BIO_new(BIO_s_mem()));
  if (!bio) throw std::bad_alloc();
  constexpr unsigned long kFlags =
      XN_FLAG_RFC2253 & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB);
  X509_NAME_print_ex(bio.get(), name, 0, kFlags);
  return contentOf(*bio);
}

std::string toHex(std::span<const unsigned char> bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::int64_t secondsOf(const ASN1_TIME* time) {
  std::tm parts{};
  if (ASN1_TIME_to_tm(time, &parts) != 1) return 0;
  namespace chrono = std::chrono;
  const chrono::year_month_day date{chrono::year(parts.tm_year + 1900),
                                    chrono::month(static_cast<unsigned>(parts.tm_mon + 1)),
                                    chrono::day(static_cast<unsigned>(parts.tm_mday))};
  return chrono::sys_days(date).time_since_epoch().count() * std::int64_t{86400} +
         parts.tm_hour * std::int64_t{3600} + parts.tm_min * std::int64_t{60} + parts.tm_sec;
}

bool isIssuer(X509& issuer, X509& certificate) {
  return X509_NAME_cmp(X509_get_subject_name(&issuer), X509_get_issuer_name(&certificate)) == 0;
}

struct FreeVerification {
  void operator()(X509_STORE* object) const { X509_STORE_free(object); }
  void operator()(X509_STORE_CTX* object) const { X509_STORE_CTX_free(object); }
  void operator()(STACK_OF(X509) * object) const { sk_X509_free(object); }
};

template <typename Object>
std::unique_ptr<Object, FreeVerification> owned(Object* object) {
  if (object == nullptr) throw std::bad_alloc();
  return std::unique_ptr<Object, FreeVerification>(object);
}

}  // namespace

Certificate fromDer(std::string_view der) {
  if (der.size() > (std::size_t{1} << 20)) return nullptr;
  const auto* bytes = reinterpret_cast<const unsigned char*>(der.data());
  const unsigned char* end = bytes + der.size();
  Certificate certificate(d2i_X509(nullptr, &bytes, static_cast<long>(der.size())));
  if (bytes != end) return nullptr;
  return certificate;
}

Bio readerOf(std::span<const unsigned char> bytes) {
  const auto size = std::min<std::size_t>(bytes.size(), std::numeric_limits<int>::max());
  Bio bio(BIO_new_mem_buf(bytes.data(), static_cast<int>(size)));
  if (!bio) throw std::bad_alloc();
  return bio;
}

std::vector<Certificate> fromPem(std::span<const unsigned char> pem) {
  std::vector<Certificate> certificates;
  const Bio bio = readerOf(pem);
  for (;;) {
    Certificate one(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
    if (!one) break;
    certificates.push_back(std::move(one));
  }
  const auto error = ERR_peek_last_error();
  const bool isEnd =
      ERR_GET_LIB(error) == ERR_LIB_PEM && ERR_GET_REASON(error) == PEM_R_NO_START_LINE;
  if (!isEnd) certificates.clear();
  return certificates;
}

std::string toDer(const X509& certificate) {
  unsigned char* bytes = nullptr;
  const int size = i2d_X509(&certificate, &bytes);
  if (size < 0) throw std::bad_alloc();
  std::string der(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  OPENSSL_free(bytes);
  return der;
}

CertificateInfo describe(const X509& certificate) {
  CertificateInfo info;
  info.subject = nameText(X509_get_subject_name(&certificate));
  info.issuer = nameText(X509_get_issuer_name(&certificate));
  const ASN1_INTEGER* serial = X509_get0_serialNumber(&certificate);
  info.serial =
      toHex({ASN1_STRING_get0_data(serial), static_cast<std::size_t>(ASN1_STRING_length(serial))});
  std::array<unsigned char, EVP_MAX_MD_SIZE> hash{};
  unsigned size = 0;
  X509_digest(&certificate, EVP_sha256(), hash.data(), &size);
  info.fingerprint = toHex({hash.data(), size});
  info.notBefore = secondsOf(X509_get0_notBefore(&certificate));
  info.notAfter = secondsOf(X509_get0_notAfter(&certificate));
  return info;
}

void putSignerFirst(std::vector<Certificate>& certificates) {
  const auto isLeaf = [&](const Certificate& one) {
    return std::none_of(certificates.begin(), certificates.end(), [&](const Certificate& other) {
      return &other != &one && isIssuer(*one, *other);
    });
  };
  const auto leaf = std::find_if(certificates.begin(), certificates.end(), isLeaf);
  if (leaf != certificates.end()) std::rotate(certificates.begin(), leaf, leaf + 1);
}

KeyVerdict judgeKey(const EVP_PKEY& key) {
  constexpr int kMinBits = 2048;
  if (EVP_PKEY_is_a(&key, "RSA") == 1) {
    const int bits = EVP_PKEY_get_bits(&key);
    if (bits >= kMinBits) return {SignatureState::Valid, {}};
    return {SignatureState::Weak, "its RSA key has " + std::to_string(bits) + " bits, fewer than " +
                                      std::to_string(kMinBits)};
  }
  if (EVP_PKEY_is_a(&key, "EC") != 1) {
    return {SignatureState::Unsupported, "its key is neither RSA nor ECDSA"};
  }
  std::array<char, 64> curve{};
  EVP_PKEY_get_group_name(&key, curve.data(), curve.size(), nullptr);
  for (const std::string_view name : {"prime256v1", "secp384r1", "secp521r1"}) {
    if (name == curve.data()) return {SignatureState::Valid, {}};
  }
  const bool isShort = EVP_PKEY_get_bits(&key) < 256;
  return {isShort ? SignatureState::Weak : SignatureState::Unsupported,
          "the curve of its key is not P-256, P-384 or P-521"};
}

bool mayMakeSignatures(X509& certificate) {
  return (X509_get_key_usage(&certificate) & (KU_DIGITAL_SIGNATURE | KU_NON_REPUDIATION)) != 0;
}

bool isValidAt(const X509& certificate, std::int64_t time) {
  std::time_t moment = time;
  return X509_cmp_time(X509_get0_notBefore(&certificate), &moment) < 0 &&
         X509_cmp_time(X509_get0_notAfter(&certificate), &moment) > 0;
}

std::optional<std::string> findDistrust(const std::vector<Certificate>& chain,
                                        const TrustAnchors& anchors, std::int64_t time) {
  const auto store = owned(X509_STORE_new());
  for (const Certificate& anchor : anchors.certificates) {
    X509_STORE_add_cert(store.get(), anchor.get());
  }
  const auto others = owned(sk_X509_new_null());
  for (const Certificate& one : chain) sk_X509_push(others.get(), one.get());
  const auto context = owned(X509_STORE_CTX_new());
  if (X509_STORE_CTX_init(context.get(), store.get(), chain.front().get(), others.get()) != 1) {
    throw std::bad_alloc();
  }
  X509_VERIFY_PARAM* parameters = X509_STORE_CTX_get0_param(context.get());
  X509_VERIFY_PARAM_set_time(parameters, time);
  X509_VERIFY_PARAM_set_flags(parameters, X509_V_FLAG_PARTIAL_CHAIN);
  X509_VERIFY_PARAM_set_auth_level(parameters, 2);  // keys and digests of 112 bits
  X509_VERIFY_PARAM_set_depth(parameters, 16);
  const int result = X509_verify_cert(context.get());
  const int error = X509_STORE_CTX_get_error(context.get());
  if (result != 1) return std::string(X509_verify_cert_error_string(error));
  if (!mayMakeSignatures(*chain.front())) return "its certificate is not for signatures";
  return std::nullopt;
}

}  // namespace opc::xmlsignatures
