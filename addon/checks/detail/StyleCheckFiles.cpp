// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/CaselessTree.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/StyleCheck.h"
#include "addon/project/Patterns.h"
#include "opc/Streams.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/plservices/TreePath.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::plservices::FileSystemEntry;
using packaging::AddonPackage;

namespace {

constexpr std::uint64_t kLargeSize = 10u << 20;  // bytes
constexpr std::size_t kKeySearch = 8192;         // bytes at the start of a file

constexpr std::size_t kLongestName = 255;  // bytes, on all common file systems

// Devices on Windows, with any extension.
constexpr std::array<std::string_view, 28> kDevices{
    "con",  "prn",  "aux",  "nul",  "com1", "com2", "com3", "com4", "com5", "com6",
    "com7", "com8", "com9", "lpt1", "lpt2", "lpt3", "lpt4", "lpt5", "lpt6", "lpt7",
    "lpt8", "lpt9", "com¹", "com²", "com³", "lpt¹", "lpt²", "lpt³"};

bool isDevice(std::string_view name) {
  std::string_view stem = name.substr(0, name.find('.'));
  while (stem.ends_with(' ')) stem.remove_suffix(1);
  const std::string lower = opc::toLowerAscii(stem);
  return std::find(kDevices.begin(), kDevices.end(), lower) != kDevices.end();
}

constexpr std::array<std::string_view, 6> kKeyNames{"id_rsa",     "id_dsa",      "id_ecdsa",
                                                    "id_ed25519", "id_ecdsa_sk", "id_ed25519_sk"};
constexpr std::array<std::string_view, 3> kKeyExtensions{".pem", ".key", ".ppk"};
constexpr std::array<std::string_view, 3> kSecretNames{".env", ".netrc", "_netrc"};

bool isSecretName(std::string_view name) {
  const std::string lower = opc::toLowerAscii(name);
  return std::find(kSecretNames.begin(), kSecretNames.end(), lower) != kSecretNames.end() ||
         std::find(kKeyNames.begin(), kKeyNames.end(), lower) != kKeyNames.end();
}

bool isKeyName(std::string_view name) {
  const std::string lower = opc::toLowerAscii(name);
  return std::any_of(kKeyExtensions.begin(), kKeyExtensions.end(),
                     [&](std::string_view extension) { return lower.ends_with(extension); });
}

bool beginsWithPrivateKey(std::string_view text) {
  if (text.starts_with("PuTTY-User-Key-File-")) return true;
  constexpr std::string_view kBegin = "-----BEGIN ";
  constexpr std::string_view kKey = "PRIVATE KEY-----";
  // Programs write attributes and certificates before it.
  for (std::size_t at = text.find(kBegin); at != std::string_view::npos;
       at = text.find(kBegin, at + 1)) {
    const std::string_view line = text.substr(at, text.find_first_of("\r\n", at) - at);
    if (line.find(kKey) != std::string_view::npos) return true;
  }
  return false;
}

class FileCheck {
 public:
  FileCheck(opc::plservices::FileSystemManager& files, Report& report)
      : files_(files), report_(report) {
    project::addDefaultExcludes(excludes_);
  }

  void run() {
    const CaselessTree tree(files_, [this](const FileSystemEntry& entry,
                                           const FileSystemEntry* same) { visit(entry, same); });
    if (count_ == 0) report_.add(kNoFiles, "", "the add-on has no files");
  }

 private:
  void visit(const FileSystemEntry& entry, const FileSystemEntry* same) {
    const std::string name = entry.name();
    if (same != nullptr) {
      const std::string other = report_.keeps(kCaseClash) ? same->path() : std::string();
      add(kCaseClash, entry, "it differs only in case from " + quoted(other));
    }
    if (const auto fault = findPortabilityFault(name); !fault.empty()) {
      add(kNotPortable, entry,
          "the name " + quoted(name) + " is not portable: " + std::string(fault));
    }
    checkExcluded(entry, name);
    if (entry.isFile()) checkFile(entry, name);
  }

  // The default patterns match names without folders. A folder stands for its content.
  void checkExcluded(const FileSystemEntry& entry, const std::string& name) {
    if (!excludes_.excludes(name, !entry.isFile())) return;
    add(kExcludedFile, entry,
        entry.isFile() ? "builds leave out files like this" : "builds leave out folders like this");
  }

  void checkFile(const FileSystemEntry& file, const std::string& name) {
    ++count_;
    const std::uint64_t size = file.info().size;
    if (size > kLargeSize) {
      add(kLargeFile, file, "the file has " + std::to_string(size) + " bytes, more than 10 MiB");
    }
    if (isSecretName(name)) {
      add(kSecret, file, "files named " + quoted(name) + " are for passwords and keys");
    } else if (isKeyName(name) && holdsPrivateKey(file)) {
      add(kSecret, file, "the file contains a private key");
    }
  }

  bool holdsPrivateKey(const FileSystemEntry& file) {
    std::array<unsigned char, kKeySearch> bytes{};
    std::size_t size = 0;
    isReadable([&] {
      const auto stream = files_.openFile(file);
      while (size < bytes.size()) {
        const std::size_t count = stream->read(bytes.data() + size, bytes.size() - size);
        if (count == 0) break;
        size += count;
      }
    });
    return beginsWithPrivateKey({reinterpret_cast<const char*>(bytes.data()), size});
  }

  // Paths may be long in a hostile package, so those that the report drops are not built.
  void add(FindingId id, const FileSystemEntry& entry, const std::string& message) {
    const std::string path = report_.keeps(id) ? entry.path() : std::string();
    report_.add(id, path, message);
  }

  opc::plservices::FileSystemManager& files_;
  Report& report_;
  project::PatternList excludes_;
  std::uint64_t count_ = 0;
};

}  // namespace

std::string_view findPortabilityFault(std::string_view name) {
  if (name.size() > kLongestName) return "it is longer than 255 bytes";
  if (name.find_first_of("<>:\"|?*\\") != std::string_view::npos) {
    return "it contains one of the characters < > : \" | ? * \\";
  }
  if (opc::plservices::hasControlCharacter(name)) return "it contains a control character";
  if (name.ends_with('.')) return "it ends in a dot";
  if (name.ends_with(' ')) return "it ends in a space";
  if (isDevice(name)) return "it is a device name on Windows";
  return "";
}

void checkFiles(AddonPackage& package, Report& report) {
  FileCheck(package.fileSystem(), report).run();
}

}  // namespace addon::checks::detail
