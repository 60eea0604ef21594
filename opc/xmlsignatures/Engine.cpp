// SPDX-License-Identifier: MIT
#include "opc/Exception.h"
#include "opc/interfaces/IXmlSignatures.h"
#include "opc/xmlsignatures/CanonicalForms.h"
#include "opc/xmlsignatures/Certificates.h"
#include "opc/xmlsignatures/CoreValidation.h"
#include "opc/xmlsignatures/MemoryWatch.h"
#include "opc/xmlsignatures/SignatureDocument.h"
#include "opc/xmlsignatures/Signer.h"

namespace opc::xmlsignatures {

namespace interfaces = opc::interfaces;

using interfaces::ITrustAnchors;
using interfaces::SignatureState;
using interfaces::XmlSignature;

namespace {

/// Records a fault, unless an earlier one is recorded.
void setFault(XmlSignature& result, SignatureState state, const std::string& reason) {
  if (result.state != SignatureState::Valid) return;
  result.state = state;
  result.reason = reason;
}

std::vector<Certificate> certificatesOf(const SignatureDocument& signature,
                                        const std::vector<std::string>& parts) {
  std::vector<Certificate> certificates;
  for (const auto* list : {&signature.certificates, &parts}) {
    for (const std::string& der : *list) {
      Certificate one = fromDer(der);
      if (!one) throw Refusal{"one of its certificates cannot be read"};
      certificates.push_back(std::move(one));
    }
  }
  if (certificates.empty()) throw Refusal{"it has no certificate"};
  putSignerFirst(certificates);
  return certificates;
}

void judgeSigner(const std::vector<Certificate>& chain, const ITrustAnchors* anchors,
                 XmlSignature& result) {
  result.isOutdated = !isValidAt(*chain.front(), *result.time);
  if (anchors == nullptr) return;
  const auto distrust =
      findDistrust(chain, dynamic_cast<const TrustAnchors&>(*anchors), *result.time);
  result.isTrusted = !distrust.has_value();
  result.distrust = distrust.value_or("");
}

void judge(const SignatureDocument& signature, const std::vector<std::string>& parts,
           const ITrustAnchors* anchors, XmlSignature& result) {
  const std::size_t hash = signature.method.find('#');
  if (hash != std::string::npos) result.algorithm = signature.method.substr(hash + 1);
  const std::vector<Certificate> chain = certificatesOf(signature, parts);
  result.signer = describe(*chain.front());
  if (!isSupportedMethod(signature.method)) {
    throw Refusal{"its algorithm '" + signature.method + "' is not supported"};
  }
  EVP_PKEY* key = X509_get0_pubkey(chain.front().get());
  if (key == nullptr) throw Refusal{"the key of its certificate is not supported"};
  const KeyVerdict verdict = judgeKey(*key);
  if (verdict.state == SignatureState::Unsupported) throw Refusal{verdict.reason};
  judgeSigner(chain, anchors, result);
  result.state = SignatureState::Valid;
  if (!isCoreValid(signature, *key)) {
    setFault(result, SignatureState::Broken, "its value does not match what is signed");
  }
  setFault(result, verdict.state, verdict.reason);
}

XmlSignature judged(std::string_view xml, const std::vector<std::string>& parts,
                    const ITrustAnchors* anchors) {
  XmlSignature result;
  try {
    SignatureDocument signature = readSignature(xml);
    result.time = signature.time;
    result.references = std::move(signature.references);
    judge(signature, parts, anchors, result);
  } catch (const Refusal& refusal) {
    result.reason = refusal.reason;
  } catch (const Exception& fault) {
    result.reason = fault.what();
  }
  return result;
}

class Engine final : public interfaces::IXmlSignatures {
 public:
  Engine() { prepareLibrary(); }

  XmlSignature read(std::string_view xml, const std::vector<std::string>& certificates,
                    const ITrustAnchors* anchors) const override {
    return withMemory([&] { return judged(xml, certificates, anchors); });
  }

  interfaces::CanonicalXml canonicalise(std::string_view xml, bool keepsComments) const override {
    return withMemory([&] { return xmlsignatures::canonicalise(xml, keepsComments); });
  }

  interfaces::CanonicalXml selectRelationships(
      std::string_view xml, const interfaces::ManifestReference& reference) const override {
    return withMemory([&] { return xmlsignatures::selectRelationships(xml, reference); });
  }

  void addAnchors(std::unique_ptr<ITrustAnchors>& anchors, const std::string& name,
                  std::string_view pem) const override {
    std::vector<Certificate> certificates = withMemory([&] {
      return fromPem({reinterpret_cast<const unsigned char*>(pem.data()), pem.size()});
    });
    if (certificates.empty()) {
      throw Exception(ErrorCode::InvalidArgument,
                      sentence("cannot use certificates", name, "it holds no certificates in PEM"));
    }
    if (!anchors) anchors = std::make_unique<TrustAnchors>();
    auto& all = dynamic_cast<TrustAnchors&>(*anchors).certificates;
    for (Certificate& one : certificates) all.push_back(std::move(one));
  }

  std::unique_ptr<interfaces::ISigner> openSigner(const interfaces::KeyFiles& files,
                                                  std::int64_t time) const override {
    return withMemory([&] { return xmlsignatures::openSigner(files, time); });
  }
};

}  // namespace

}  // namespace opc::xmlsignatures

/// The one function of this library. The number in its name changes with the interface. Throws
/// Exception. A pointer, since C has no references; it is never null.
extern "C" __attribute__((visibility("default"))) const opc::interfaces::IXmlSignatures*
kraddonXmlSignatures1() {
  static const opc::xmlsignatures::Engine engine;
  return &engine;
}
