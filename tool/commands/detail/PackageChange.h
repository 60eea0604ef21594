// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/DocumentTable.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tool/line/Arguments.h"

namespace tool::commands::detail {

using addon::packaging::AddonPackage;

/// What becomes of the findings that a change brings about (addon::checks::ChangeReview).
struct ReviewRules {
  enum class Kind : std::uint8_t { None, Report, RefuseErrors };

  Kind kind = Kind::Report;
  /// The document that the change stored as a whole, so that all of it is new; else null. The
  /// change itself may set it.
  const addon::packaging::DocumentTable* replaced = nullptr;
  /// Whether the change keeps signatures, or takes them away, so that no warning says that they are
  /// broken.
  bool isAboutSignatures = false;
};

/// RefuseErrors or, with --no-verify, None.
ReviewRules strictReviewOf(const line::Invocation& invocation);

/// Changes the package at `path`: waits for other commands, opens it, calls `change`, commits with
/// a progress bar, and warns of what was lost. Prints the findings that the change brings about;
/// with RefuseErrors, throws Failure if there is an error among them. On any failure, the package
/// stays as it was.
void changePackage(const std::string& path, opc::zippackage::WriteOptions options,
                   const line::Invocation& invocation,
                   const std::function<void(AddonPackage&)>& change,
                   const ReviewRules& rules = ReviewRules());

/// Does what changePackage does except the commit, so that all errors show but nothing is written.
void rehearseChange(const std::string& path, const line::Invocation& invocation,
                    const std::function<void(AddonPackage&)>& change);

}  // namespace tool::commands::detail
