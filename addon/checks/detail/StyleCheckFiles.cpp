// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/CaselessTree.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/SecretSearch.h"
#include "addon/checks/detail/StyleCheck.h"
#include "addon/project/Patterns.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/plservices/TreePath.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::plservices::FileSystemEntry;
using opc::plservices::NodeId;
using packaging::AddonPackage;

namespace {

constexpr std::uint64_t kLargeSize = 10u << 20;  // bytes

constexpr std::size_t kMaxNameLength = 255;  // bytes, on all common file systems

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

class FileCheck {
 public:
  FileCheck(opc::plservices::FileSystemManager& files, Report& report,
            const std::vector<bool>& withoutSecrets, NodeId firstNew)
      : files_(files), report_(report), withoutSecrets_(withoutSecrets), firstNew_(firstNew) {
    project::addDefaultExcludes(excludes_);
  }

  void run() {
    const CaselessTree tree(files_, [this](const FileSystemEntry& entry,
                                           const FileSystemEntry* same) { visit(entry, same); });
    if (count_ == 0) report_.add(kNoFiles, "", kNoFilesMessage);
  }

 private:
  void visit(const FileSystemEntry& entry, const FileSystemEntry* same) {
    if (entry.isFile()) ++count_;
    const bool isAdded = entry.node() >= firstNew_;
    if (same != nullptr && (isAdded || same->node() >= firstNew_)) {
      const std::string other = report_.keeps(kCaseClash) ? same->path() : std::string();
      add(kCaseClash, entry, "it differs only in case from " + quoted(other));
    }
    if (!isAdded && !(entry.isFile() && isReplaced(entry.info()))) return;
    const std::string name = entry.name();
    if (isAdded) checkName(entry, name);
    if (entry.isFile()) checkFile(entry, name);
  }

  void checkName(const FileSystemEntry& entry, const std::string& name) {
    if (const auto fault = findPortabilityFault(name); !fault.empty()) {
      add(kNotPortable, entry,
          "the name " + quoted(name) + " is not portable: " + std::string(fault));
    }
    // The default patterns match names without folders. A folder stands for its content.
    if (!excludes_.excludes(name, !entry.isFile())) return;
    add(kExcludedFile, entry,
        entry.isFile() ? "builds leave out files like this" : "builds leave out folders like this");
  }

  void checkFile(const FileSystemEntry& file, const std::string& name) {
    const std::uint64_t size = file.info().size;
    if (size > kLargeSize) {
      add(kLargeFile, file, "the file has " + std::to_string(size) + " bytes, more than 10 MiB");
    }
    checkSecrets(file, name);
  }

  void checkSecrets(const FileSystemEntry& file, const std::string& name) {
    const auto& tree = files_.nodes();
    const SecretFile kind = secretFileOf(name, tree.name(tree.parent(file.node())));
    if (kind == SecretFile::Yes) {
      return add(kSecret, file, "files named " + quoted(name) + " are for passwords and keys");
    }
    if (kind != SecretFile::Settings && isWithoutSecrets(file)) return;
    isReadable([&] {
      const auto stream = files_.openFile(file);
      for (const Secret& secret : secrets_.find(*stream, kind)) {
        add(kSecret, file, "it contains " + std::string(secret.name), secret.line);
      }
    });
  }

  // The id of a part is the number of its item, unless it has several.
  bool isWithoutSecrets(const FileSystemEntry& file) const {
    const opc::model::PartId part = files_.nodes().part(file.node());
    return part < withoutSecrets_.size() && withoutSecrets_[part];
  }

  // Paths may be long in a hostile package, so those that the report drops are not built.
  void add(FindingId id, const FileSystemEntry& entry, const std::string& message,
           std::size_t line = 0) {
    const std::string path = report_.keeps(id) ? entry.path() : std::string();
    report_.add(id, path, message, line);
  }

  opc::plservices::FileSystemManager& files_;
  Report& report_;
  const std::vector<bool>& withoutSecrets_;
  NodeId firstNew_;
  project::PatternList excludes_;
  SecretSearch secrets_;
  std::uint64_t count_ = 0;
};

}  // namespace

std::string_view findPortabilityFault(std::string_view name) {
  if (name.size() > kMaxNameLength) return "it is longer than 255 bytes";
  if (name.find_first_of("<>:\"|?*\\") != std::string_view::npos) {
    return "it contains one of the characters < > : \" | ? * \\";
  }
  if (opc::plservices::hasControlCharacter(name)) return "it contains a control character";
  if (name.ends_with('.')) return "it ends in a dot";
  if (name.ends_with(' ')) return "it ends in a space";
  if (isDevice(name)) return "it is a device name on Windows";
  return "";
}

bool isReplaced(const opc::model::PartInfo& file) {
  return file.crc == 0 && file.size != 0;  // the checksum of new content is not known yet
}

void checkFiles(AddonPackage& package, Report& report, const std::vector<bool>& withoutSecrets,
                NodeId firstNew) {
  FileCheck(package.fileSystem(), report, withoutSecrets, firstNew).run();
}

}  // namespace addon::checks::detail
