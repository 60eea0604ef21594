// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "opc/checks/Finding.h"

namespace opc::checks {

// Findings of digital signatures.
inline constexpr FindingId kBrokenSignature{601, Severity::Error};
inline constexpr FindingId kUncoveredPart{602, Severity::Error};
inline constexpr FindingId kMissingSignedPart{603, Severity::Error};
inline constexpr FindingId kUntrustedSigner{604, Severity::Error};
inline constexpr FindingId kOutdatedCertificate{605, Severity::Error};
inline constexpr FindingId kWeakSignature{606, Severity::Error};
inline constexpr FindingId kNotSigned{607, Severity::Error};
inline constexpr FindingId kUnsupportedSignature{608, Severity::Error};
inline constexpr FindingId kUnknownSigner{609, Severity::Warning};

/// What these ids mean, in the order of their numbers.
std::span<const FindingInfo> signatureFindings();

}  // namespace opc::checks
