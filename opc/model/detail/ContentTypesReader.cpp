// SPDX-License-Identifier: MIT
#include "opc/model/detail/ContentTypesReader.h"

#include "opc/Exception.h"
#include "opc/model/DomText.h"
#include "opc/model/PartName.h"

namespace opc::model::detail {
namespace {

std::string quoted(const XmlName& name) {
  return "'" + name.shown() + "'";
}

// The rule that an attribute without a place breaks.
const char* foreignAttributeRule(const XmlAttribute& attribute, const char* ownRule) {
  const std::u16string_view space = attribute.name.namespaceUri;
  if (space == kXmlNamespace || space == kSchemaInstanceNamespace) return "XM-4";
  return space.empty() ? ownRule : "CT-13";
}

void checkRoot(const XmlNode& root) {
  if (root.name.namespaceUri != kContentTypesNamespace || root.name.localName != u"Types") {
    throw FormatError("CT-2", "root element " + quoted(root.name) +
                                  ": it is not 'Types' of the content types namespace");
  }
}

void checkRootAttributes(const XmlNode& root) {
  for (const XmlAttribute& attribute : root.attributes) {
    if (attribute.isNamespaceDeclaration()) continue;
    throw FormatError(foreignAttributeRule(attribute, "CT-2"),
                      "attribute " + quoted(attribute.name) + ": the root element takes none");
  }
}

// The two attributes of an entry.
struct EntryAttributes {
  std::u16string_view key;
  std::u16string_view type;
};

EntryAttributes readAttributes(const XmlNode& element, std::u16string_view keyName) {
  const XmlAttribute* key = nullptr;
  const XmlAttribute* type = nullptr;
  for (const XmlAttribute& attribute : element.attributes) {
    if (attribute.isNamespaceDeclaration()) continue;
    const bool own = attribute.name.namespaceUri.empty();
    if (own && attribute.name.localName == keyName) {
      key = &attribute;
    } else if (own && attribute.name.localName == u"ContentType") {
      type = &attribute;
    } else {
      throw FormatError(foreignAttributeRule(attribute, "CT-3"),
                        "attribute " + quoted(attribute.name) + ": element " +
                            quoted(element.name) + " does not take it");
    }
  }
  if (key == nullptr || type == nullptr) {
    throw FormatError("CT-3", "element " + quoted(element.name) + ": it lacks the attribute '" +
                                  toUtf8ForDisplay(key == nullptr ? keyName : u"ContentType") +
                                  "'");
  }
  return {key->value, type->value};
}

void checkEmpty(const XmlNode& element) {
  if (element.firstChild == nullptr) return;
  throw FormatError("CT-3", "element " + quoted(element.name) + ": it is not empty");
}

// The type, with the entry named when it is none.
ContentType readType(std::u16string_view type, const std::string& entry) {
  try {
    return ContentType(type);
  } catch (const FormatError& fault) {
    throw FormatError(fault.rule(), entry + ": " + fault.what());
  }
}

void readDefault(const XmlNode& element, ContentTypes& types) {
  const EntryAttributes attributes = readAttributes(element, u"Extension");
  checkEmpty(element);
  const std::string extension = toUtf8ForDisplay(attributes.key);
  types.addDefault(extension,
                   readType(attributes.type, "default type for extension '" + extension + "'"));
}

PartName readPartName(std::u16string_view name) {
  try {
    return PartName(name);
  } catch (const FormatError& fault) {
    throw FormatError("CT-5",
                      "type override for '" + toUtf8ForDisplay(name) + "': " + fault.what());
  }
}

void readOverride(const XmlNode& element, ContentTypes& types) {
  const EntryAttributes attributes = readAttributes(element, u"PartName");
  checkEmpty(element);
  const PartName name = readPartName(attributes.key);
  types.addOverride(name.itemName(),
                    readType(attributes.type, "type override for '" + name.canonical() + "'"));
}

void readChild(const XmlNode& node, ContentTypes& types) {
  if (!node.isElement()) {
    if (trimXmlSpace(node.text).empty()) return;
    throw FormatError("CT-2", "root element 'Types': it holds text");
  }
  if (node.name.namespaceUri != kContentTypesNamespace) {
    throw FormatError("CT-13", "element " + quoted(node.name) + ": it is of another namespace");
  }
  if (node.name.localName == u"Default") return readDefault(node, types);
  if (node.name.localName == u"Override") return readOverride(node, types);
  throw FormatError("CT-2",
                    "element " + quoted(node.name) + ": it is neither 'Default' nor 'Override'");
}

}  // namespace

void ContentTypesReader::startRoot(const XmlNode& root) {
  readPiece(faults_, [&] {
    checkRoot(root);
    isRead_ = true;
    checkRootAttributes(root);
  });
}

void ContentTypesReader::takeChild(const XmlNode& child) {
  if (!isRead_) return;
  readPiece(faults_, [&] { readChild(child, types_); });
}

}  // namespace opc::model::detail
