// SPDX-License-Identifier: MIT
#include "opc/checks/SignatureFindings.h"

#include <array>

namespace opc::checks {

namespace {

constexpr std::array kSignatureFindings{
    FindingInfo{kBrokenSignature, "signature broken",
                "Since the package was signed, the bytes, the content type or the name of a part "
                "have changed, or the signature itself has. The message names the first part that "
                "differs.",
                "Get the package from its author again. If you are the author, run 'kraddon "
                "unsign', then 'kraddon sign'."},
    FindingInfo{kUncoveredPart, "part not signed",
                "The valid signatures leave out a part, a relationship or an item that other "
                "programs unpack, or one of several signatures covers less than everything. What "
                "is not signed may have been added by anybody. Only add-ons are checked for this.",
                "Sign the package with 'kraddon sign', which covers everything."},
    FindingInfo{kMissingSignedPart, "signed part missing",
                "A signature covers a part that is not in the package, or not under exactly that "
                "name.",
                "Get the package from its author again."},
    FindingInfo{kUntrustedSigner, "signer not trusted",
                "The signer's certificate does not chain to any certificate given with --trust, or "
                "its chain was not valid at the signing time.",
                "Do not install the package, or add the certificate of its signer if you know it "
                "from another source."},
    FindingInfo{kOutdatedCertificate, "certificate not valid at the signing time",
                "The signer's certificate had expired, or was not valid yet, at the time that the "
                "signature gives.",
                "Sign the package again with a valid certificate."},
    FindingInfo{kWeakSignature, "signature too weak",
                "The signer's key is too short to prove anything: RSA needs 2048 bits, ECDSA one "
                "of the curves P-256, P-384 and P-521.",
                "Sign the package again with a longer key."},
    FindingInfo{kNotSigned, "package not signed",
                "The package has no signature, and --require-signature asks for one.",
                "Sign the package with 'kraddon sign'."},
    FindingInfo{kUnsupportedSignature, "signature not supported",
                "A signature is of a kind that is not checked, such as one with SHA-1 or with "
                "unusual transforms; or it is malformed, or its parts or relationships do not "
                "follow the packaging conventions. It therefore proves nothing.",
                "Run 'kraddon unsign', then 'kraddon sign'."},
    FindingInfo{kUnknownSigner, "signer not checked",
                "The package is signed and unchanged, but the signer was not checked: anybody can "
                "make a certificate with any name.",
                "Name the certificates that you trust with --trust."},
};

}  // namespace

std::span<const FindingInfo> signatureFindings() {
  return kSignatureFindings;
}

}  // namespace opc::checks
