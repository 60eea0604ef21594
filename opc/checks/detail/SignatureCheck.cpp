// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>

#include "opc/Exception.h"
#include "opc/checks/SignatureFindings.h"
#include "opc/checks/detail/Packaging.h"
#include "opc/model/Package.h"
#include "opc/signatures/Verification.h"

namespace opc::checks::detail {

using signatures::Signature;
using signatures::SignatureFault;
using signatures::SignatureState;
using signatures::Verification;

namespace {

class SignatureCheck {
 public:
  SignatureCheck(Packaging& packaging, const SignatureDemands& demands)
      : packaging_(packaging), demands_(demands), report_(packaging.report) {}

  void run() {
    Verification verified;
    if (mayBeSigned()) verified = verify();
    for (const SignatureFault& fault : verified.faults) addUnsupported(fault.part, fault.message);
    for (const Signature& signature : verified.signatures) add(signature);
    if (isAddon()) addUncovered(verified);
    if (demands_.isRequired && !verified.isSigned()) {
      report_.addClipped(kNotSigned, "", "the package is not signed", "");
    }
  }

 private:
  bool isAddon() const { return report_.subject() == Subject::Addon; }

  // Looked up in what other checks have read, so that packages without signatures cost nothing.
  bool mayBeSigned() const {
    bool isAny = packaging_.hasSignatureOrigin;
    packaging_.index.forEach(model::ItemRole::Part, [&](model::PartId part) {
      const model::ContentType* type = packaging_.types.find(packaging_.index.name(part));
      isAny = isAny || (type != nullptr && signatures::isSignatureType(*type));
    });
    return isAny;
  }

  // A package that cannot be opened has errors enough, but it must not pass for unsigned.
  Verification verify() {
    model::Package package(packaging_.container, false);
    try {
      package.open(interfaces::OpenMode::Read);
    } catch (const SystemError&) {
      throw;
    } catch (const Exception& fault) {
      addUnsupported("", std::string("its signatures cannot be checked: ") + fault.what());
      return {};
    }
    return signatures::verifySignatures(package, demands_.anchors, demands_.digests);
  }

  void add(const Signature& signature) {
    switch (signature.state) {
      case SignatureState::Unsupported:
        return addUnsupported(signature.part, signature.reason);
      case SignatureState::Weak:
        report_.addClipped(kWeakSignature, signature.part, signature.reason, "");
        break;
      case SignatureState::Broken:
        addBroken(signature);
        break;
      case SignatureState::Valid:
      case SignatureState::Partial:
        break;
    }
    addSigner(signature);
  }

  void addUnsupported(const std::string& part, const std::string& why) {
    if (isAddon()) return report_.addClipped(kUnsupportedSignature, part, why, "");
    if (demands_.anchors != nullptr) {
      return report_.addClipped(kUntrustedSigner, part, "its signer cannot be checked: " + why, "");
    }
    if (isUncheckedAdded_) return;
    isUncheckedAdded_ = true;
    report_.addClipped(kUncheckedSignature, part,
                       "the package is signed; the signature was not checked: " + why, "DS-1");
  }

  void addBroken(const Signature& signature) {
    const bool isOnlyOutdated =
        signature.xml.state == SignatureState::Valid && signature.changed.empty();
    if (isOnlyOutdated) return;  // addSigner() says it
    report_.addClipped(kBrokenSignature, signature.part,
                       "the signature is broken: " + signature.reason, "");
    for (const std::string& name : signature.missing) {
      report_.addClipped(kMissingSignedPart, name,
                         "it is signed by '" + signature.part + "', but not in the package", "");
    }
  }

  void addSigner(const Signature& signature) {
    if (signature.xml.isOutdated) {
      report_.addClipped(kOutdatedCertificate, signature.part,
                         "the signer's certificate was not valid when the signature was made", "");
    }
    if (!signature.xml.isTrusted) {
      if (!signature.isValid()) return;  // which is what matters
      report_.addClipped(kUnknownSigner, signature.part,
                         "it is signed, but who signed it is not checked", "");
    } else if (!*signature.xml.isTrusted) {
      report_.addClipped(kUntrustedSigner, signature.part,
                         "its signer " + quoted(signature.xml.signer->subject) +
                             " is not trusted: " + signature.xml.distrust,
                         "");
    }
  }

  void addUncovered(const Verification& verified) {
    for (const std::string& name : verified.uncovered) {
      report_.addClipped(kUncoveredPart, name, "no valid signature covers it", "");
    }
    for (const Signature& signature : verified.signatures) {
      if (signature.state != SignatureState::Partial) continue;
      report_.addClipped(kUncoveredPart, signature.part,
                         "the signature covers less than everything: " + signature.reason, "");
    }
  }

  Packaging& packaging_;
  const SignatureDemands& demands_;
  Report& report_;
  bool isUncheckedAdded_ = false;
};

}  // namespace

void checkSignatures(Packaging& packaging, const SignatureDemands& demands) {
  SignatureCheck(packaging, demands).run();
}

}  // namespace opc::checks::detail
