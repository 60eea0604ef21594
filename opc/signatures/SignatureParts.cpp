// SPDX-License-Identifier: MIT
#include "opc/signatures/SignatureParts.h"

#include <algorithm>
#include <memory>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/FormatConstants.h"

namespace opc::signatures {

using model::ContentType;
using model::Package;
using model::Part;
using model::PartId;
using model::PartName;
using model::Relationship;
using model::RelationshipSource;
using model::TargetMode;

namespace {

constexpr std::string_view kTypes = "application/vnd.openxmlformats-package.digital-signature-";

std::string relationshipsNameOf(const std::string& partName) {
  return "/" + model::relationshipsItemName(std::string_view(partName).substr(1));
}

/// Whether it is in a folder whose parts are the add-on itself.
bool isContent(const PartName& name) {
  return name.key().starts_with("/files/") || name.key().starts_with("/metadata/");
}

/// What relationships of one source have to be.
struct Expected {
  std::u16string_view relationship;
  std::string_view type;
  std::string_view what;  ///< they lead to, with the article
};

constexpr Expected kOrigin{kOriginRelationship, kOriginType, "a signature origin"};
constexpr Expected kSignature{kSignatureRelationship, kSignatureType, "a signature"};
constexpr Expected kCertificate{kCertificateRelationship, kCertificateType, "a certificate"};

class Finder {
 public:
  explicit Finder(Package& package) : package_(package) {}

  SignatureParts find() {
    guarded("", [this] { findOrigin(); });
    return std::move(result_);
  }

 private:
  void addFault(const std::string& part, const std::string& message) {
    result_.faults.push_back({part, message});
  }

  template <typename Body>
  void guarded(const std::string& part, const Body& body) {
    try {
      body();
    } catch (const SystemError&) {
      throw;
    } catch (const Exception& fault) {
      addFault(part, fault.what());
    }
  }

  void findOrigin() {
    const auto origins = package_.getRelationshipsByType(kOriginRelationship);
    if (origins.empty()) return findStrays();
    if (origins.size() > 1) addFault("", "the package has several signature origins");
    const std::shared_ptr<Part> origin = target("", origins.front(), kOrigin);
    if (!origin) return;
    if (package_.partInfo(origin->id()).size != 0) {
      addFault(nameOf(*origin), "the signature origin is not empty");
      return;
    }
    result_.origin = origin->id();
    exempt(*origin);
    for (const std::shared_ptr<Part>& one : targets(*origin, kSignature)) addSignature(*one);
    if (result_.signatures.empty() && result_.faults.empty()) {
      addFault(nameOf(*origin), "the signature origin leads to no signature");
    }
  }

  // Content that looks signed, but only to readers that do not follow relationships.
  void findStrays() {
    package_.visitParts("", [&](PartId part) {
      if (!isSignatureType(package_.contentTypeOf(part))) return;
      addFault(partNameOf(package_.itemNameOf(part)),
               "it belongs to a signature, but the package has no signature origin");
    });
  }

  void addSignature(Part& signature) {
    SignatureParts::One one{signature.id(), {}};
    exempt(signature);
    guarded(nameOf(signature), [&] {
      for (const std::shared_ptr<Part>& certificate : targets(signature, kCertificate)) {
        one.certificates.push_back(certificate->id());
        result_.exempt.insert(nameOf(*certificate));
      }
    });
    result_.signatures.push_back(std::move(one));
  }

  void exempt(const Part& part) {
    result_.exempt.insert(nameOf(part));
    result_.exempt.insert(relationshipsNameOf(nameOf(part)));
  }

  std::string nameOf(const Part& part) const { return partNameOf(package_.itemNameOf(part.id())); }

  std::vector<std::shared_ptr<Part>> targets(Part& source, const Expected& expected) {
    const std::string name = nameOf(source);
    std::vector<std::shared_ptr<Part>> parts;
    std::set<PartId> known;
    for (const Relationship& one : source.getRelationships()) {
      if (one.getType() != expected.relationship) {
        addFault(name, "its relationship '" + toUtf8ForDisplay(one.getId()) +
                           "' does not lead to " + std::string(expected.what));
        continue;
      }
      const std::shared_ptr<Part> part = target(name, one, expected);
      if (!part) continue;
      if (!known.insert(part->id()).second) {
        addFault(name, "two of its relationships lead to '" + nameOf(*part) + "'");
        continue;
      }
      parts.push_back(part);
    }
    return parts;
  }

  /// Null, and a fault, if it is not what a relationship of that type leads to.
  std::shared_ptr<Part> target(const std::string& source, const Relationship& one,
                               const Expected& expected) {
    const std::string which = "its relationship '" + toUtf8ForDisplay(one.getId()) + "'";
    if (one.getTargetMode() != TargetMode::Internal) {
      addFault(source, which + " leads out of the package");
      return nullptr;
    }
    const PartName name = one.targetName();
    if (!package_.hasPart(name)) {
      addFault(source, which + " leads to '" + name.canonical() + "', which is not in the package");
      return nullptr;
    }
    std::shared_ptr<Part> part = package_.getPart(name);
    const std::string type = part->getContentType().ascii();
    if (type != expected.type) {
      addFault(source, which + " leads to '" + name.canonical() + "', whose content type '" + type +
                           "' is not that of " + std::string(expected.what));
      return nullptr;
    }
    if (isContent(part->getName())) {
      addFault(source, which + " leads to '" + name.canonical() + "', which is part of the add-on");
      return nullptr;
    }
    return part;
  }

  Package& package_;
  SignatureParts result_;
};

/// Whether it removed any.
bool removeRelationships(RelationshipSource& source, std::u16string_view type) {
  bool isAny = false;
  for (const Relationship& one : source.getRelationshipsByType(type)) {
    source.deleteRelationship(one.getId());
    isAny = true;
  }
  return isAny;
}

}  // namespace

bool isSignatureType(const ContentType& type) {
  return toLowerAscii(type.ascii()).starts_with(kTypes);
}

std::string partNameOf(std::string_view itemName) {
  return "/" + model::canonicalItemName(itemName);
}

SignatureParts findSignatures(Package& package) {
  return Finder(package).find();
}

std::size_t countSignatures(Package& package) {
  std::size_t count = 0;
  for (const Relationship& origin : package.getRelationshipsByType(kOriginRelationship)) {
    if (origin.getTargetMode() != TargetMode::Internal) continue;
    if (!package.hasPart(origin.targetName())) continue;
    count += package.getPart(origin)->getRelationshipsByType(kSignatureRelationship).size();
  }
  return count;
}

bool removeSignatures(Package& package) {
  std::vector<PartName> names;
  package.visitParts("", [&](PartId part) {
    PartName name = PartName::fromItemName(package.itemNameOf(part));
    if (isSignatureType(package.contentTypeOf(part)) && !isContent(name)) names.push_back(name);
  });
  for (const PartName& name : names) package.deletePart(name);
  const bool hadOrigin = removeRelationships(package, kOriginRelationship);
  return hadOrigin || !names.empty();
}

}  // namespace opc::signatures
