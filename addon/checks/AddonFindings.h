// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "opc/checks/Finding.h"

namespace addon::checks {

using opc::checks::FindingId;
using opc::checks::FindingInfo;
using opc::checks::Severity;

// Findings that only an add-on can have.
inline constexpr FindingId kMalformedDocument{301, Severity::Error};
inline constexpr FindingId kWrongRoot{302, Severity::Warning};
inline constexpr FindingId kMissingElement{303, Severity::Error};
inline constexpr FindingId kUnknownElement{304, Severity::Warning};
inline constexpr FindingId kWrongContentType{305, Severity::Error};
inline constexpr FindingId kSeveralRelationships{306, Severity::Error};
inline constexpr FindingId kUnreachableDocument{307, Severity::Error};
inline constexpr FindingId kUnknownAddonType{308, Severity::Error};
inline constexpr FindingId kNoName{309, Severity::Error};
inline constexpr FindingId kNoVersion{310, Severity::Warning};
inline constexpr FindingId kBadFlag{311, Severity::Warning};
inline constexpr FindingId kBadExampleFile{312, Severity::Warning};
inline constexpr FindingId kImageMismatch{313, Severity::Warning};
inline constexpr FindingId kDocumentTooLarge{314, Severity::Error};
inline constexpr FindingId kSeveralAuthors{315, Severity::Warning};
inline constexpr FindingId kMissingPart{316, Severity::Error};
inline constexpr FindingId kDocumentDoctypeOrEncoding{317, Severity::Error};
inline constexpr FindingId kMissingAppFile{401, Severity::Error};
inline constexpr FindingId kMissingExampleCode{402, Severity::Error};
inline constexpr FindingId kMissingExampleImage{403, Severity::Warning};
inline constexpr FindingId kMissingSearchPath{404, Severity::Error};
inline constexpr FindingId kMissingClassPath{405, Severity::Warning};
inline constexpr FindingId kThumbnailDiffers{406, Severity::Warning};
inline constexpr FindingId kRevisionMismatch{407, Severity::Warning};
inline constexpr FindingId kPathCase{408, Severity::Warning};
inline constexpr FindingId kPathOutside{409, Severity::Error};
inline constexpr FindingId kDuplicateGuid{410, Severity::Warning};
inline constexpr FindingId kFileOutsideTree{411, Severity::Error};
inline constexpr FindingId kNoLicense{501, Severity::Warning};
inline constexpr FindingId kNoSummary{502, Severity::Warning};
inline constexpr FindingId kNoAuthor{503, Severity::Warning};
inline constexpr FindingId kNoScreenshot{504, Severity::Warning};
inline constexpr FindingId kNotGuid{505, Severity::Warning};
inline constexpr FindingId kOddVersion{506, Severity::Warning};
inline constexpr FindingId kNotPortable{507, Severity::Warning};
inline constexpr FindingId kExcludedFile{508, Severity::Warning};
inline constexpr FindingId kSecret{509, Severity::Warning};
inline constexpr FindingId kLargeFile{510, Severity::Warning};
inline constexpr FindingId kNoFiles{511, Severity::Warning};
inline constexpr FindingId kDuplicateContent{512, Severity::Warning};
inline constexpr FindingId kFutureTime{513, Severity::Warning};
inline constexpr FindingId kCaseClash{514, Severity::Warning};
inline constexpr FindingId kUntracked{515, Severity::Warning};

/// What these ids mean, in the order of their numbers.
std::span<const FindingInfo> addonFindings();

}  // namespace addon::checks
