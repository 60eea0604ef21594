// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/CorePropertiesReader.h"

#include <algorithm>
#include <set>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/DomText.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/XercesErrors.h"
#include "opc/model/XercesHelper.h"
#include "opc/plservices/W3cDateTime.h"
#include "opc/plservices/detail/CorePropertiesSchema.h"

namespace opc::plservices::detail {
namespace {

using model::domLocalName;
using model::domName;
using model::domNamespace;
using model::domText;
using xercesc::DOMElement;
using xercesc::DOMNode;

[[noreturn]] void fail(const char* rule, const std::string& why) {
  throw FormatError(rule, why);
}

std::string elementName(const DOMNode& element) {
  return "element '" + domName(element) + "'";
}

bool isNamed(const DOMNode& node, std::u16string_view space, std::u16string_view name) {
  return domNamespace(node) == space && domLocalName(node) == name;
}

bool isBlank(std::u16string_view text) {
  return model::trimXmlSpace(text).empty();
}

std::u16string textOf(const DOMElement& element) {
  std::u16string text;
  model::XercesHelper::getElementText(&element, text);
  return text;
}

std::optional<std::u16string> languageOf(const DOMElement& element) {
  const xercesc::DOMAttr* attribute =
      element.getAttributeNodeNS(std::u16string(model::kXmlNamespace).c_str(), u"lang");
  if (attribute == nullptr) return std::nullopt;
  return std::u16string(domText(attribute->getValue()));
}

// The attributes that the rules know by name.
enum class Allowed { Nothing, Language, Type };

class Reader {
 public:
  Reader(CorePropertiesPart& part, model::FaultSink& faults) : part_(part), faults_(faults) {}

  void read(const DOMElement& root) {
    bool isRoot = false;
    model::readPiece(faults_, [&] {
      checkRoot(root);
      isRoot = true;
      checkAttributes(root, Allowed::Nothing, "CP-4");
    });
    if (!isRoot) return;
    for (const DOMNode* node = root.getFirstChild(); node != nullptr;
         node = node->getNextSibling()) {
      model::readPiece(faults_, [&] { readChild(*node); });
    }
  }

 private:
  static void checkRoot(const DOMElement& root) {
    if (!isNamed(root, schema::kCore, schema::kRoot)) {
      fail("CP-4", "the root is " + elementName(root) + " and not 'coreProperties'");
    }
  }

  void readChild(const DOMNode& node) {
    if (model::isElementNode(node)) {
      readProperty(static_cast<const DOMElement&>(node));
    } else if (model::isTextNode(node) && !isBlank(domText(node.getNodeValue()))) {
      fail("CP-4", "there is text between the properties");
    }
  }

  void readProperty(const DOMElement& element) {
    if (!seen_.emplace(domNamespace(element), domLocalName(element)).second) {
      fail("CP-6", elementName(element) + " occurs twice");
    }
    if (isNamed(element, schema::kCore, schema::kKeywords)) return readKeywords(element);
    for (const schema::TextElement& known : schema::kTextElements) {
      if (isNamed(element, known.space, known.name)) return readText(element, known.property);
    }
    for (const schema::DateElement& known : schema::kDateElements) {
      if (isNamed(element, known.space, known.name)) return readDate(element, known.property);
    }
    failForElement(element, "CP-5");
  }

  void readText(const DOMElement& element, TextProperty property) {
    checkAttributes(element, Allowed::Nothing, "CP-7");
    checkNoElements(element);
    if (property == TextProperty::ContentType) {
      part_.addWarning("CP-14", elementName(element) + " is no longer a core property");
    }
    part_.setText(property, textOf(element));
  }

  void readDate(const DOMElement& element, DateProperty property) {
    const bool isTyped = property != DateProperty::LastPrinted;
    checkAttributes(element, isTyped ? Allowed::Type : Allowed::Nothing, "CP-7");
    if (isTyped) checkType(element);
    checkNoElements(element);
    const std::u16string text = textOf(element);
    const std::u16string_view trimmed = model::trimXmlSpace(text);
    if (trimmed.empty()) {
      part_.addWarning("CP-12", elementName(element) + " is empty");
      return;
    }
    const boost::posix_time::ptime date = parseDate(element, trimmed, !isTyped);
    if (!date.is_special()) return part_.setDate(property, date);
    part_.setDistantDate(property, std::u16string(trimmed));
  }

  boost::posix_time::ptime parseDate(const DOMElement& element, std::u16string_view text,
                                     bool needsTime) {
    try {
      const W3cDateTime date = parseW3cDateTime(text);
      if (date.time.is_special()) {
        part_.addWarning("CP-12", elementName(element) +
                                      " is in no year from 1400 to 9999, and is taken for absent");
      } else if (needsTime && !date.hasTime) {
        part_.addWarning("CP-12", elementName(element) + " has a date without time");
      } else if (needsTime && !date.hasSeconds) {
        part_.addWarning("CP-12", elementName(element) + " has a time without seconds");
      } else if (date.hasTime && !date.hasZone) {
        part_.addWarning("CP-12", elementName(element) + " has a time without zone, taken for UTC");
      }
      return date.time;
    } catch (FormatError& fault) {
      fault.addContext(elementName(element));
      throw;
    }
  }

