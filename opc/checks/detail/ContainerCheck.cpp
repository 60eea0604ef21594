// SPDX-License-Identifier: MIT
#include "opc/checks/detail/ContainerCheck.h"

#include <unicode/normalizer2.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/checks/PackageFindings.h"
#include "opc/checks/Report.h"
#include "opc/checks/detail/FaultFindings.h"
#include "opc/model/NameCharacters.h"
#include "opc/model/PartName.h"
#include "opc/plservices/TreePath.h"
#include "opc/zippackage/HeaderMarks.h"
#include "opc/zippackage/ItemInfoOf.h"

namespace opc::checks::detail {

using interfaces::ItemKind;
using zippackage::kNoEntry;
using zippackage::PackageFile;
using zippackage::ZipDirectory;
using zippackage::ZipEntry;
using zippackage::ZipFault;
using zippackage::ZipFaultKind;
using zippackage::ZipFaultSeverity;

namespace {

constexpr std::uint64_t kUnsuspiciousSize = std::uint64_t{64} << 20;  // bytes
constexpr std::uint64_t kUnsuspiciousRatio = 200;

struct Oddity {
  const char* rule = nullptr;  // null for none
  const char* why = nullptr;   // "contains ..."
};

bool hasDrive(std::string_view name) {
  return name.size() >= 2 && name[1] == ':' && isAsciiLetter(name[0]);
}

Oddity findOddity(std::string_view name) {
  if (name.starts_with('/')) return {"RB-12", "begins with a slash"};
  if (name.find('\\') != std::string_view::npos) return {"RB-12", "contains a backslash"};
  if (hasDrive(name)) return {"RB-12", "begins with a drive letter"};
  if (plservices::hasControlCharacter(name)) {
    return {"RB-13", "contains a control character"};
  }
  if (const char* fault = plservices::findUnpackingFault(name)) return {"RB-15", fault};
  return {};
}

// Faults of the file name that a part name encodes.
Oddity findEncodedOddity(std::string_view name) {
  if (name.find('%') == std::string_view::npos || model::findNameFault(name) != nullptr) {
    return {};
  }
  try {
    if (plservices::hasControlCharacter(model::percentDecodePath(name))) {
      return {"RB-13", "encodes a control character"};
    }
    return {};
  } catch (const FormatError&) {
    return {"RB-13", "encodes bytes that are not UTF-8"};
  }
}

// Some programs compose the characters of the names that they unpack, or drop a byte order mark.
bool isKept(std::string_view name) {
  if (name.starts_with("\xEF\xBB\xBF")) return false;
  UErrorCode error = U_ZERO_ERROR;
  const icu::Normalizer2* composer = icu::Normalizer2::getNFCInstance(error);
  if (U_FAILURE(error)) return false;
  const bool result =
      composer->isNormalizedUTF8({name.data(), static_cast<std::int32_t>(name.size())}, error);
  return U_SUCCESS(error) && result;
}

void checkNotAscii(std::string_view name, const zippackage::CentralHeader& header, Report& report) {
  const std::string why = "the name contains non-ASCII characters";
  const int host = header.madeBy >> 8;
  if ((header.flags & zippackage::kFlagUtf8) == 0) {
    report.addAmbiguous(kNameNotAscii, name, why + " and is not marked as UTF-8", "ZP-3");
  } else if (host != zippackage::kHostUnix && host != zippackage::kHostDarwin) {
    report.addAmbiguous(kNameNotAscii, name,
                        why + ", which some programs decode as those of the system that made it",
                        "ZP-3");
  } else if (!isKept(name)) {
    report.addAmbiguous(kNameNotAscii, name, why + " that some programs change", "ZP-3");
  } else {
    report.addClipped(kNameNotAscii, name, why, "ZP-3");
  }
}

// Returns whether no part can have the name, which a finding then reports. `stored` is the bytes of
// the name in the file.
bool checkItemName(std::string_view name, std::string_view stored,
                   const zippackage::CentralHeader& header, Report& report) {
  if (!isAscii(stored)) checkNotAscii(name, header, report);
  const Oddity oddity = findOddity(name);
  if (oddity.rule != nullptr) {
    report.addAmbiguous(kUnsafeName, name, std::string("the name ") + oddity.why, oddity.rule);
    return true;
  }
  const Oddity encoded = findEncodedOddity(name);
  if (encoded.rule != nullptr) {
    report.addClipped(kUnsafeName, name, std::string("the name ") + encoded.why, encoded.rule);
  }
  return false;
}

class ContainerCheck {
 public:
  ContainerCheck(const ZipDirectory& directory, Report& report)
      : directory_(directory), report_(report), states_(directory.entries().size()) {}

