// SPDX-License-Identifier: MIT
// Signed packages: whatever is changed, a package with valid and trusted signatures over everything
// has the content that was signed.
#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"
#include "fuzz/SignedContent.h"
#include "opc/Text.h"
#include "opc/signatures/Verification.h"
#include "opc/signatures/XmlSignatureLibrary.h"
#include "text/Sha256.h"

namespace {

using fuzz::require;
using opc::model::Package;

/// Whether it is a part that carries signatures, and lies where it may. The case of its name does
/// not count, since no signature covers it.
bool isCarrier(std::string_view cased, std::string_view type) {
  const std::string name = opc::toLowerAscii(cased);
  if (name.starts_with("/files/") || name.starts_with("/metadata/")) return false;
  return type.starts_with("application/vnd.openxmlformats-package.digital-signature-") ||
         (name.starts_with("/package/services/digital-signature/") && name.ends_with(".rels"));
}

std::string contentOf(Package& package) {
  std::vector<std::string> lines;
  const auto add = [&](const std::string& name, const std::string& type,
                       opc::InputStream& content) {
    if (isCarrier(name, type)) return;
    lines.push_back(name + '\0' + type + '\0' + text::sha256Of(content) + '\n');
  };
  package.visitParts("", [&](opc::model::PartId id) {
    add("/" + std::string(package.itemNameOf(id)), package.contentTypeOf(id).ascii(),
        *package.openPart(id));
  });
  for (const opc::model::RelationshipsItem& item : package.relationshipsItems()) {
    add("/" + item.name, std::string(package.typeOfRelationshipsItem(item.name).ascii()),
        *package.openRelationshipsItem(item.name));
  }
  std::sort(lines.begin(), lines.end());
  text::Sha256 sum;
  for (const std::string& line : lines) sum.update(line);
  return sum.finish();
}

bool isTrusted(const opc::signatures::Verification& found) {
  using opc::signatures::SignatureState;
  return found.isSigned() && found.faults.empty() && found.uncovered.empty() &&
         std::all_of(found.signatures.begin(), found.signatures.end(), [](const auto& one) {
           return one.state == SignatureState::Valid && one.xml.isTrusted.value_or(false);
         });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::MemoryFile file;
  static std::unique_ptr<opc::interfaces::ITrustAnchors> anchors;
  if (!anchors) opc::signatures::xmlSignatures().addAnchors(anchors, "root", fuzz::kTrusted);
  file.fill(fuzz::textOf(data, size));

  fuzz::isAccepted([&] {
    addon::packaging::AddonPackage package(opc::fromUtf8(file.path()));
    Package& logical = package.logicalPackage();
    logical.open(opc::interfaces::OpenMode::Read);
    const auto found = opc::signatures::verifySignatures(logical, anchors.get());
    for (const auto& one : found.signatures) {
      require(opc::isUtf8(one.reason), "a reason is UTF-8");
      require(one.isValid() || !one.reason.empty(), "a signature that is not valid says why");
    }
    if (isTrusted(found)) {
      require(contentOf(logical) == fuzz::kSignedContent, "what is trusted is what was signed");
    }
  });
  return 0;
}
