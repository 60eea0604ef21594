// SPDX-License-Identifier: MIT
#include "opc/checks/detail/FaultFindings.h"

#include <algorithm>

#include "opc/checks/PackageFindings.h"
#include "opc/model/InvalidXMLDocument.h"

namespace opc::checks::detail {

using model::InvalidXMLDocument;
using zippackage::ZipFaultKind;

namespace {

struct RuleFinding {
  std::string_view rule;
  FindingId id;
};

constexpr RuleFinding kRules[] = {
    {"CP-1", kSeveralCoreRelationships}, {"CT-1", kBadContentTypes},
    {"CT-4", kBadContentTypeEntry},      {"CT-5", kBadContentTypeEntry},
    {"CT-6", kDuplicateContentType},     {"CT-7", kBadContentTypeEntry},
    {"CT-8", kBadContentTypeEntry},      {"CT-10", kRelatedWithoutType},
    {"CT-12", kBadRelationships},        {"IL-3", kClashingPieces},
    {"PN-8", kEquivalentNames},          {"PN-9", kNameExtendsName},
    {"RB-2", kOverlappingItems},         {"RL-4", kBadRelationshipId},
    {"RL-9", kRelatedRelationships},     {"XM-1", kDoctypeOrEncoding},
    {"XM-2", kDoctypeOrEncoding},        {"ZP-6", kUnsupportedPacking},
    {"ZP-7", kHeadersDisagree},          {"ZP-8", kHeadersDisagree},
    {"ZP-9", kInconsistentRecords},      {"ZP-14", kInconsistentRecords},
};

FindingId findingOfRule(std::string_view rule, FindingId otherwise) {
  const auto* found = std::find_if(std::begin(kRules), std::end(kRules),
                                   [&](const RuleFinding& entry) { return entry.rule == rule; });
  return found == std::end(kRules) ? otherwise : found->id;
}

}  // namespace

void addFault(Report& report, const Exception& fault, FindingId otherwise, std::string_view part,
              std::string_view rule) {
  std::size_t line = 0;
  if (const auto* format = dynamic_cast<const FormatError*>(&fault)) {
    rule = format->rule();
  } else if (const auto* xml = dynamic_cast<const InvalidXMLDocument*>(&fault)) {
    rule = xml->rule();
    line = static_cast<std::size_t>(xml->line());
  }
  report.addClipped(findingOfRule(rule, otherwise), part, fault.what(), rule, line);
}

std::optional<FindingId> findingOf(ZipFaultKind kind) {
  switch (kind) {
    case ZipFaultKind::OtherVolume:
    case ZipFaultKind::EndRecordsDiffer:
    case ZipFaultKind::CountDiffers:
    case ZipFaultKind::Zip64ValueMissing:
      return kInconsistentRecords;
    case ZipFaultKind::Encrypted:
    case ZipFaultKind::UnknownMethod:
      return kUnsupportedPacking;
    case ZipFaultKind::StoredSizesDiffer:
      return kDamagedData;
    case ZipFaultKind::NameHasNul:
    case ZipFaultKind::NameNotUtf8:
    case ZipFaultKind::ParentSegment:
      return kUnusableName;
    case ZipFaultKind::DuplicateName:
      return kDuplicateName;
    case ZipFaultKind::DuplicateFolder:
      return kDuplicateFolder;
    case ZipFaultKind::OutsideFile:
    case ZipFaultKind::Overlap:
      return kOverlappingItems;
    case ZipFaultKind::BytesAfterEnd:
    case ZipFaultKind::BytesBeforeFirst:
      return kBytesOutside;
    case ZipFaultKind::UnusedBytes:
    case ZipFaultKind::EarlierDirectory:
    case ZipFaultKind::ExtraMalformed:
    case ZipFaultKind::Zip64Needless:
    case ZipFaultKind::Zip64Unclear:
      return kUnusedBytes;
    case ZipFaultKind::OtherUnicodePath:
    case ZipFaultKind::UnicodePathOfOldName:
      return kOtherUnicodePath;
    case ZipFaultKind::FolderHoldsData:
    case ZipFaultKind::MarksContradict:
      return kContradictingMarks;
    case ZipFaultKind::VersionTooHigh:
    case ZipFaultKind::VersionOdd:
    case ZipFaultKind::ReservedFlags:
      return kUnusualDemands;
    case ZipFaultKind::EndRecordInComment:
      return kEndRecordInComment;
    case ZipFaultKind::NameEmpty:
      return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace opc::checks::detail
