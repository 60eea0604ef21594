// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/DocumentCheck.h"
#include "addon/checks/detail/Readable.h"
#include "addon/packaging/DocumentXml.h"
#include "addon/packaging/HostStruct.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/model/DomText.h"
#include "opc/plservices/HostPropertiesPart.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::model::XercesHelper;
using opc::plservices::HostPropertiesPart;
using packaging::AddonPackage;
using packaging::AppsXml;
using packaging::ExamplesXml;
using packaging::PropertiesXml;
using xercesc::DOMElement;

namespace {

void checkAuthors(const ParsedDocument& document, Report& report) {
  std::vector<DOMElement*> authors;
  for (const auto* list :
       XercesHelper::getElements(document.text.root(), PropertiesXml::kAuthors)) {
    const auto some = XercesHelper::getElements(list, PropertiesXml::kAuthor);
    authors.insert(authors.end(), some.begin(), some.end());
  }
  if (authors.size() < 2) return;
  report.add(kSeveralAuthors, document.part,
             "the document names " + std::to_string(authors.size()) +
                 " authors: only the first of them is read",
             document.text.lineOf(authors[1]));
}

void checkFlags(const ParsedDocument& document, Report& report) {
  for (const auto* app : XercesHelper::getElements(document.text.root(), AppsXml::kApplication)) {
    std::u16string flag;
    // Without the attribute nobody tried to say anything.
    if (!XercesHelper::getElementAttribute(app, AppsXml::kInstallByDefault, flag)) continue;
    if (packaging::isTrue(flag) || !packaging::isNotFalse(flag)) continue;
    std::u16string name;
    XercesHelper::getElementAttribute(app, AppsXml::kName, name);
    report.add(kBadFlag, document.part,
               "'installByDefault' of the app " + quoted(name) + " is " + quoted(flag) +
                   ": it is either 'true' or 'false', and everything else is read as 'false'",
               document.text.lineOf(app));
  }
}

bool isSingleKind(std::u16string_view type) {
  return type == ExamplesXml::kSource || type == ExamplesXml::kMain ||
         type == ExamplesXml::kThumbnail;
}

void checkExampleFiles(const ParsedDocument& document, const DOMElement* example, Report& report) {
  std::u16string name;
  XercesHelper::getElementAttribute(example, ExamplesXml::kName, name);
  std::vector<std::u16string> seen;  // three at most
  for (const auto* file : XercesHelper::getElements(example, ExamplesXml::kFile)) {
    std::u16string type;
    XercesHelper::getElementAttribute(file, ExamplesXml::kType, type);
    if (type == ExamplesXml::kImage) continue;
    std::string why = ": it is one of 'source', 'main', 'thumbnail' and 'image'";
    if (isSingleKind(type)) {
      const bool isFirst = std::find(seen.begin(), seen.end(), type) == seen.end();
      if (isFirst) {
        seen.push_back(type);
        continue;
      }
      why = " twice: only the last of them is read";
    }
    report.add(kBadExampleFile, document.part,
               "example " + quoted(name) + " has a file of the type " + quoted(type) + why,
               document.text.lineOf(file));
  }
}

void checkExamples(const ParsedDocument& document, Report& report) {
  const DOMElement* root = document.text.root();
  for (const auto* category : XercesHelper::getElements(root, ExamplesXml::kCategory)) {
    for (const auto* example : XercesHelper::getElements(category, ExamplesXml::kExample)) {
      checkExampleFiles(document, example, report);
    }
  }
}

bool isBlank(const boost::optional<std::u16string>& text) {
  return !text || opc::model::trimXmlSpace(*text).empty();
}

// Its type is then not wrong but unknown, and something else has been reported.
bool isHostPartLost(AddonPackage& package) {
  const Destination found =
      follow(package.logicalPackage(), HostPropertiesPart::relationshipType());
  return found.kind == Destination::Kind::Missing || found.kind == Destination::Kind::Outside;
}

void checkType(const std::u16string& type, Report& report) {
  const int known = AddonPackage::getAddonTypeFromString(type);
  if (known != static_cast<int>(packaging::AddonType::Unknown)) return;
  report.add(kUnknownAddonType, opc::toUtf8(HostPropertiesPart::kPartName),
             "the add-on's type is " + quoted(type) + ", not 'Korvan Toolbox'");
}

}  // namespace

void checkValues(const ParsedDocument& document, Report& report) {
  const std::u16string_view root = document.schema.root->name;
  if (root == PropertiesXml::kRoot) checkAuthors(document, report);
  if (root == AppsXml::kRoot) checkFlags(document, report);
  if (root == ExamplesXml::kRoot) checkExamples(document, report);
}

void checkIdentity(AddonPackage& package, Report& report) {
  opc::plservices::CoreProperties core(u"", u"", u"");
  if (!isReadable([&] { core = package.coreProperties().getCoreProperties(); })) return;
  if (!isHostPartLost(package)) checkType(core.getContentTypeFriendlyName(), report);
  if (isBlank(core.getTitle())) report.add(kNoName, "", "the add-on has no name");
  if (isBlank(core.getVersion())) report.add(kNoVersion, "", "the add-on has no version");
}

}  // namespace addon::checks::detail
