// SPDX-License-Identifier: MIT
#include "opc/signatures/Signing.h"

#include <memory>
#include <utility>
#include <vector>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/signatures/Digests.h"
#include "opc/signatures/SignableParts.h"
#include "opc/signatures/SignatureParts.h"
#include "opc/signatures/XmlSignatureLibrary.h"

namespace opc::signatures {

using interfaces::CompressionType;
using interfaces::Hash;
using interfaces::SignedPart;
using model::ContentType;
using model::Package;
using model::Part;
using model::PartName;
using model::StandardPartInfo;
using model::URI;

namespace {

constexpr std::size_t kMaxSignatureSize = std::size_t{64} << 20;
constexpr std::u16string_view kOriginName = u"/package/services/digital-signature/origin.psdsor";
constexpr std::string_view kSignatureFolder = "/package/services/digital-signature/xml-signature/";
constexpr std::string_view kSignatureExtension = ".psdsxs";

Exception unsignable(const std::string& which, const std::string& why) {
  return {ErrorCode::InvalidPackage, sentence("cannot sign", which, why)};
}

void requireSignable(const Package& package, const SignatureParts& found) {
  if (!found.faults.empty()) {
    const SignatureFault& first = found.faults.front();
    throw unsignable(first.part.empty() ? "/" : first.part, first.message);
  }
  for (const std::string& item : package.untypedItems()) {
    throw unsignable("/" + item, "it has no content type, so it is not a part");
  }
}

std::shared_ptr<Part> makeOrigin(Package& package) {
  const PartName name(kOriginName);
  std::shared_ptr<Part> origin = package.createPart(name, ContentType::fromAscii(kOriginType),
                                                    StandardPartInfo(CompressionType::None, 0));
  package.createInternalRelationship(kOriginRelationship, URI(std::u16string(kOriginName)), u"");
  return origin;
}

std::string digestOfPart(Package& package, const SignablePart& part, ByteBuffer& buffer) {
  Digests digests;
  digests.want(Hash::Sha256);
  const auto stream = open(package, part);
  buffer.resizeForOverwrite(kReadStep);
  while (const std::size_t size = stream->read(buffer.data(), kReadStep)) {
    digests.update({buffer.data(), size});
  }
  return digests.of(Hash::Sha256);
}

/// A part with its digest, unless that is still to be found out.
struct PartToSign {
  SignablePart part;
  std::string digest;
};

/// `isKnown`: whether the digests of items will be known.
std::vector<PartToSign> partsToSign(Package& package, bool isKnown) {
  const std::set<std::string> exempt = findSignatures(package).exempt;
  std::vector<PartToSign> parts;
  ByteBuffer buffer;
  for (SignablePart& part : signableParts(package)) {
    if (exempt.contains(part.name)) continue;
    const bool isItem = part.id.has_value() && *part.id < package.physical().itemCount();
    std::string digest;
    if (!isKnown || !isItem) digest = digestOfPart(package, part, buffer);
    parts.push_back({std::move(part), std::move(digest)});
  }
  return parts;
}

void requireValid(const std::string& xml) {
  if (xml.size() > kMaxSignatureSize) {
    throw Exception(ErrorCode::TooLarge, "the signature would have " + std::to_string(xml.size()) +
                                             " bytes, more than can be checked");
  }
  const interfaces::XmlSignature read = xmlSignatures().read(xml, {}, nullptr);
  if (read.state == interfaces::SignatureState::Valid) return;
  throw Exception(ErrorCode::InvalidState, "the new signature is not valid: " + read.reason);
}

/// The signature part, which is made when it is first read.
class SignatureSource final : public interfaces::IContentSource {
 public:
  SignatureSource(std::vector<PartToSign> parts, std::shared_ptr<const interfaces::ISigner> signer,
                  std::int64_t time, std::function<const ItemDigests&()> known)
      : parts_(std::move(parts)),
        signer_(std::move(signer)),
        time_(time),
        known_(std::move(known)) {}

  std::unique_ptr<InputStream> getInputStream() override {
    if (!xml_) xml_ = std::make_shared<const std::string>(make());
    signer_.reset();  // the key is not needed any more
    return std::make_unique<TextInputStream>(xml_);
  }
  std::uint64_t size() const override { return xml_ ? xml_->size() : 0; }
  std::string description() const override { return "the new signature"; }

 private:
  std::string make() const {
    const ItemDigests* known = known_ ? &known_() : nullptr;
    std::vector<SignedPart> parts;
    for (const PartToSign& one : parts_) {
      parts.push_back({toReference(one.part), one.digest.empty() ? find(known, one) : one.digest});
    }
    std::string xml = signer_->sign(parts, time_);
    requireValid(xml);
    return xml;
  }

  static std::string find(const ItemDigests* known, const PartToSign& one) {
    auto digest = known->find(*one.part.id);
    if (!digest) throw unsignable(one.part.name, "it cannot be read");
    return std::move(*digest);
  }

  std::vector<PartToSign> parts_;
  std::shared_ptr<const interfaces::ISigner> signer_;
  std::int64_t time_;
  std::function<const ItemDigests&()> known_;
  std::shared_ptr<const std::string> xml_;
};

/// Made from what is signed, as far as it is known without reading it, so that the same input gives
/// the same name.
PartName nameFor(Package& package, const std::vector<PartToSign>& parts,
                 const std::string& fingerprint, std::int64_t time) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::size_t kLength = 16;
  std::string seed = fingerprint + " " + std::to_string(time) + "\n";
  for (const PartToSign& one : parts) {
    seed += toReference(one.part) + " " + one.digest;
    if (one.part.id && !one.part.isRelationships()) {
      seed += std::to_string(package.partInfo(*one.part.id).crc);
    }
    seed += "\n";
  }
  for (;; seed += "\n") {
    std::string id;
    for (const char c : digestOf(Hash::Sha256, seed).substr(0, kLength)) {
      id += kDigits[static_cast<unsigned char>(c) >> 4];
      id += kDigits[static_cast<unsigned char>(c) & 15];
    }
    PartName name(fromUtf8(std::string(kSignatureFolder) + id + std::string(kSignatureExtension)));
    if (package.canCreatePart(name)) return name;
  }
}

}  // namespace

std::string addSignature(Package& package, std::shared_ptr<const interfaces::ISigner> signer,
                         std::int64_t time, std::function<const ItemDigests&()> known) {
  const SignatureParts found = findSignatures(package);
  requireSignable(package, found);
  const std::shared_ptr<Part> origin =
      found.origin ? package.getPart(PartName::fromItemName(package.itemNameOf(*found.origin)))
                   : makeOrigin(package);
  std::vector<PartToSign> parts = partsToSign(package, static_cast<bool>(known));
  const PartName name = nameFor(package, parts, signer->certificate().fingerprint, time);
  package.createPart(name, ContentType::fromAscii(kSignatureType),
                     StandardPartInfo(CompressionType::Normal, 0),
                     std::make_unique<SignatureSource>(std::move(parts), std::move(signer), time,
                                                       std::move(known)));
  origin->createInternalRelationship(kSignatureRelationship, URI(name.toString()), u"");
  return name.canonical();
}

}  // namespace opc::signatures
