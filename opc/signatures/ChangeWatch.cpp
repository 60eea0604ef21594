// SPDX-License-Identifier: MIT
#include "opc/signatures/ChangeWatch.h"

#include <algorithm>

#include "opc/Exception.h"
#include "opc/signatures/SignatureParts.h"
#include "opc/signatures/Verification.h"

namespace opc::signatures {

ChangeWatch::ChangeWatch(model::Package& package) : package_(package) {
  if (!package.getRelationshipsByType(kOriginRelationship).empty()) before_ = parts();
}

bool ChangeWatch::hasBroken() const {
  if (!before_) return false;
  const std::set<std::string> changed = namesOfChanged(parts());
  if (changed.empty()) return false;
  try {
    const Verification verified = verifyParts(package_, changed);
    if (!verified.isSigned() || !verified.faults.empty()) return true;
    const auto isBroken = [&](const Signature& one) {
      if (one.state == SignatureState::Unsupported || changed.contains(one.part)) return true;
      // Not valid before either, whatever the parts.
      if (one.xml.state == SignatureState::Broken || one.xml.isOutdated) return false;
      return std::any_of(one.changed.begin(), one.changed.end(),
                         [&](const std::string& name) { return changed.contains(name); });
    };
    // A new part makes all signatures partial, unless one of them covers it.
    const auto isUncovered = [&](const std::string& name) {
      return !before_->contains(name) &&
             std::all_of(verified.signatures.begin(), verified.signatures.end(),
                         [&](const Signature& one) {
                           return std::find(one.uncovered.begin(), one.uncovered.end(), name) !=
                                  one.uncovered.end();
                         });
    };
    return std::any_of(verified.signatures.begin(), verified.signatures.end(), isBroken) ||
           std::any_of(changed.begin(), changed.end(), isUncovered);
  } catch (const SystemError&) {
    throw;
  } catch (const Exception&) {
    return true;  // such as for want of the library
  }
}

ChangeWatch::Parts ChangeWatch::parts() const {
  Parts parts;
  for (SignablePart& part : signableParts(package_)) {
    Known known{std::move(part.type), part.id, std::nullopt};
    if (!part.isRelationships()) {
      known.item = package_.itemOf(*part.id);
      if (!known.item) known.id.reset();
    }
    parts.insert_or_assign(std::move(part.name), std::move(known));
  }
  return parts;
}

std::set<std::string> ChangeWatch::namesOfChanged(const Parts& now) const {
  std::set<std::string> names;
  for (const auto& [name, part] : now) {
    const auto old = before_->find(name);
    if (old == before_->end() || !part.id || old->second != part) names.insert(name);
  }
  for (const auto& [name, part] : *before_) {
    if (!now.contains(name)) names.insert(name);
  }
  return names;
}

}  // namespace opc::signatures
