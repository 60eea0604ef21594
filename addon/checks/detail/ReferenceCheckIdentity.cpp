// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/Guid.h"
#include "addon/checks/detail/Destination.h"
#include "addon/checks/detail/Readable.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/ReferenceCheck.h"
#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/model/DomText.h"
#include "opc/model/PackageHelper.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::model::trimXmlSpace;
using opc::model::XercesHelper;
using packaging::AddonAppInstall;
using packaging::AddonAppInstallList;
using packaging::AddonPackage;
using packaging::AddonProperties;
using packaging::AddonRevision;
using packaging::AddonRevisionHistory;

namespace {

// "2026-02-01", perhaps with a time after it. Such dates sort as texts do.
bool isSortable(std::u16string_view date) {
  constexpr std::u16string_view kForm = u"0000-00-00";
  if (date.size() < kForm.size()) return false;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const bool isDigit = date[i] >= u'0' && date[i] <= u'9';
    if (kForm[i] == u'0' ? !isDigit : date[i] != kForm[i]) return false;
  }
  return date.size() == kForm.size() || date[kForm.size()] == u'T' || date[kForm.size()] == u' ';
}

/// Those that may be the newest. Revisions stand in any order, dates are free text: by date when
/// all are dates that sort, otherwise the first or the last one.
std::vector<const AddonRevision*> newestOf(const std::vector<AddonRevision>& revisions) {
  const bool isDated = std::all_of(revisions.begin(), revisions.end(),
                                   [](const auto& revision) { return isSortable(revision.date); });
  if (!isDated) return {&revisions.front(), &revisions.back()};
  const auto day = [](const AddonRevision& revision) { return revision.date.substr(0, 10); };
  const auto newest =
      std::max_element(revisions.begin(), revisions.end(),
                       [&](const auto& a, const auto& b) { return day(a) < day(b); });
  std::vector<const AddonRevision*> found;
  for (const AddonRevision& revision : revisions) {
    if (day(revision) == day(*newest)) found.push_back(&revision);
  }
  return found;
}

std::u16string versionOf(AddonPackage& package) {
  std::u16string version;
  isReadable(
      [&] { version = package.coreProperties().getCoreProperties().getVersion().value_or(u""); });
  return std::u16string(trimXmlSpace(version));
}

/// The GUIDs that have come up, and whose they are.
class GuidCheck {
 public:
  explicit GuidCheck(Report& report) : report_(report) {}

  void add(std::u16string_view guid, const std::string& owner, const std::string& part,
           std::size_t line) {
    const std::string plain = plainGuid(guid);
    if (plain.empty()) return;
    const auto [first, isNew] = owners_.emplace(plain, owner);
    if (isNew) return;
    report_.add(kDuplicateGuid, part,
                owner + " has the GUID " + quoted(guid) + ", which " + first->second + " has too",
                line);
  }

 private:
  Report& report_;
  std::unordered_map<std::string, std::string> owners_;
};

}  // namespace

void checkThumbnail(AddonPackage& package, Report& report) {
  auto& model = package.logicalPackage();
  const Destination screenshot = follow(model, packaging::ScreenshotPart::relationshipType());
  if (screenshot.kind != Destination::Kind::Part) return;
  const Destination thumbnail =
      follow(model, opc::model::PackageHelper::getThumbnailRelationshipType());
  if (thumbnail.kind == Destination::Kind::Several) return;
  if (thumbnail.name == screenshot.name) return;
  const bool hasNone = thumbnail.kind == Destination::Kind::Nowhere;
  report.add(kThumbnailDiffers, screenshot.name,
             "this is the screenshot, but the package's thumbnail is " +
                 (hasNone ? std::string("none") : quoted(thumbnail.name)));
}

void checkNewestRevision(AddonPackage& package, Report& report) {
  AddonRevisionHistory history;
  ReadableDocument document(package, AddonRevisionHistory::kTable);
  const std::u16string version = versionOf(package);
  if (document.text() == nullptr || version.empty()) return;
  const auto elements = document.elementsOf<&AddonRevisionHistory::revisions>();
  for (const auto* element : elements) history.revisions.emplace_back(element);
  if (history.revisions.empty()) return;
  const auto newest = newestOf(history.revisions);
  const bool isCurrent = std::any_of(newest.begin(), newest.end(), [&](const auto* revision) {
    return trimXmlSpace(revision->version) == version;
  });
  if (isCurrent) return;
  const auto index = static_cast<std::size_t>(newest.front() - history.revisions.data());
  report.add(kRevisionMismatch, document.part(),
             "the newest revision is " + quoted(newest.front()->version) +
                 ", the add-on's version is " + quoted(version),
             document.text()->lineOf(elements[index]));
}

void checkGuids(AddonPackage& package, Report& report) {
  GuidCheck guids(report);
  ReadableDocument properties(package, AddonProperties::kTable);
  if (properties.text() != nullptr) {
    std::u16string guid;
    for (const auto* identifier : properties.elementsOf<&AddonProperties::GUID>()) {
      XercesHelper::getElementText(identifier, guid);
    }
    guids.add(guid, "the add-on", properties.part(), 0);
  }
  ReadableDocument apps(package, AddonAppInstallList::kTable);
  if (apps.text() == nullptr) return;
  for (const auto* element : apps.elementsOf<&AddonAppInstallList::apps>()) {
    const AddonAppInstall app(element);
    guids.add(app.guid, "the app " + quoted(app.name), apps.part(), apps.text()->lineOf(element));
  }
}

}  // namespace addon::checks::detail
