// SPDX-License-Identifier: MIT
#include "opc/xmlsignatures/Signer.h"

#include <libxml/parser.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>

#include <algorithm>

#include "opc/Exception.h"
#include "opc/xmlsignatures/Certificates.h"
#include "opc/xmlsignatures/CoreValidation.h"
#include "opc/xmlsignatures/MemoryWatch.h"
#include "opc/xmlsignatures/Names.h"
#include "opc/xmlsignatures/SignatureTime.h"
#include "opc/xmlsignatures/XmlDocument.h"

namespace opc::xmlsignatures {

using interfaces::CertificateInfo;
using interfaces::ISigner;
using interfaces::KeyFiles;
using interfaces::SignatureState;
using interfaces::SignedPart;

namespace {

constexpr std::string_view kSignatureId = "idPackageSignature";

struct Identity {
  Key key;
  std::vector<Certificate> certificates;  // the signer's first
};

Exception unusable(std::string_view what, const std::string& name, const std::string& why,
                   ErrorCode code = ErrorCode::InvalidArgument) {
  return {code, sentence("cannot use " + std::string(what), name, why)};
}

/// What is asked for the passphrase of a key.
struct Passphrase {
  const std::string* given;
  bool wasWanted = false;
};

int givePassphrase(char* buffer, int size, int, void* data) {
  auto* passphrase = static_cast<Passphrase*>(data);
  passphrase->wasWanted = true;
  if (passphrase->given == nullptr) return -1;
  const std::string& text = *passphrase->given;
  if (text.size() > static_cast<std::size_t>(size)) return -1;
  std::copy(text.begin(), text.end(), buffer);
  return static_cast<int>(text.size());
}

Exception locked(const KeyFiles& files) {
  return files.passphrase == nullptr
             ? unusable("key", files.keyName, "it is encrypted, and no passphrase was given",
                        ErrorCode::NotFound)
             : unusable("key", files.keyName, "the passphrase is wrong, or the file is damaged");
}

Key readKey(const KeyFiles& files) {
  Passphrase passphrase{files.passphrase};
  const Bio bio = readerOf(files.key);
  Key key(PEM_read_bio_PrivateKey(bio.get(), nullptr, givePassphrase, &passphrase));
  if (key) return key;
  if (!passphrase.wasWanted) throw unusable("key", files.keyName, "it holds no private key in PEM");
  throw locked(files);
}

Identity readPem(const KeyFiles& files) {
  Identity identity{readKey(files), fromPem(files.certificates)};
  if (identity.certificates.empty()) {
    throw unusable("certificate", files.certificateName, "it holds no certificates in PEM");
  }
  return identity;
}

Identity readPkcs12(const KeyFiles& files) {
  const Bio bio = readerOf(files.pkcs12);
  const std::unique_ptr<PKCS12, decltype(&PKCS12_free)> store(d2i_PKCS12_bio(bio.get(), nullptr),
                                                              PKCS12_free);
  if (!store) throw unusable("key", files.keyName, "it is not in PKCS #12");
  EVP_PKEY* key = nullptr;
  X509* certificate = nullptr;
  STACK_OF(X509)* others = nullptr;
  const char* passphrase = files.passphrase == nullptr ? "" : files.passphrase->c_str();
  const bool isRead = PKCS12_parse(store.get(), passphrase, &key, &certificate, &others) == 1;
  Identity identity;
  identity.key.reset(key);
  if (certificate != nullptr) identity.certificates.emplace_back(certificate);
  for (int i = 0; i < sk_X509_num(others); ++i) {
    identity.certificates.emplace_back(sk_X509_value(others, i));
  }
  sk_X509_free(others);
  if (!isRead) throw locked(files);
  if (!identity.key) throw unusable("key", files.keyName, "it holds no private key");
  if (certificate == nullptr) {
    throw unusable("key", files.keyName, "it holds no certificate for its key");
  }
  return identity;
}

void check(const Identity& identity, const KeyFiles& files, std::int64_t time) {
  X509& certificate = *identity.certificates.front();
  const KeyVerdict verdict = judgeKey(*identity.key);
  if (verdict.state != SignatureState::Valid) {
    throw unusable("key", files.keyName, verdict.reason);
  }
  if (X509_check_private_key(&certificate, identity.key.get()) != 1) {
    throw unusable("key", files.keyName,
                   "it does not match the certificate '" + files.certificateName + "'");
  }
  if (!isValidAt(certificate, time)) {
    const CertificateInfo info = describe(certificate);
    throw unusable("certificate", files.certificateName,
                   "it is valid from " + formatTime(info.notBefore) + " to " +
                       formatTime(info.notAfter) + ", but not at " + formatTime(time));
  }
  if (!mayMakeSignatures(certificate)) {
    throw unusable("certificate", files.certificateName, "it is not for signatures");
  }
}

class Signer final : public ISigner {
 public:
  explicit Signer(Identity identity) : identity_(std::move(identity)) {}

