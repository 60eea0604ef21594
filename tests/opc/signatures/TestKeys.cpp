// SPDX-License-Identifier: MIT
#include "tests/opc/signatures/TestKeys.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <span>
#include <stdexcept>

#include "opc/signatures/XmlSignatureLibrary.h"

namespace test {

namespace {

template <typename Object, typename Free>
std::unique_ptr<Object, Free> owned(Object* object, Free free) {
  if (object == nullptr) throw std::runtime_error("OpenSSL cannot make a key");
  return {object, free};
}

std::string textOf(BIO& bio) {
  char* text = nullptr;
  const long size = BIO_get_mem_data(&bio, &text);
  return {text, static_cast<std::size_t>(size)};
}

std::span<const unsigned char> bytesOf(const std::string& text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

}  // namespace

TestKeys::TestKeys(const std::string& name) {
  const auto pair = owned(EVP_EC_gen("P-256"), EVP_PKEY_free);
  const auto made = owned(X509_new(), X509_free);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(made.get()), "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(name.c_str()), -1, -1, 0);
  X509_set_issuer_name(made.get(), X509_get_subject_name(made.get()));
  X509_set_version(made.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(made.get()), 1);
  ASN1_TIME_set(X509_getm_notBefore(made.get()), kValidFrom);
  ASN1_TIME_set(X509_getm_notAfter(made.get()), kValidUntil);
  X509_set_pubkey(made.get(), pair.get());
  X509_sign(made.get(), pair.get(), EVP_sha256());

  const auto keyText = owned(BIO_new(BIO_s_mem()), BIO_free);
  PEM_write_bio_PrivateKey(keyText.get(), pair.get(), nullptr, nullptr, 0, nullptr, nullptr);
  key = textOf(*keyText);
  const auto certificateText = owned(BIO_new(BIO_s_mem()), BIO_free);
  PEM_write_bio_X509(certificateText.get(), made.get());
  certificate = textOf(*certificateText);
}

std::shared_ptr<const opc::interfaces::ISigner> TestKeys::signer() const {
  opc::interfaces::KeyFiles files;
  files.keyName = "test.key";
  files.certificateName = "test.pem";
  files.key = bytesOf(key);
  files.certificates = bytesOf(certificate);
  return opc::signatures::xmlSignatures().openSigner(files, kSigningTime);
}

std::unique_ptr<opc::interfaces::ITrustAnchors> TestKeys::anchors() const {
  std::unique_ptr<opc::interfaces::ITrustAnchors> anchors;
  opc::signatures::xmlSignatures().addAnchors(anchors, "test.pem", certificate);
  return anchors;
}

}  // namespace test
