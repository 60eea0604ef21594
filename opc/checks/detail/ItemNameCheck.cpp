// SPDX-License-Identifier: MIT
#include <algorithm>

#include "opc/Exception.h"
#include "opc/checks/PackageFindings.h"
#include "opc/checks/detail/ContainerCheck.h"
#include "opc/model/NameCharacters.h"
#include "opc/model/PartName.h"
#include "opc/plservices/TreePath.h"

namespace opc::checks::detail {
namespace {

struct Oddity {
  const char* rule = nullptr;  // null for none
  const char* why = nullptr;
};

bool hasDrive(std::string_view name) {
  return name.size() >= 2 && name[1] == ':' && isAsciiLetter(name[0]);
}

Oddity findOddity(std::string_view name) {
  if (name.starts_with('/')) return {"RB-12", "the name begins with a slash"};
  if (name.find('\\') != std::string_view::npos) return {"RB-12", "the name contains a backslash"};
  if (hasDrive(name)) return {"RB-12", "the name begins with a drive letter"};
  if (plservices::hasControlCharacter(name)) {
    return {"RB-13", "the name contains a control character"};
  }
  return {};
}

// Faults of the file name that a part name encodes.
Oddity findEncodedOddity(std::string_view name) {
  if (name.find('%') == std::string_view::npos || model::findNameFault(name) != nullptr) {
    return {};
  }
  try {
    if (plservices::hasControlCharacter(model::percentDecodePath(name))) {
      return {"RB-13", "the name encodes a control character"};
    }
    return {};
  } catch (const FormatError&) {
    return {"RB-13", "the name encodes bytes that are not UTF-8"};
  }
}

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

bool checkItemName(std::string_view name, std::string_view stored, Report& report) {
  if (!isAscii(stored)) {
    report.addClipped(kNameNotAscii, name, "the name contains non-ASCII characters", "ZP-3");
  }
  const Oddity oddity = findOddity(name);
  if (oddity.rule != nullptr) {
    report.addClipped(kUnsafeName, name, oddity.why, oddity.rule);
    return true;
  }
  const Oddity encoded = findEncodedOddity(name);
  if (encoded.rule != nullptr) report.addClipped(kUnsafeName, name, encoded.why, encoded.rule);
  return false;
}

}  // namespace opc::checks::detail
