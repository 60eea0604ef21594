// SPDX-License-Identifier: MIT
#include <array>
#include <string>
#include <string_view>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/CaselessTree.h"
#include "addon/checks/detail/Readable.h"
#include "addon/checks/detail/StyleCheck.h"
#include "addon/project/Patterns.h"
#include "opc/Streams.h"
#include "opc/checks/Finding.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::plservices::FileSystemEntry;
using packaging::AddonPackage;

namespace {

constexpr std::uint64_t kLargeSize = 10u << 20;  // bytes
constexpr std::size_t kKeySearch = 8192;         // bytes at the start of a file

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
      add(kCaseClash, entry, "only the case of letters tells it from " + quoted(other));
    }
    if (const auto fault = findPortabilityFault(name); !fault.empty()) {
      add(kNotPortable, entry,
          "the name " + quoted(name) + " does not go everywhere: " + std::string(fault));
    }
    checkExcluded(entry, name);
    if (entry.isFile()) checkFile(entry, name);
  }

  // The default patterns look at a name alone. A folder stands for what is in it.
  void checkExcluded(const FileSystemEntry& entry, const std::string& name) {
    if (!excludes_.excludes(name, !entry.isFile())) return;
    add(kExcludedFile, entry,
        entry.isFile() ? "add-ons are built without files like this"
                       : "add-ons are built without folders like this");
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
      add(kSecret, file, "the file holds a private key");
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

  // Paths are long in a hostile package, so those that the report drops are never put together.
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

void checkFiles(AddonPackage& package, Report& report) {
  FileCheck(package.fileSystem(), report).run();
}

}  // namespace addon::checks::detail
