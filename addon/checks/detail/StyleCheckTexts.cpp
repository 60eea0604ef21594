// SPDX-License-Identifier: MIT
#include <string>
#include <string_view>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/checks/detail/StyleCheck.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/model/DomText.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::model::trimXmlSpace;
using opc::model::XercesHelper;
using packaging::AddonLicense;
using packaging::AddonPackage;
using packaging::AddonProperties;
using Kind = Destination::Kind;

namespace {

bool isBlank(std::u16string_view text) {
  return trimXmlSpace(text).empty();
}

void checkLicense(AddonPackage& package, Report& report) {
  const std::u16string type = AddonLicense().relationshipType;
  if (follow(package.logicalPackage(), type).kind == Kind::Nowhere) {
    return report.add(kNoLicense, "", "the add-on has no license");
  }
  ReadableDocument document(package, AddonLicense::kTable);
  if (document.text() == nullptr) return;
  // A missing element is reported as a fault of the document.
  for (const auto* terms : document.elementsOf<&AddonLicense::text>()) {
    std::u16string text;
    XercesHelper::getElementText(terms, text);
    if (!isBlank(text)) continue;
    report.add(kNoLicense, document.part(), "the license has no text",
               document.text()->lineOf(terms));
  }
}

// N.N, N.N.N and so on.
bool isPlainVersion(std::u16string_view version) {
  bool wasDigit = false;
  std::size_t dots = 0;
  for (const char16_t c : version) {
    const bool isDigit = c >= u'0' && c <= u'9';
    if (!isDigit && (c != u'.' || !wasDigit)) return false;
    if (!isDigit) ++dots;
    wasDigit = isDigit;
  }
  return wasDigit && dots > 0;
}

struct WantedText {
  std::u16string AddonProperties::*member;
  FindingId id;
  const char* message;
};
constexpr WantedText kWantedTexts[] = {
    {&AddonProperties::summary, kNoSummary, "the add-on has no summary"},
    {&AddonProperties::description, kNoSummary, "the add-on has no description"},
    {&AddonProperties::authorName, kNoAuthor, "the add-on has no author"},
    {&AddonProperties::authorContact, kNoAuthor, "the add-on has no contact"},
};

void checkProperties(AddonPackage& package, const AddonFacts& facts, Report& report) {
  AddonProperties properties;
  // If there are several documents of properties, none of them is read.
  if (follow(package.logicalPackage(), properties.relationshipType).kind == Kind::Several) return;
  if (!facts.core) return;
  properties.authorName = facts.core->getCreatedBy().value_or(u"");
  properties.version = facts.core->getVersion().value_or(u"");
  properties.summary = facts.core->getDescription().value_or(u"");
  // The author's name in this part is the one that counts.
  if (!isReadable([&] { package.getXMLPart(properties); })) return;
  for (const WantedText& wanted : kWantedTexts) {
    if (isBlank(properties.*wanted.member)) report.add(wanted.id, "", wanted.message);
  }
  const std::u16string_view version = trimXmlSpace(properties.version);
  if (version.empty() || isPlainVersion(version)) return;
  report.add(kOddVersion, "",
             "version " + quoted(version) + ": expected two or more numbers separated by dots");
}

void checkHasScreenshot(AddonPackage& package, Report& report) {
  const std::u16string type = packaging::ScreenshotPart::relationshipType();
  if (follow(package.logicalPackage(), type).kind != Kind::Nowhere) return;
  report.add(kNoScreenshot, "", "the add-on has no screenshot");
}

}  // namespace

void checkTexts(AddonPackage& package, const AddonFacts& facts, Report& report) {
  checkLicense(package, report);
  checkProperties(package, facts, report);
  checkHasScreenshot(package, report);
  checkGuids(package, facts, report);
}

}  // namespace addon::checks::detail
