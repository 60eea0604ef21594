// SPDX-License-Identifier: MIT
#include "opc/signatures/Signing.h"

#include <memory>
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

constexpr std::size_t kLargestSignature = std::size_t{64} << 20;
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
  const std::shared_ptr<Part> origin = package.createPart(
      name, ContentType::fromAscii(kOriginType), StandardPartInfo(CompressionType::None, 0));
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

std::vector<SignedPart> partsToSign(Package& package) {
  const std::set<std::string> exempt = findSignatures(package).exempt;
  std::vector<SignedPart> parts;
  ByteBuffer buffer;
  for (const SignablePart& part : signableParts(package)) {
    if (exempt.contains(part.name)) continue;
    parts.push_back({toReference(part), digestOfPart(package, part, buffer)});
  }
  return parts;
}

/// Made from what is signed, so that the same input gives the same bytes.
PartName nameFor(Package& package, const std::string& xml) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::size_t kLength = 16;
  for (std::size_t attempt = 0;; ++attempt) {
    const std::string hash = digestOf(Hash::Sha256, xml + std::string(attempt, '\n'));
    std::string id;
    for (const char c : hash.substr(0, kLength)) {
      id += kDigits[static_cast<unsigned char>(c) >> 4];
      id += kDigits[static_cast<unsigned char>(c) & 15];
    }
    PartName name(fromUtf8(std::string(kSignatureFolder) + id + std::string(kSignatureExtension)));
    if (package.canCreatePart(name)) return name;
  }
}

void requireValid(const std::string& xml) {
  if (xml.size() > kLargestSignature) {
    throw Exception(ErrorCode::TooLarge, "the signature would have " + std::to_string(xml.size()) +
                                             " bytes, more than can be checked");
  }
  const interfaces::XmlSignature read = xmlSignatures().read(xml, {}, nullptr);
  if (read.state == interfaces::SignatureState::Valid) return;
  throw Exception(ErrorCode::InvalidState, "the new signature is not valid: " + read.reason);
}

}  // namespace

std::string addSignature(Package& package, const interfaces::ISigner& signer, std::int64_t time) {
  const SignatureParts found = findSignatures(package);
  requireSignable(package, found);
  const std::shared_ptr<Part> origin =
      found.origin ? package.getPart(PartName::fromItemName(package.itemNameOf(*found.origin)))
                   : makeOrigin(package);
  const std::string xml = signer.sign(partsToSign(package), time);
  requireValid(xml);
  const PartName name = nameFor(package, xml);
  const auto part = package.createPart(name, ContentType::fromAscii(kSignatureType),
                                       StandardPartInfo(CompressionType::Normal, xml.size()));
  part->getOutputStream()->write(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  origin->createInternalRelationship(kSignatureRelationship, URI(name.toString()), u"");
  return name.canonical();
}

}  // namespace opc::signatures
