// SPDX-License-Identifier: MIT
#include <sha2.h>

#include <array>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/StyleCheck.h"
#include "opc/Streams.h"
#include "opc/checks/Finding.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::plservices::FileSystemEntry;
using packaging::AddonPackage;

namespace {

constexpr std::uint64_t kSmallest = 64u << 10;  // bytes; copies of smaller files cost nothing
constexpr std::size_t kReadStep = 65536;        // bytes

std::string hashOf(opc::InputStream& stream) {
  std::vector<unsigned char> buffer(kReadStep);
  SHA2_CTX context;
  ::SHA256Init(&context);
  while (const std::size_t size = stream.read(buffer.data(), buffer.size())) {
    ::SHA256Update(&context, buffer.data(), size);
  }
  std::array<std::uint8_t, SHA256_DIGEST_LENGTH> hash{};
  ::SHA256Final(hash.data(), &context);
  return {hash.begin(), hash.end()};
}

// Reports the copies among files of one size and checksum. A checksum can be forged, so only the
// bytes decide.
void checkGroup(opc::plservices::FileSystemManager& files, std::uint64_t size,
                const std::vector<FileSystemEntry>& group, Report& report) {
  std::unordered_map<std::string, const FileSystemEntry*> seen;
  for (const FileSystemEntry& file : group) {
    std::string hash;
    if (!isReadable([&] { hash = hashOf(*files.openFile(file)); })) continue;
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
