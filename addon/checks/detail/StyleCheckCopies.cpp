// SPDX-License-Identifier: MIT
#include <map>
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

// Reports the copies among files of one size and checksum. A checksum can be forged, so only the
// bytes decide.
void checkGroup(opc::plservices::FileSystemManager& files, std::uint64_t size,
                const std::vector<FileSystemEntry>& group, Report& report) {
  std::unordered_map<std::string, const FileSystemEntry*> seen;
  for (const FileSystemEntry& file : group) {
    std::string hash;
    if (!isReadable([&] { hash = text::sha256Of(*files.openFile(file)); })) continue;
    const auto [original, isNew] = seen.emplace(hash, &file);
    if (isNew) continue;
    report.add(kDuplicateContent, file.path(),
               "the file is the same as " + quoted(original->second->path()) + ", " +
                   std::to_string(size) + " bytes");
  }
}

}  // namespace

void checkCopies(AddonPackage& package, Report& report) {
  auto& files = package.fileSystem();
  std::map<std::pair<std::uint64_t, std::uint32_t>, std::vector<FileSystemEntry>> groups;
  files.visitFiles([&](std::string_view, const FileSystemEntry& entry) {
    if (!entry.isFile()) return;
    const opc::model::PartInfo info = entry.info();
    if (info.size > kSmallest) groups[{info.size, info.crc}].push_back(entry);
  });
  for (const auto& [key, group] : groups) {
    if (group.size() > 1) checkGroup(files, key.first, group, report);
  }
}

}  // namespace addon::checks::detail
