// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/PackageRecord.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "addon/catalogue/Limits.h"
#include "addon/catalogue/SitePaths.h"
#include "addon/comparison/Contents.h"
#include "addon/comparison/Digest.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "addon/packaging/Documents.h"
#include "addon/packaging/ImageSignature.h"
#include "opc/Text.h"
#include "opc/plservices/W3cDateTime.h"
#include "opc/signatures/Verification.h"
#include "text/ByteCount.h"
#include "text/Sha256.h"

namespace addon::catalogue::detail {

using opc::signatures::ItemDigests;
using packaging::AddonPackage;

namespace {

std::string utf8(const std::u16string& text) {
  return opc::toUtf8ForDisplay(text);
}

template <typename Time>
std::string timeText(const Time& time) {
  return time && !time->is_special() ? opc::plservices::formatTime(*time) : std::string();
}

void addRequirements(const char* kind, const std::vector<packaging::ProductDependency>& needed,
                     Record& record) {
  for (const packaging::ProductDependency& each : needed) {
    record.requirements.push_back(
        {kind, utf8(each.name), utf8(each.version), utf8(each.identifier)});
  }
}

/// The certificates behind the valid signatures, each once, in order.
std::vector<std::string> signersOf(AddonPackage& package) {
  std::vector<std::string> signers;
  auto& model = package.logicalPackage();
  if (opc::signatures::countSignatures(model) == 0) return signers;
  for (const auto& signature : opc::signatures::verifySignatures(model, nullptr).signatures) {
    if (signature.isValid() && signature.xml.signer) {
      signers.push_back(signature.xml.signer->fingerprint);
    }
  }
  std::sort(signers.begin(), signers.end());
  signers.erase(std::unique(signers.begin(), signers.end()), signers.end());
  return signers;
}

void readProperties(AddonPackage& package, Record& record) {
  packaging::AddonProperties properties;
  package.getAddonProperties(properties);
  record.guid = utf8(properties.GUID);
  record.name = utf8(properties.name);
  record.version = utf8(properties.version);
  record.release = utf8(properties.KorvanRelease);
  record.summary = utf8(properties.summary);
  record.description = utf8(properties.description);
  record.author = utf8(properties.authorName);
  record.organization = utf8(properties.authorOrganization);
}

/// The digest of the content, for which nothing is read again.
std::string digestOf(AddonPackage& package, const std::vector<comparison::Item>& items,
                     const ItemDigests& digests, const opc::interfaces::StopFunction& stop) {
  const auto hash = [&](const comparison::Item& file, const auto& onRead) {
    const auto item = comparison::containerItem(package, file);
    const auto digest = item ? digests.find(*item) : std::nullopt;
    if (!digest) return text::sha256Of(*comparison::openItem(package, file), onRead);
    return text::hexadecimal(*digest);
  };
  const auto check = [&](const opc::interfaces::Progress&) {
    if (stop) stop();
  };
  return comparison::contentDigest(package, items, comparison::hashFiles(items, check, hash));
}

void requireShort(const Record& record) {
  const std::size_t size = toLine(record).size();
  if (size <= kMaxRecordSize) return;
  throw opc::Exception(opc::ErrorCode::TooLarge,
                       fmt::format("its texts take {}, and a record may have at most {}",
                                   text::describeBytes(size), text::describeBytes(kMaxRecordSize)));
}

}  // namespace

std::string whyTooLarge(AddonPackage& package) {
  const auto& container = package.logicalPackage().physical();
  const std::size_t count = container.itemCount();
  if (count > kMaxItems) {
    return fmt::format("it has {} entries, and may have at most {}", count, kMaxItems);
  }
  std::uint64_t left = kMaxContentSize;
  for (std::size_t item = 0; item < count; ++item) {
    const std::uint64_t size = container.itemInfo(item).size;
    if (size > left) {
      return fmt::format("it unpacks to more than {}", text::describeBytes(kMaxContentSize));
    }
    left -= size;
  }
  return {};
}

void readIdentity(AddonPackage& package, Record& record) {
  packaging::AddonProperties properties;
  package.getAddonProperties(properties);
  record.guid = utf8(properties.GUID);
  record.version = utf8(properties.version);
}

Record describe(AddonPackage& package, std::string_view sha256, const ItemDigests& digests,
                const opc::interfaces::StopFunction& stop) {
  Record record;
  readProperties(package, record);
  if (record.guid.empty() || record.version.empty()) {
    throw opc::Exception(opc::ErrorCode::InvalidPackage,
                         record.guid.empty() ? "it has no GUID" : "it has no version");
  }
  packaging::AddonLicense license;
  package.getLicense(license);
  record.license = utf8(license.type);
  packaging::AddonSystemRequirements requirements;
  packaging::loadDocument(package, requirements);
  addRequirements("product", requirements.productDependencies, record);
  addRequirements("supportPackage", requirements.supportPackageDependencies, record);
  const auto core = package.coreProperties().getCoreProperties();
  record.created = timeText(core.getCreatedTime());
  record.modified = timeText(core.getLastModifiedTime());
  record.size = package.physicalPackage().fileSize();
  record.sha256 = sha256;
  const std::vector<comparison::Item> items = comparison::readTree(package);
  const comparison::Totals totals = comparison::totalsOf(items);
  record.files = totals.files;
  record.folders = totals.folders;
  record.bytes = totals.bytes;
  record.digest = digestOf(package, items, digests, stop);
  record.signers = signersOf(package);
  record.package = hashedPath(kPackageFolder, sha256, packaging::kPackageExtension);
  record.page = pageFolder(record.guid, record.version) + "/index.html";
  requireShort(record);
  return record;
}

Image readScreenshot(AddonPackage& package) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kExtensions{
      {{"image/png", ".png"},
       {"image/jpeg", ".jpg"},
       {"image/gif", ".gif"},
       {"image/webp", ".webp"},
       {"image/bmp", ".bmp"}}};
  const std::string name = packaging::screenshotPart(package);
  auto& model = package.logicalPackage();
  if (name.empty()) return {};
  const opc::model::PartName part(opc::fromUtf8(name));
  if (!model.hasPart(part)) return {};
  if (model.partInfo(model.getPart(part)->id()).size > kMaxImageSize) return {};
  const std::vector<unsigned char> bytes = package.getScreenshot();
  const std::string_view type = packaging::imageTypeOf(bytes);
  const auto* const found = std::find_if(kExtensions.begin(), kExtensions.end(),
                                         [&](const auto& each) { return each.first == type; });
  if (found == kExtensions.end()) return {};
  return {std::string(bytes.begin(), bytes.end()), std::string(found->second)};
}

}  // namespace addon::catalogue::detail
