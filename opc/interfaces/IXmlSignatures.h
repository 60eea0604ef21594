// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace opc::interfaces {

/// A digest algorithm that signatures may use.
enum class Hash : std::uint8_t { Sha256, Sha384, Sha512 };

/// What the manifest of a signature says of one part.
struct ManifestReference {
  enum class Form : std::uint8_t {
    Bytes,         ///< the part as it is
    Xml,           ///< its canonical form
    Relationships  ///< the canonical form of some of its relationships
  };

  std::string uri;
  Hash hash = Hash::Sha256;
  std::string digest;  ///< in bytes
  Form form = Form::Bytes;
  bool keepsComments = false;  ///< whether the canonical form keeps comments
  std::vector<std::string> ids;
  std::vector<std::string> types;  ///< relationships with one of these ids or types count
};

struct CertificateInfo {
  std::string subject;
  std::string issuer;
  std::string serial;          ///< in hexadecimal
  std::string fingerprint;     ///< SHA-256 of the certificate, in hexadecimal
  std::int64_t notBefore = 0;  ///< seconds since 1970, UTC
  std::int64_t notAfter = 0;
};

enum class SignatureState : std::uint8_t {
  Valid,
  Partial,  ///< valid, but not over everything
  Broken,
  Weak,
  Unsupported  ///< of a kind that is not checked, or malformed
};

/// What a signature part says, as far as it can be judged without the signed parts.
struct XmlSignature {
  SignatureState state = SignatureState::Unsupported;  ///< never Partial
  std::string reason;                                  ///< why it is not valid
  std::string algorithm;                               ///< such as "rsa-sha256"
  std::optional<CertificateInfo> signer;
  std::optional<std::int64_t> time;  ///< when it was made, as it says
  bool isOutdated = false;           ///< the certificate was not valid at that time
  std::optional<bool> isTrusted;     ///< nothing if there are no anchors to compare with
  std::string distrust;              ///< why it is not trusted
  std::vector<ManifestReference> references;
};

/// Certificates that the user trusts.
class ITrustAnchors {
 public:
  virtual ~ITrustAnchors() = default;
};

struct RelationshipName {
  std::string id;
  std::string type;
};

/// A document in canonical form, and what that form leaves out.
struct CanonicalXml {
  std::string bytes;
  bool lacksComments = false;
  std::vector<RelationshipName> lacking;
};

/// A part that is to be signed.
struct SignedPart {
  std::string uri;
  std::string digest;  ///< SHA-256, in bytes
};

/// The contents of key files, which must outlive the call, and names for messages: either `pkcs12`,
/// or `key` and `certificates`. `passphrase` is null if none was given.
struct KeyFiles {
  std::string keyName;
  std::string certificateName;
  std::span<const unsigned char> key;
  std::span<const unsigned char> certificates;
  std::span<const unsigned char> pkcs12;
  const std::string* passphrase = nullptr;
};

/// A private key with its certificate. The key is cleared with the object.
class ISigner {
 public:
  virtual ~ISigner() = default;
  virtual CertificateInfo certificate() const = 0;
  /// Returns the signature part. `time` is in seconds since 1970. Throws Exception.
  virtual std::string sign(const std::vector<SignedPart>& parts, std::int64_t time) const = 0;
};

/// XML signatures: validation of the core, canonical forms, certificates and keys. Nothing is
/// loaded by its address, neither XPath nor XSLT is run, and only keys of certificates are used.
class IXmlSignatures {
 public:
  virtual ~IXmlSignatures() = default;

  /// Judges a signature. `certificates`, in DER, come from parts of the package; `anchors` may be
  /// null. What is wrong with the signature shows in the result.
  virtual XmlSignature read(std::string_view xml, const std::vector<std::string>& certificates,
                            const ITrustAnchors* anchors) const = 0;
  /// Canonical XML 1.0. Throws Exception (ErrorCode::InvalidXml) for what cannot be parsed.
  virtual CanonicalXml canonicalise(std::string_view xml, bool keepsComments) const = 0;
  /// The same after the relationship transform.
  virtual CanonicalXml selectRelationships(std::string_view xml,
                                           const ManifestReference& reference) const = 0;

  /// Adds the certificates in `pem` to `anchors`, which is made if it is null. Throws Exception,
  /// naming the file `name`, if there are none.
  virtual void addAnchors(std::unique_ptr<ITrustAnchors>& anchors, const std::string& name,
                          std::string_view pem) const = 0;
  /// Throws Exception, naming the file, for a key or certificate that cannot be used at `time`,
  /// with ErrorCode::NotFound if only the passphrase is missing.
  virtual std::unique_ptr<ISigner> openSigner(const KeyFiles& files, std::int64_t time) const = 0;
};

}  // namespace opc::interfaces
