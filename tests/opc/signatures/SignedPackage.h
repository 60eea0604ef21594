// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "opc/signatures/Signing.h"
#include "opc/signatures/Verification.h"
#include "tests/opc/model/PackageFixture.h"
#include "tests/opc/signatures/TestKeys.h"

namespace test {

inline constexpr const char* kOriginItem = "package/services/digital-signature/origin.psdsor";
inline constexpr const char* kOriginRelationshipsItem =
    "package/services/digital-signature/_rels/origin.psdsor.rels";

/// A package with "/files/a.m", "/files/b%20c.m" and a relationship of the package to the first
/// one.
struct SignedPackage : MemoryPackage {
  SignedPackage() {
    with("_rels/.rels", relationshipsXml(relationshipXml("r1", "/files/a.m")));
    with("files/a.m", "x = 1;\n").with("files/b%20c.m", "y = 2;\n");
  }

  /// Returns the name of the signature part.
  std::string sign(const TestKeys& keys) {
    package.open(opc::interfaces::OpenMode::Modify);
    std::string name = opc::signatures::addSignature(package, keys.signer(), kSigningTime);
    package.close(false);
    return name;
  }

  opc::signatures::Verification verify(const opc::interfaces::ITrustAnchors* anchors = nullptr) {
    package.open(opc::interfaces::OpenMode::Read);
    auto verified = opc::signatures::verifySignatures(package, anchors);
    package.close(true);
    return verified;
  }

  void replace(const std::string& item, std::string bytes) {
    const auto at = std::find_if(disk.items->begin(), disk.items->end(),
                                 [&](const MemoryItem& one) { return one.name == item; });
    at->bytes = std::move(bytes);
  }

  void remove(const std::string& item) {
    std::erase_if(*disk.items, [&](const MemoryItem& one) { return one.name == item; });
  }
};

inline const TestKeys& ada() {
  static const TestKeys keys("Ada");
  return keys;
}

/// One that Ada has signed.
struct PackageOfAda : SignedPackage {
  std::string name = sign(ada());  ///< of the signature part
};

}  // namespace test
