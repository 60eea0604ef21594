// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "opc/checks/PackageVerification.h"
#include "opc/checks/Report.h"
#include "tests/support/ZipBuilder.h"

namespace test {

/// A small valid package for tests to break: content types, the package's relationships with one to
/// "a.xml", that part, and "b.m".
struct PackageUnderTest {
  PackageUnderTest();

  ZipBuilder zip;

  ZipItem& types() { return zip.items[0]; }
  ZipItem& relationships() { return zip.items[1]; }
  ZipItem& part() { return zip.items[2]; }
  ZipItem& last() { return zip.items.back(); }

  /// Content types with the usual defaults, and `more`.
  void setTypes(std::string_view more);
  /// The package's relationships: the usual one, and `more`.
  void setRelationships(std::string_view more);
  /// A part of core properties with this content, and the relationship to it.
  void addCore(std::string_view properties);
  ZipItem& add(std::string name, std::string content = "data");

  opc::checks::Report check() const;
};

/// Verifies the bytes of a package.
opc::checks::Report verifyBytes(const std::string& bytes);

/// A change that causes one finding and no other.
struct PackageCase {
  std::uint16_t number;
  const char* name;  ///< of the case, unique for its number
  const char* rule;
  std::string part;
  std::function<void(PackageUnderTest&)> change;
  std::size_t count = 1;
};

std::span<const PackageCase> containerCases();
std::span<const PackageCase> ambiguityCases();
std::span<const PackageCase> packagingCases();
std::span<const PackageCase> relationshipCases();

}  // namespace test
