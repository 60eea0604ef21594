// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/opc/conformance/support/PackageSpec.h"
#include "tests/opc/conformance/support/ReadPackage.h"

namespace test::conformance {

/// What becomes of the package when it is opened and read.
enum class Reading {
  Accepted,
  Ignored,  ///< accepted, and the item that was added last is not a part
  Refused,  ///< on opening
  RefusedOnUse,
};

/// The worst that a check of the package may say of it.
enum class Verified { Silent, Warning, Error };

/// A rule's consequence for one package.
struct Case {
  const char* rule;  ///< "PN-6"
  const char* name;  ///< what is so
  Reading reading;
  Verified verified;
  std::function<void(PackageSpec&)> change;
  std::function<void(const ReadPackage&)> check = nullptr;
  const char* carried = nullptr;  ///< the rule that fault and finding name, when it is another one
};

std::vector<Case> partNameCases();
std::vector<Case> contentTypeCases();
std::vector<Case> relationshipCases();
std::vector<Case> corePropertyCases();
std::vector<Case> thumbnailAndSignatureCases();
std::vector<Case> xmlCases();
std::vector<Case> zipCases();
std::vector<Case> interleavingCases();
std::vector<Case> robustnessCases();
std::vector<Case> ambiguityCases();

std::vector<Case> allCases();
/// "RulePN6" for the rule "PN-6".
std::string suiteOf(const std::string& prefix, const Case& one);

/// Changes that tables are made of.
inline auto item(std::string name, std::string content = "data") {
  return [=](PackageSpec& p) { p.add(name, content); };
}
inline auto types(std::string children) {
  return [=](PackageSpec& p) { p.types = children; };
}
inline auto wholeTypes(std::string document) {
  return [=](PackageSpec& p) { p.wholeTypes = document; };
}
inline auto relations(std::string children) {
  return [=](PackageSpec& p) { p.relationships = children; };
}
inline auto wholeRelations(std::string document) {
  return [=](PackageSpec& p) { p.wholeRelations = document; };
}
inline auto core(std::string children) {
  return [=](PackageSpec& p) { p.core = children; };
}
inline auto wholeCore(std::string document) {
  return [=](PackageSpec& p) { p.wholeCore = document; };
}
inline auto nothing() {
  return [](PackageSpec&) {};
}

}  // namespace test::conformance
