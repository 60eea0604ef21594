// SPDX-License-Identifier: MIT
#include "opc/signatures/Verification.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "opc/Exception.h"
#include "opc/signatures/Digests.h"
#include "opc/signatures/SignableParts.h"
#include "opc/signatures/XmlSignatureLibrary.h"

namespace opc::signatures {

using interfaces::CanonicalXml;
using interfaces::Hash;
using interfaces::IXmlSignatures;
using interfaces::ManifestReference;
using model::Package;
using model::PartId;

namespace {

constexpr std::uint64_t kMaxXmlSize = std::uint64_t{64} << 20;

using Form = ManifestReference::Form;

/// What one signature says of a part.
struct Claim {
  std::size_t signature;
  const ManifestReference* reference;
};

/// A part, with everything that is to be found out while it is read.
struct Target {
  SignablePart part;
  std::vector<Claim> claims;
};

class Verifier {
 public:
  Verifier(Package& package, const interfaces::ITrustAnchors* anchors, const ItemDigests* known,
           const std::set<std::string>* only = nullptr)
      : package_(package), anchors_(anchors), known_(known), only_(only) {}

  Verification run() {
    SignatureParts found = findSignatures(package_);
    result_.faults = std::move(found.faults);
    if (found.signatures.empty()) return std::move(result_);
    xmlSignatures();  // without which nothing can be said
    for (const SignatureParts::One& one : found.signatures) readSignature(one);
    for (SignablePart& part : signableParts(package_)) targets_.push_back({std::move(part), {}});
    covered_.assign(result_.signatures.size(), std::vector<bool>(targets_.size(), false));
    for (std::size_t i = 0; i < result_.signatures.size(); ++i) assignClaims(i);
    for (std::size_t i = 0; i < targets_.size(); ++i) check(i);
    settle(found.exempt);
    return std::move(result_);
  }

 private:
  std::string read(PartId part) {
    ByteBuffer bytes;
    package_.readPart(part, bytes, kMaxXmlSize);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }

  void readSignature(const SignatureParts::One& one) {
    Signature& signature = result_.signatures.emplace_back();
    signature.part = partNameOf(package_.itemNameOf(one.part));
    try {
      std::vector<std::string> certificates;
      for (const PartId part : one.certificates) certificates.push_back(read(part));
      signature.xml = xmlSignatures().read(read(one.part), certificates, anchors_);
    } catch (const SystemError&) {
      throw;
    } catch (const Exception& fault) {
      signature.xml.reason = fault.what();
    }
    signature.state = signature.xml.state;
    signature.reason = signature.xml.reason;
  }

  // By its name to the letter, and its type.
  void assignClaims(std::size_t number) {
    Signature& signature = result_.signatures[number];
    for (const ManifestReference& reference : signature.xml.references) {
      const auto parsed = parseReference(reference.uri);
      if (!parsed) {
        refuse(signature, "its manifest refers to '" + reference.uri +
                              "', which is not a part with its content type");
        continue;
      }
      const auto target = std::lower_bound(
          targets_.begin(), targets_.end(), parsed->name,
          [](const Target& one, const std::string& name) { return one.part.name < name; });
      if (target == targets_.end() || target->part.name != parsed->name) {
        signature.missing.push_back(parsed->name);
        signature.changed.push_back(parsed->name);
      } else if (target->part.type != parsed->type) {
        signature.changed.push_back(parsed->name);
      } else {
        target->claims.push_back({number, &reference});
      }
    }
  }

  static void refuse(Signature& signature, const std::string& reason) {
    if (signature.state == SignatureState::Unsupported) return;
    signature.state = SignatureState::Unsupported;
    signature.reason = reason;
  }

