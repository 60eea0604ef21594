// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipFault.h"

namespace opc::zippackage {

ZipFaultSeverity ZipFault::severity() const {
  return kind < ZipFaultKind::BytesAfterEnd ? ZipFaultSeverity::Refused : ZipFaultSeverity::Warning;
}

const char* ZipFault::rule() const {
  switch (kind) {
    case ZipFaultKind::OtherVolume:
      return "ZP-14";
    case ZipFaultKind::EndRecordsDiffer:
    case ZipFaultKind::Zip64ValueMissing:
    case ZipFaultKind::Zip64Needless:
    case ZipFaultKind::Zip64Unclear:
      return "ZP-9";
    case ZipFaultKind::OtherUnicodePath:
    case ZipFaultKind::UnicodePathOfOldName:
      return "ZP-3";
    case ZipFaultKind::FolderHoldsData:
    case ZipFaultKind::MarksContradict:
      return "ZP-10";
    case ZipFaultKind::VersionTooHigh:
    case ZipFaultKind::VersionOdd:
    case ZipFaultKind::ReservedFlags:
      return "ZP-11";
    case ZipFaultKind::Encrypted:
      return "ZP-6";
    case ZipFaultKind::UnknownMethod:
      return "ZP-5";
    case ZipFaultKind::StoredSizesDiffer:
      return "ZP-7";
    case ZipFaultKind::NameHasNul:
    case ZipFaultKind::NameNotUtf8:
    case ZipFaultKind::NameEmpty:
      return "RB-13";
    case ZipFaultKind::DuplicateName:
    case ZipFaultKind::DuplicateFolder:
      return "ZP-2";
    case ZipFaultKind::Overlap:
      return "RB-2";
    case ZipFaultKind::ParentSegment:
      return "RB-12";
    case ZipFaultKind::BytesBeforeFirst:
      return "ZP-11";
    case ZipFaultKind::CountDiffers:
    case ZipFaultKind::OutsideFile:
    case ZipFaultKind::BytesAfterEnd:
    case ZipFaultKind::UnusedBytes:
    case ZipFaultKind::ExtraMalformed:
    case ZipFaultKind::EndRecordInComment:
    case ZipFaultKind::EarlierDirectory:
      return "ZP-16";
  }
  return "";
}

}  // namespace opc::zippackage
