// SPDX-License-Identifier: MIT
#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/DocumentCheck.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/packaging/HostStruct.h"
#include "addon/packaging/RecordXml.h"
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
using packaging::Element;
using packaging::FieldKind;
using packaging::FoundElement;
using packaging::FoundValue;
using xercesc::DOMElement;

namespace {

// Nested elements that only hold others: only the first of them is read.
void checkAuthors(const ParsedDocument& document, const Element& list, Report& report) {
  for (const Element& child : list.children) {
    if (!child.isWrapper()) continue;
    std::vector<DOMElement*> found;
    for (const auto* parent : XercesHelper::getElements(document.text.root(), list.name)) {
      const auto some = XercesHelper::getElements(parent, child.name);
      found.insert(found.end(), some.begin(), some.end());
    }
    if (found.size() < 2) continue;
    report.add(kSeveralAuthors, document.part,
               "the document names " + std::to_string(found.size()) + " " +
                   opc::toUtf8(child.name) + "s: only the first of them is read",
               document.text.lineOf(found[1]));
  }
}

std::string ownerOf(const FoundElement& found) {
  if (found.table == nullptr) return "document";
  return std::string(found.table->noun) + " " + quoted(found.name);
}

void checkFlag(const ParsedDocument& document, const FoundValue& value, Report& report) {
  if (packaging::isTrue(value.text) || !packaging::isNotFalse(value.text)) return;
  report.add(kBadFlag, document.part,
             "'" + std::string(value.field.name) + "' of the " + ownerOf(value.in) + " is " +
                 quoted(value.text) +
                 ": expected 'true' or 'false'; everything else is read as 'false'",
             document.text.lineOf(value.in.dom));
}

/// "one of 'source', 'main' or 'image'"
std::string describe(const std::vector<Element::Choice>& choices) {
  std::string text = "one of " + quoted(choices.front().value);
  for (std::size_t i = 1; i < choices.size(); ++i) {
    text += (i + 1 == choices.size() ? " or " : ", ") + quoted(choices[i].value);
  }
  return text;
}

/// Elements that are distinguished by an attribute.
class ChoiceCheck {
 public:
  ChoiceCheck(const ParsedDocument& document, Report& report)
      : document_(document), report_(report) {}

  void check(const FoundElement& found) {
    const auto& choices = found.element.choices;
    if (choices.empty()) return;
    std::u16string value;
    XercesHelper::getElementAttribute(found.dom, found.element.attributes.front().name, value);
    const auto choice = std::find_if(choices.begin(), choices.end(),
                                     [&](const auto& one) { return one.value == value; });
    if (choice == choices.end()) return add(found, value, ": expected " + describe(choices));
    if (choice->field->isList() || seen_.emplace(found.dom->getParentNode(), value).second) return;
    add(found, value, " twice: only the last of them is read");
  }

 private:
  void add(const FoundElement& found, const std::u16string& value, const std::string& why) {
    report_.add(kBadExampleFile, document_.part,
                ownerOf(found) + " has a " + opc::toUtf8(found.element.name) + " of the type " +
                    quoted(value) + why,
                document_.text.lineOf(found.dom));
  }

  const ParsedDocument& document_;
  Report& report_;
  std::set<std::pair<const xercesc::DOMNode*, std::u16string>> seen_;
};

bool isBlank(const boost::optional<std::u16string>& text) {
  return !text || opc::model::trimXmlSpace(*text).empty();
}

// The type is then unknown rather than wrong, and the missing part has been reported.
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
  const Element& root = document.schema.root;
  for (const Element& child : root.children) {
    if (child.isWrapper()) checkAuthors(document, child, report);
  }
  packaging::visitValues(root, document.text.root(), [&](const FoundValue& value) {
    if (value.field.kind() == FieldKind::Flag) checkFlag(document, value, report);
  });
  ChoiceCheck choices(document, report);
  packaging::visitElements(root, document.text.root(),
                           [&](const FoundElement& found) { choices.check(found); });
}

void checkIdentity(AddonPackage& package, const AddonFacts& facts, Report& report) {
  if (!facts.core) return;
  if (!isHostPartLost(package)) checkType(facts.core->getContentTypeFriendlyName(), report);
  if (isBlank(facts.core->getTitle())) report.add(kNoName, "", "the add-on has no name");
  if (isBlank(facts.core->getVersion())) report.add(kNoVersion, "", "the add-on has no version");
}

}  // namespace addon::checks::detail
