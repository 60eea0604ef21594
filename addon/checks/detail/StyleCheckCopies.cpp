// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/StyleCheck.h"
#include "opc/checks/Finding.h"
#include "text/Sha256.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::plservices::FileSystemEntry;
using packaging::AddonPackage;

namespace {

constexpr std::uint64_t kSmallest = 64u << 10;  // bytes; copies of smaller files cost nothing

/// Reports the copies among the files of one size and checksum. A checksum can be forged, so only
/// the bytes decide.
class CopyCheck {
 public:
  CopyCheck(AddonPackage& package, Report& report, const std::vector<bool>& withoutSecrets)
      : package_(package), report_(report), withoutSecrets_(withoutSecrets) {}

  void check(const std::vector<FileSystemEntry>& group) {
    if (arePackedAlike(group)) {
      for (std::size_t i = 1; i < group.size(); ++i) add(group[i], group[0]);
      return;
    }
    std::unordered_map<std::string, const FileSystemEntry*> seen;
    for (const FileSystemEntry& file : group) {
      std::string hash;
      if (!isReadable([&] { hash = text::sha256Of(*package_.fileSystem().openFile(file)); }))
        continue;
      const auto [original, isNew] = seen.emplace(hash, &file);
      if (!isNew) add(file, *original->second);
    }
  }

 private:
  // What has been searched for secrets has been unpacked, so that it is sound.
  bool arePackedAlike(const std::vector<FileSystemEntry>& group) {
    const opc::model::PartInfo first = group[0].info();
    const opc::model::PartId part = package_.fileSystem().partOf(group[0]);
    if (part >= withoutSecrets_.size() || !withoutSecrets_[part]) return false;
    const auto bytes = packedBytes(group[0], first);
    const std::vector<unsigned char> packed(bytes.begin(), bytes.end());
    if (packed.size() != first.packedSize) return false;
    return std::all_of(group.begin() + 1, group.end(), [&](const FileSystemEntry& file) {
      const opc::model::PartInfo info = file.info();
      if (info.compressed != first.compressed || info.packedSize != first.packedSize) return false;
      const auto other = packedBytes(file, info);
      return std::equal(packed.begin(), packed.end(), other.begin(), other.end());
    });
  }

  /// Nothing if they cannot be read.
  std::span<const unsigned char> packedBytes(const FileSystemEntry& file,
                                             const opc::model::PartInfo& info) {
    std::span<const unsigned char> bytes;
    isReadable([&] {
      bytes = package_.logicalPackage().packedBytes(package_.fileSystem().partOf(file), 0,
                                                    static_cast<std::size_t>(info.packedSize));
    });
    return bytes;
  }

  void add(const FileSystemEntry& copy, const FileSystemEntry& original) {
    report_.add(kDuplicateContent, copy.path(),
                "the file is the same as " + quoted(original.path()) + ", " +
                    std::to_string(copy.info().size) + " bytes");
  }

  AddonPackage& package_;
  Report& report_;
  const std::vector<bool>& withoutSecrets_;
};

}  // namespace

void checkCopies(AddonPackage& package, Report& report, const std::vector<bool>& withoutSecrets) {
  std::map<std::pair<std::uint64_t, std::uint32_t>, std::vector<FileSystemEntry>> groups;
  package.fileSystem().visitFiles([&](std::string_view, const FileSystemEntry& entry) {
    if (!entry.isFile()) return;
    const opc::model::PartInfo info = entry.info();
    if (info.size > kSmallest) groups[{info.size, info.crc}].push_back(entry);
  });
  CopyCheck check(package, report, withoutSecrets);
  for (const auto& [key, group] : groups) {
    if (group.size() > 1) check.check(group);
  }
}

}  // namespace addon::checks::detail
