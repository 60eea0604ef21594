// SPDX-License-Identifier: MIT
#include "opc/checks/SignatureFindings.h"

#include <array>

namespace opc::checks {

namespace {

constexpr std::array kSignatureFindings{
    FindingInfo{kBrokenSignature, "signature broken",
                "What a signature says of a part, or of itself, is not so: the bytes, the content "
                "type or the name of a part have changed since it was made, or the signature has. "
                "The message names the first part.",
                "Get the package from its author again; an author runs 'kraddon unsign', then "
                "'kraddon sign'."},
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
                "The chain of the signer's certificate reaches none of the certificates that "
                "--trust names, or not at the time of the signature.",
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
                "unusual transforms; or it is malformed, or its parts or relationships are not as "
                "the packaging conventions have them. It proves nothing here.",
                "Run 'kraddon unsign', then 'kraddon sign'."},
    FindingInfo{kUnknownSigner, "signer not checked",
                "The package is signed and unchanged, but by whom was not checked: anybody can "
                "make a certificate with any name.",
                "Name the certificates that you trust with --trust."},
};

}  // namespace

std::span<const FindingInfo> signatureFindings() {
  return kSignatureFindings;
}

}  // namespace opc::checks