  CertificateInfo certificate() const override { return describe(*identity_.certificates.front()); }

  std::string sign(const std::vector<SignedPart>& parts, std::int64_t time) const override {
    return withMemory([&] { return signedText(parts, time); });
  }

 private:
  std::string signedText(const std::vector<SignedPart>& parts, std::int64_t time) const {
    const Document document = parse(unsignedText(parts, time));
    xmlNode* root = xmlDocGetRootElement(document.get());
    for (xmlNode* one = root->children; one != nullptr; one = one->next) addId(*document, one);
    if (!signCore(*root, *identity_.key)) {
      throw Exception(ErrorCode::Unsupported, "the signature cannot be made with this key");
    }
    xmlChar* text = nullptr;
    int size = 0;
    xmlDocDumpMemoryEnc(document.get(), &text, &size, "UTF-8");
    if (text == nullptr) throw std::bad_alloc();
    std::string xml(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
    xmlFree(text);
    return xml;
  }

  static void addId(xmlDoc& document, xmlNode* node) {
    const auto* name = reinterpret_cast<const xmlChar*>("Id");
    xmlAttr* id = node->type == XML_ELEMENT_NODE ? xmlHasProp(node, name) : nullptr;
    if (id != nullptr) xmlAddID(nullptr, &document, id->children->content, id);
  }

  /// Everything but the values that depend on the canonical form.
  std::string unsignedText(const std::vector<SignedPart>& parts, std::int64_t time) const {
    const std::string dsig(kDsig);
    const std::string digest =
        "<DigestMethod Algorithm=\"http://www.w3.org/2001/04/xmlenc#sha256\"/><DigestValue>";
    const bool isRsa = EVP_PKEY_is_a(identity_.key.get(), "RSA") == 1;
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Signature xmlns=\"" + dsig +
                      "\" Id=\"" + std::string(kSignatureId) +
                      "\"><SignedInfo><CanonicalizationMethod Algorithm=\"" + std::string(kC14n) +
                      "\"/><SignatureMethod Algorithm=\"http://www.w3.org/2001/04/xmldsig-more#" +
                      (isRsa ? "rsa" : "ecdsa") + "-sha256\"/><Reference Type=\"" +
                      std::string(kObjectType) + "\" URI=\"#" + std::string(kPackageObject) +
                      "\">" + digest +
                      "</DigestValue></Reference></SignedInfo><SignatureValue></SignatureValue>"
                      "<KeyInfo><X509Data>";
    for (const Certificate& one : identity_.certificates) {
      xml += "<X509Certificate>" + toBase64(toDer(*one)) + "</X509Certificate>";
    }
    xml += "</X509Data></KeyInfo><Object Id=\"" + std::string(kPackageObject) + "\"><Manifest>";
    for (const SignedPart& part : parts) {
      xml += "<Reference";
      appendAttribute(xml, "URI", part.uri);
      xml += ">" + digest + toBase64(part.digest) + "</DigestValue></Reference>";
    }
    xml += "</Manifest><SignatureProperties><SignatureProperty Id=\"idSignatureTime\" Target=\"#" +
           std::string(kSignatureId) + "\"><mdssi:SignatureTime xmlns:mdssi=\"" +
           std::string(kPackageDsig) +
           "\"><mdssi:Format>YYYY-MM-DDThh:mm:ssTZD</mdssi:Format><mdssi:Value>" +
           formatTime(time) +
           "</mdssi:Value></mdssi:SignatureTime></SignatureProperty></SignatureProperties>"
           "</Object></Signature>\n";
    return xml;
  }

  Identity identity_;
};

}  // namespace

std::unique_ptr<ISigner> openSigner(const KeyFiles& files, std::int64_t time) {
  Identity identity = files.pkcs12.empty() ? readPem(files) : readPkcs12(files);
  check(identity, files, time);
  return std::make_unique<Signer>(std::move(identity));
}

}  // namespace opc::xmlsignatures
