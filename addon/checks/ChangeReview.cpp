// SPDX-License-Identifier: MIT
#include "addon/checks/ChangeReview.h"

#include <algorithm>
#include <array>
#include <map>
#include <tuple>
#include <utility>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/AddonVerification.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/StyleCheck.h"
#include "addon/packaging/AddonProperties.h"
#include "opc/Text.h"

namespace addon::checks {

using opc::checks::Finding;
using opc::checks::Report;
using opc::checks::Severity;
using opc::plservices::FileTree;
using opc::plservices::NodeId;
using packaging::AddonPackage;
using packaging::AddonProperties;
using packaging::DocumentTable;

namespace {

constexpr std::array kLacks{kNoLicense, kNoSummary, kNoAuthor, kNoScreenshot};
// Some of the properties are core properties, whose findings name no part.
constexpr std::array kOfProperties{kNoName,   kNoVersion, kNoSummary,
                                   kNoAuthor, kNotGuid,   kOddVersion};

template <typename Ids>
bool isOneOf(const Ids& ids, const Finding& finding) {
  return std::find(ids.begin(), ids.end(), finding.id) != ids.end();
}

bool hasFiles(const FileTree& tree) {
  for (NodeId node = 0; node < tree.size(); ++node) {
    if (tree.isFile(node) && !tree.isRemoved(node)) return true;
  }
  return false;
}

bool hasAddedFiles(AddonPackage& package, const FileTree& tree, NodeId firstNew) {
  for (NodeId node = 0; node < tree.size(); ++node) {
    if (tree.isRemoved(node)) continue;
    if (node >= firstNew) return true;
    if (!tree.isFile(node)) continue;
    if (detail::isReplaced(package.logicalPackage().partInfo(tree.part(node)))) return true;
  }
  return false;
}

/// Without the line, which a change elsewhere in the document moves.
using Key = std::tuple<FindingId, std::string_view, std::string_view>;

Key keyOf(const Finding& finding) {
  return {finding.id, finding.part, finding.message};
}

}  // namespace

ChangeReview::ChangeReview(AddonPackage& package) : package_(package) {
  Report report(opc::checks::Subject::Addon);
  checkDescriptions(package, report);
  detail::isReadable([&] {
    const auto& tree = package.fileSystem().nodes();
    firstNew_ = static_cast<NodeId>(tree.size());
    if (!hasFiles(tree)) report.add(kNoFiles, "", detail::kNoFilesMessage);
  });
  before_ = report.findings();
}

std::vector<Finding> ChangeReview::findNow() const {
  Report report(opc::checks::Subject::Addon);
  checkDescriptions(package_, report);
  if (!isNew_) detail::isReadable([&] { findInFiles(report); });
  return report.findings();
}

// A look at all names takes memory for each, which most changes do not need.
void ChangeReview::findInFiles(Report& report) const {
  const FileTree& tree = package_.fileSystem().nodes();
  if (hasAddedFiles(package_, tree, firstNew_)) {
    checkAddedFiles(package_, firstNew_, report);
  } else if (!hasFiles(tree)) {
    report.add(kNoFiles, "", detail::kNoFilesMessage);
  }
}

ChangeReview ChangeReview::ofNewPackage(AddonPackage& package) {
  return {package, NewPackage{}};
}

void ChangeReview::replaces(const DocumentTable& document) {
  const std::string part = opc::toUtf8(document.partName());
  const bool isProperties = &document == &AddonProperties::kTable;
  std::erase_if(before_, [&](const Finding& finding) {
    return finding.part == part ||
           (isProperties && finding.part.empty() && isOneOf(kOfProperties, finding));
  });
}

PackageVerdict ChangeReview::judge(std::string file) const {
  PackageVerdict verdict;
  verdict.file = std::move(file);
  std::map<Key, std::size_t> known;
  for (const Finding& finding : before_) ++known[keyOf(finding)];
  for (Finding& finding : findNow()) {
    if (isNew_ && isOneOf(kLacks, finding)) continue;
    if (const auto old = known.find(keyOf(finding)); old != known.end() && old->second > 0) {
      --old->second;
      continue;
    }
    ++(finding.id.severity == Severity::Error ? verdict.errors : verdict.warnings);
    verdict.findings.push_back(std::move(finding));
  }
  return verdict;
}

}  // namespace addon::checks