  void check(std::size_t number) {
    Target& target = targets_[number];
    if (target.claims.empty()) return;
    std::vector<bool> holds(target.claims.size(), false);
    std::vector<bool> covers(target.claims.size(), true);
    try {
      if (only_ != nullptr && !only_->contains(target.part.name)) {
        holds.assign(holds.size(), true);
      } else if (!checkKnown(target, holds)) {
        checkClaims(target, holds, covers);
      }
    } catch (const SystemError&) {
      throw;
    } catch (const Exception&) {
      // What cannot be read does not fit.
    }
    for (std::size_t i = 0; i < target.claims.size(); ++i) {
      const std::size_t by = target.claims[i].signature;
      if (!holds[i]) result_.signatures[by].changed.push_back(target.part.name);
      if (holds[i] && covers[i]) covered_[by][number] = true;
    }
  }

  // Returns false if the part has to be read.
  bool checkKnown(const Target& target, std::vector<bool>& holds) const {
    if (known_ == nullptr || !target.part.id) return false;
    const std::optional<std::string> digest = known_->find(*target.part.id);
    const auto isEnough = [](const Claim& claim) {
      return claim.reference->form == Form::Bytes && claim.reference->hash == Hash::Sha256;
    };
    if (!digest || !std::all_of(target.claims.begin(), target.claims.end(), isEnough)) return false;
    for (std::size_t i = 0; i < target.claims.size(); ++i) {
      holds[i] = target.claims[i].reference->digest == *digest;
    }
    return true;
  }

  // Every byte once, whatever the number of claims.
  void checkClaims(const Target& target, std::vector<bool>& holds, std::vector<bool>& covers) {
    Digests digests;
    bool needsXml = false;
    for (const Claim& claim : target.claims) {
      if (claim.reference->form == Form::Bytes) digests.want(claim.reference->hash);
      needsXml = needsXml || claim.reference->form != Form::Bytes;
    }
    std::string text;
    const auto stream = open(package_, target.part);
    buffer_.resizeForOverwrite(kReadStep);
    while (const std::size_t size = stream->read(buffer_.data(), kReadStep)) {
      digests.update({buffer_.data(), size});
      if (!needsXml) continue;
      if (text.size() + size > kMaxXmlSize) throw Exception(ErrorCode::TooLarge, "it is too large");
      text.append(reinterpret_cast<const char*>(buffer_.data()), size);
    }
    for (std::size_t i = 0; i < target.claims.size(); ++i) {
      const ManifestReference& reference = *target.claims[i].reference;
      if (reference.form == Form::Bytes) {
        holds[i] = digests.of(reference.hash) == reference.digest;
        continue;
      }
      const CanonicalXml xml = canonical(target.part, text, reference);
      holds[i] = digestOf(reference.hash, xml.bytes) == reference.digest;
      covers[i] = coversAll(target.part, xml);
    }
  }

  static CanonicalXml canonical(const SignablePart& part, std::string_view text,
                                const ManifestReference& reference) {
    const IXmlSignatures& library = xmlSignatures();
    if (reference.form == Form::Xml) return library.canonicalise(text, reference.keepsComments);
    if (part.isRelationships()) return library.selectRelationships(text, reference);
    throw Exception(ErrorCode::InvalidPackage, "it is not a relationships part");
  }

  // The one relationship that may be left out is that to the signatures themselves.
  static bool coversAll(const SignablePart& part, const CanonicalXml& xml) {
    const auto isOrigin = [](const interfaces::RelationshipName& one) {
      return one.type ==
             "http://schemas.openxmlformats.org/package/2006/relationships/"
             "digital-signature/origin";
    };
    const bool lacksOrigin =
        xml.lacking.size() == 1 && part.name == "/_rels/.rels" && isOrigin(xml.lacking.front());
    return !xml.lacksComments && (xml.lacking.empty() || lacksOrigin);
  }

