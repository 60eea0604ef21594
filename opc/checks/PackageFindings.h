// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "opc/checks/Finding.h"

namespace opc::checks {

// Findings that any package can have.
inline constexpr FindingId kNotZip{101, Severity::Error};
inline constexpr FindingId kBytesOutside{102, Severity::Warning};
inline constexpr FindingId kDuplicateName{103, Severity::Error};
inline constexpr FindingId kUnusableName{104, Severity::Error};
inline constexpr FindingId kHeadersDisagree{105, Severity::Error};
inline constexpr FindingId kDamagedData{106, Severity::Error};
inline constexpr FindingId kOverlappingItems{107, Severity::Error};
inline constexpr FindingId kUnsupportedPacking{108, Severity::Error};
inline constexpr FindingId kInconsistentRecords{109, Severity::Error};
inline constexpr FindingId kLinkOrDevice{110, Severity::Warning};
inline constexpr FindingId kNameNotAscii{111, Severity::Warning};
inline constexpr FindingId kHighRatio{112, Severity::Warning};
inline constexpr FindingId kUnusedBytes{113, Severity::Warning};
inline constexpr FindingId kUnsafeName{114, Severity::Warning};
inline constexpr FindingId kDuplicateFolder{115, Severity::Warning};
inline constexpr FindingId kOtherUnicodePath{116, Severity::Error};
inline constexpr FindingId kContradictingMarks{117, Severity::Error};
inline constexpr FindingId kUnusualDemands{118, Severity::Error};
inline constexpr FindingId kEndRecordInComment{119, Severity::Error};
inline constexpr FindingId kBadContentTypes{201, Severity::Error};
inline constexpr FindingId kRelatedWithoutType{202, Severity::Error};
inline constexpr FindingId kOverrideWithoutPart{203, Severity::Warning};
inline constexpr FindingId kDuplicateContentType{204, Severity::Error};
inline constexpr FindingId kEquivalentNames{205, Severity::Error};
inline constexpr FindingId kBadContentTypeEntry{206, Severity::Error};
inline constexpr FindingId kNameExtendsName{207, Severity::Error};
inline constexpr FindingId kBadRelationships{208, Severity::Error};
inline constexpr FindingId kBadRelationshipId{209, Severity::Error};
inline constexpr FindingId kMissingTarget{210, Severity::Warning};
inline constexpr FindingId kBadExternalTarget{211, Severity::Warning};
inline constexpr FindingId kSeveralCoreRelationships{212, Severity::Error};
inline constexpr FindingId kBadCoreProperties{213, Severity::Error};
inline constexpr FindingId kDoctypeOrEncoding{214, Severity::Error};
inline constexpr FindingId kOrphanRelationships{215, Severity::Warning};
inline constexpr FindingId kUncheckedSignature{216, Severity::Warning};
inline constexpr FindingId kStrayItem{217, Severity::Warning};
inline constexpr FindingId kRelatedRelationships{218, Severity::Error};
inline constexpr FindingId kClashingPieces{219, Severity::Error};
inline constexpr FindingId kSeveralCoreParts{220, Severity::Warning};
inline constexpr FindingId kNormalisationClash{221, Severity::Warning};
inline constexpr FindingId kContentTypesSpelling{222, Severity::Warning};
inline constexpr FindingId kEmptyContentTypes{223, Severity::Warning};
inline constexpr FindingId kRelationshipsType{224, Severity::Warning};
inline constexpr FindingId kOddTarget{225, Severity::Warning};
inline constexpr FindingId kOddCoreProperties{226, Severity::Warning};
inline constexpr FindingId kThumbnailNotImage{227, Severity::Warning};
inline constexpr FindingId kIncompletePieces{228, Severity::Warning};

/// What these ids mean, in the order of their numbers.
std::span<const FindingInfo> packageFindings();

}  // namespace opc::checks