  // xsi:type holds a name with a prefix, which stands for a namespace.
  void checkType(const DOMElement& element) {
    const xercesc::DOMAttr* attribute = element.getAttributeNodeNS(
        std::u16string(model::kSchemaInstanceNamespace).c_str(), u"type");
    if (attribute == nullptr) {
      fail("CP-9", elementName(element) + " has no xsi:type 'dcterms:W3CDTF'");
    }
    const std::u16string_view type = model::trimXmlSpace(domText(attribute->getValue()));
    const std::size_t colon = std::min(type.find(u':'), type.size());
    const std::u16string prefix(type.substr(0, colon));
    const bool isBare = colon == type.size();
    const std::u16string_view name = isBare ? type : type.substr(colon + 1);
    const std::u16string_view space =
        domText(element.lookupNamespaceURI(isBare ? nullptr : prefix.c_str()));
    if (name != schema::kDateType || space != schema::kTerms) {
      fail("CP-9", elementName(element) + " has the xsi:type '" + toUtf8ForDisplay(type) +
                       "' and not 'dcterms:W3CDTF'");
    }
    if (prefix != u"dcterms" || isBare) {
      part_.addWarning("CP-9", elementName(element) + " has the xsi:type '" +
                                   toUtf8ForDisplay(type) + "', not spelled 'dcterms:W3CDTF'");
    }
  }

  void readKeywords(const DOMElement& element) {
    checkAttributes(element, Allowed::Language, "CP-7");
    Keywords keywords;
    keywords.language = languageOf(element);
    for (const DOMNode* node = element.getFirstChild(); node != nullptr;
         node = node->getNextSibling()) {
      if (model::isElementNode(*node)) {
        keywords.pieces.push_back(readValue(static_cast<const DOMElement&>(*node)));
      } else if (model::isTextNode(*node)) {
        keywords.pieces.push_back({std::u16string(domText(node->getNodeValue()))});
      }
    }
    part_.setKeywords(std::move(keywords));
  }

  Keywords::Piece readValue(const DOMElement& element) {
    if (!isNamed(element, schema::kCore, schema::kValue)) failForElement(element, "CP-13");
    checkAttributes(element, Allowed::Language, "CP-7");
    checkNoElements(element);
    return {textOf(element), true, languageOf(element)};
  }

  static void checkNoElements(const DOMElement& element) {
    for (const DOMNode* node = element.getFirstChild(); node != nullptr;
         node = node->getNextSibling()) {
      if (model::isElementNode(*node)) failForElement(*node, "CP-13");
    }
  }

  // An element that has no business where it is; some kinds have a rule of their own.
  [[noreturn]] static void failForElement(const DOMNode& element, const char* rule) {
    const std::u16string_view space = domNamespace(element);
    if (space == model::kMarkupCompatibilityNamespace) {
      fail("CP-11", elementName(element) + " of markup compatibility is not allowed");
    }
    const bool isDate =
        std::any_of(schema::kDateElements.begin(), schema::kDateElements.end(),
                    [&](const auto& known) { return isNamed(element, known.space, known.name); });
    if (space == schema::kTerms && !isDate) {
      fail("CP-8", elementName(element) + " of the Dublin Core terms is not allowed");
    }
    fail(rule, elementName(element) + " is not allowed here");
  }

  void checkAttributes(const DOMElement& element, Allowed allowed, const char* rule) {
    const xercesc::DOMNamedNodeMap* attributes = element.getAttributes();
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
      checkAttribute(*attributes->item(i), element, allowed, rule);
    }
  }

  void checkAttribute(const DOMNode& attribute, const DOMElement& element, Allowed allowed,
                      const char* rule) {
    const std::u16string_view space = domNamespace(attribute);
    const bool isLanguage = isNamed(attribute, model::kXmlNamespace, u"lang");
    const bool isType = isNamed(attribute, model::kSchemaInstanceNamespace, u"type");
    if (model::isNamespaceDeclaration(attribute)) return checkDeclaration(attribute, element);
    if (isLanguage && allowed == Allowed::Language) return;
    if (isType && allowed == Allowed::Type) return;

    const bool isReserved =
        space == model::kXmlNamespace || space == model::kSchemaInstanceNamespace;
    const char* broken = space == model::kMarkupCompatibilityNamespace ? "CP-11"
                         : isLanguage                                  ? "CP-10"
                         : isType                                      ? "CP-9"
                         : isReserved                                  ? "XM-4"
                                                                       : rule;
    fail(broken,
         "attribute '" + domName(attribute) + "' of " + elementName(element) + " is not allowed");
  }

  void checkDeclaration(const DOMNode& attribute, const DOMElement& element) {
    if (domText(attribute.getNodeValue()) != model::kMarkupCompatibilityNamespace) return;
    part_.addWarning("CP-11", elementName(element) +
                                  " declares the namespace of markup "
                                  "compatibility, which has no use here");
  }

  CorePropertiesPart& part_;
  model::FaultSink& faults_;
  std::set<std::pair<std::u16string_view, std::u16string_view>> seen_;
};

}  // namespace

void readCoreProperties(const DOMElement& root, CorePropertiesPart& part,
                        model::FaultSink& faults) {
  model::DelayedFaults::collect(
      faults, [&](model::FaultSink& delayed) { Reader(part, delayed).read(root); });
}

}  // namespace opc::plservices::detail
