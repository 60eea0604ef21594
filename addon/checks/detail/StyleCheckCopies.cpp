// SPDX-License-Identifier: MIT
#include <sha2.h>

#include <algorithm>
#include <array>
#include <string>
#include <tuple>
#include <unordered_map>
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

struct Candidate {
  std::uint64_t size;
  std::uint32_t crc;
  std::size_t position;  // in the tree's order
  FileSystemEntry file;

  auto key() const { return std::tuple(size, crc); }
  bool isBefore(const Candidate& other) const {
    return std::tuple(size, crc, position) < std::tuple(other.size, other.crc, other.position);
  }
};

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

std::vector<Candidate> largeFiles(opc::plservices::FileSystemManager& files) {
  std::vector<Candidate> found;
  std::size_t position = 0;
  files.visitFiles([&](std::string_view, const FileSystemEntry& entry) {
    if (!entry.isFile()) return;
    const opc::model::PartInfo info = entry.info();
    if (info.size > kSmallest) found.push_back({info.size, info.crc, position++, entry});
  });
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.isBefore(b); });
  return found;
}

// Files with the same size and checksum. A checksum can be forged, so only the bytes decide.
template <typename Iterator>
void checkGroup(opc::plservices::FileSystemManager& files, Iterator first, Iterator last,
                Report& report) {
  std::unordered_map<std::string, const FileSystemEntry*> seen;
  for (; first != last; ++first) {
    std::string hash;
    if (!isReadable([&] { hash = hashOf(*files.openFile(first->file)); })) continue;
    const auto [original, isNew] = seen.emplace(hash, &first->file);
    if (isNew) continue;
    report.add(kDuplicateContent, first->file.path(),
               "the file is the same as " + quoted(original->second->path()) + ", " +
                   std::to_string(first->size) + " bytes");
  }
}

}  // namespace

void checkCopies(AddonPackage& package, Report& report) {
  auto& files = package.fileSystem();
  const std::vector<Candidate> candidates = largeFiles(files);
  for (auto first = candidates.begin(); first != candidates.end();) {
    const auto last = std::find_if(first, candidates.end(), [&](const Candidate& candidate) {
      return candidate.key() != first->key();
    });
    if (last - first > 1) checkGroup(files, first, last, report);
    first = last;
  }
}

}  // namespace addon::checks::detail