  void settle(const std::set<std::string>& exempt) {
    std::vector<bool> together(targets_.size(), false);
    bool isAnyValid = false;
    const std::vector<std::string> others = otherItems();
    for (std::size_t i = 0; i < result_.signatures.size(); ++i) {
      Signature& signature = result_.signatures[i];
      settle(signature, covered_[i], exempt, others);
      if (!signature.isValid()) continue;
      isAnyValid = true;
      for (std::size_t k = 0; k < targets_.size(); ++k) {
        if (covered_[i][k]) together[k] = true;
      }
    }
    if (isAnyValid) result_.uncovered = uncoveredBy(together, exempt, others);
  }

  void settle(Signature& signature, const std::vector<bool>& covered,
              const std::set<std::string>& exempt, const std::vector<std::string>& others) const {
    signature.xml.references.clear();
    signature.covered = static_cast<std::size_t>(std::count(covered.begin(), covered.end(), true));
    signature.uncovered = uncoveredBy(covered, exempt, others);
    auto& changed = signature.changed;
    std::sort(changed.begin(), changed.end());
    changed.erase(std::unique(changed.begin(), changed.end()), changed.end());
    std::sort(signature.missing.begin(), signature.missing.end());
    if (signature.state == SignatureState::Unsupported) return;
    if (!changed.empty()) {
      signature.state = SignatureState::Broken;
      signature.reason = describeChanges(signature);
    } else if (signature.state == SignatureState::Valid && signature.xml.isOutdated) {
      signature.state = SignatureState::Broken;
      signature.reason = "its certificate was not valid when it was made";
    } else if (signature.state == SignatureState::Valid && !signature.uncovered.empty()) {
      signature.state = SignatureState::Partial;
      signature.reason = "it does not cover '" + signature.uncovered.front() + "'" +
                         andMore(signature.uncovered.size());
    }
  }

  static std::string andMore(std::size_t count) {
    return count > 1 ? " and " + std::to_string(count - 1) + " more" : "";
  }

  static std::string describeChanges(const Signature& signature) {
    const std::string& first = signature.changed.front();
    const bool isMissing = !signature.missing.empty() && signature.missing.front() == first;
    const std::size_t count = signature.changed.size();
    return "'" + first + "' " + (isMissing ? "is missing" : "does not match it") +
           (count > 1 ? " (the first of " + std::to_string(count) + ")" : "");
  }

  /// Items that are not parts, which other ZIP programs unpack all the same.
  std::vector<std::string> otherItems() const {
    std::vector<std::string> names;
    for (const auto& list : {package_.strayItems(), package_.untypedItems()}) {
      for (const std::string& name : list) names.push_back(partNameOf(name));
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  std::vector<std::string> uncoveredBy(const std::vector<bool>& covered,
                                       const std::set<std::string>& exempt,
                                       const std::vector<std::string>& others) const {
    std::vector<std::string> names = others;
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      const std::string& name = targets_[i].part.name;
      if (!covered[i] && !exempt.contains(name)) names.push_back(name);
    }
    return names;
  }

  Package& package_;
  const interfaces::ITrustAnchors* anchors_;
  const ItemDigests* known_;
  const std::set<std::string>* only_;  // null for all
  Verification result_;
  std::vector<Target> targets_;
  std::vector<std::vector<bool>> covered_;  // by signature and target
  ByteBuffer buffer_;
};

}  // namespace

std::string_view nameOf(SignatureState state) {
  switch (state) {
    case SignatureState::Valid:
      return "valid";
    case SignatureState::Partial:
      return "partial";
    case SignatureState::Broken:
      return "broken";
    case SignatureState::Weak:
      return "weak";
    case SignatureState::Unsupported:
      break;
  }
  return "unsupported";
}

Verification verifySignatures(Package& package, const interfaces::ITrustAnchors* anchors,
                              const ItemDigests* known) {
  return Verifier(package, anchors, known).run();
}

Verification verifyParts(Package& package, const std::set<std::string>& names) {
  return Verifier(package, nullptr, nullptr, &names).run();
}

}  // namespace opc::signatures