  std::vector<ItemState> run(const PackageFile& file, Reading& reading) {
    for (const ZipFault& fault : directory_.faults()) takeFault(file, fault);
    checkComment(directory_.location().comment, "");
    for (std::size_t entry = 0; entry < states_.size(); ++entry) checkEntry(entry);
    checkItemData(file, directory_, reading, states_, report_);
    for (std::size_t entry = 0; entry < states_.size(); ++entry) checkRatio(entry);
    return std::move(states_);
  }

 private:
  void takeFault(const PackageFile& file, const ZipFault& fault) {
    // ItemDataCheck reports gaps between items, since it knows where the items really end.
    const bool isGap =
        fault.kind == ZipFaultKind::UnusedBytes && fault.first < directory_.location().offset;
    const std::optional<FindingId> id = isGap ? std::nullopt : findingOf(fault.kind);
    const bool isOfItem = fault.entry != kNoEntry;
    if (isOfItem) mark(states_[fault.entry], fault, id);
    if (!id) return;
    const std::string_view name = isOfItem ? directory_.name(fault.entry) : std::string_view();
    const bool isAmbiguous =
        *id == kUnusedBytes || (*id == kBytesOutside && !isPadding(file, fault));
    const std::string text = directory_.describe(fault);
    if (isAmbiguous) return report_.addAmbiguous(*id, name, text, fault.rule());
    report_.addClipped(*id, name, text, fault.rule());
  }

  // Whether zeros or line ends follow the archive, which no reader takes for anything.
  static bool isPadding(const PackageFile& file, const ZipFault& fault) {
    if (fault.kind != ZipFaultKind::BytesAfterEnd) return false;
    std::array<unsigned char, 4096> bytes{};
    std::uint64_t left = fault.second;
    for (std::uint64_t at = fault.first; left > 0;) {
      const std::size_t size = std::min<std::uint64_t>(left, bytes.size());
      file.readAt(at, bytes.data(), size);
      const auto isPad = [](unsigned char byte) {
        return byte == 0 || byte == '\n' || byte == '\r';
      };
      if (!std::all_of(bytes.begin(), bytes.begin() + size, isPad)) return false;
      at += size;
      left -= size;
    }
    return true;
  }

  static void mark(ItemState& state, const ZipFault& fault, std::optional<FindingId> id) {
    if (id == kUnusableName) {
      state.hasBadName = true;
    } else if (id == kDuplicateName || id == kDuplicateFolder) {
      state.isTwin = true;
    } else if (id == kContradictingMarks) {
      state.hasBadMarks = true;
    } else if (fault.severity() == ZipFaultSeverity::Refused) {
      state.isDamaged = true;
    }
  }

  // Some readers look for a signature, and for nothing else. A whole record is a fault.
  void checkComment(zippackage::Bytes comment, std::string_view name) {
    if (zippackage::findEndRecord(comment) != zippackage::EndRecordTrace::Signature) return;
    report_.addClipped(kEndRecordInComment, name,
                       "the comment holds the signature of an end record", "ZP-16");
  }

  void checkEntry(std::size_t entry) {
    const std::string_view name = directory_.name(entry);
    checkComment(directory_.comment(entry), name);
    if (!states_[entry].hasBadName) {
      states_[entry].hasBadName =
          checkItemName(name, directory_.storedName(entry), directory_.header(entry), report_);
    }
    if (states_[entry].hasBadMarks) return;
    if (report_.subject() == Subject::Addon &&
        zippackage::isFolderWithFileMode(name, directory_.header(entry))) {
      report_.addClipped(kContradictingMarks, name,
                         "it is marked as a file, but its name is that of a folder", "ZP-10");
    }
    const ItemKind kind = zippackage::itemInfoOf(directory_, entry).kind;
    if (kind == ItemKind::SymbolicLink) {
      report_.addAmbiguous(kLinkOrDevice, name, "it is a symbolic link", "RB-14");
    } else if (kind == ItemKind::Special) {
      report_.addAmbiguous(kLinkOrDevice, name,
                           "it is a device, a label or something else that is not a file", "RB-14");
    }
  }

  void checkRatio(std::size_t entry) {
    const ZipEntry& item = directory_.entries()[entry];
    if (states_[entry].isDamaged || item.size <= kUnsuspiciousSize) return;
    if (item.packedSize >= item.size / kUnsuspiciousRatio) return;
    report_.addClipped(
        kHighRatio, directory_.name(entry),
        std::to_string(item.packedSize) + " bytes decompress to " + std::to_string(item.size),
        "RB-1");
  }

  const ZipDirectory& directory_;
  Report& report_;
  std::vector<ItemState> states_;
};

}  // namespace

std::vector<ItemState> checkContainer(const PackageFile& file, const ZipDirectory& directory,
                                      Reading& reading, Report& report) {
  return ContainerCheck(directory, report).run(file, reading);
}

}  // namespace opc::checks::detail
