// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "addon/checks/AddonVerification.h"
#include "addon/checks/FindingRules.h"
#include "addon/checks/PackageVerdict.h"
#include "opc/interfaces/WorkAhead.h"
#include "tool/line/Arguments.h"

namespace tool::commands::detail {

/// What is checked, and how.
struct VerdictRequest {
  decltype(addon::checks::verifyAddon)& verify;  ///< or verifyPackage
  const std::vector<std::string>& paths;
  const opc::checks::SignatureDemands& demands;
  const addon::checks::FindingRules& rules;
  const line::Settings& settings;
};

/// Checks packages in order. Of several, a second thread checks small ones ahead.
class Verdicts {
 public:
  /// `request` must outlive it.
  explicit Verdicts(const VerdictRequest& request);

  /// The verdict on the next package; there must be one. A package that cannot be read is not an
  /// exception, but a verdict.
  addon::checks::PackageVerdict take();

 private:
  struct Result {
    std::optional<addon::checks::PackageVerdict> verdict = std::nullopt;
    std::exception_ptr failure = nullptr;  // neither: it is left to the caller
  };
  using Work = opc::interfaces::WorkAhead<std::vector<Result>>;

  bool isLeft(const std::string& path) const;
  Result checkSmall(const std::string& path) const;
  addon::checks::PackageVerdict checkLarge(const std::string& path) const;
  template <typename Check>
  addon::checks::PackageVerdict verdictOf(const std::string& path, const Check& check) const;

  const VerdictRequest& request_;
  std::size_t taken_ = 0;
  Work work_;
};

}  // namespace tool::commands::detail
