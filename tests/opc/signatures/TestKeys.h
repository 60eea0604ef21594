// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "opc/interfaces/IXmlSignatures.h"

namespace test {

/// When the tests sign, and the time from which and until which their certificates are valid.
inline constexpr std::int64_t kSigningTime = 1'800'000'000;
inline constexpr std::int64_t kValidFrom = 1'700'000'000;
inline constexpr std::int64_t kValidUntil = 1'900'000'000;

/// A new key on the curve P-256 and a certificate that it signs itself, both in PEM.
struct TestKeys {
  explicit TestKeys(const std::string& name);

  std::string key;
  std::string certificate;

  std::shared_ptr<const opc::interfaces::ISigner> signer() const;
  std::unique_ptr<opc::interfaces::ITrustAnchors> anchors() const;
};

}  // namespace test
