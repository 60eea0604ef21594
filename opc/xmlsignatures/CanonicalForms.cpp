// SPDX-License-Identifier: MIT
#include "opc/xmlsignatures/CanonicalForms.h"

#include <libxml/c14n.h>

#include <algorithm>
#include <string>
#include <vector>

#include "opc/Exception.h"
#include "opc/xmlsignatures/Names.h"
#include "opc/xmlsignatures/XmlDocument.h"

namespace opc::xmlsignatures {

using interfaces::CanonicalXml;
using interfaces::ManifestReference;

namespace {

bool hasCommentsIn(const xmlDoc& document) {
  const auto* top = reinterpret_cast<const xmlNode*>(&document);
  const xmlNode* node = top->children;
  while (node != nullptr) {
    if (node->type == XML_COMMENT_NODE) return true;
    if (node->type == XML_ELEMENT_NODE && node->children != nullptr) {
      node = node->children;
      continue;
    }
    while (node != top && node->next == nullptr) node = node->parent;
    if (node == top) return false;
    node = node->next;
  }
  return false;
}

struct StoredRelationship {
  std::string id;
  std::string type;
  std::string target;
  std::string mode;
};

std::vector<StoredRelationship> relationshipsIn(const xmlDoc& document) {
  const xmlNode* root = xmlDocGetRootElement(&document);
  std::vector<StoredRelationship> all;
  try {
    if (!isNamed(root, kRelationships, "Relationships")) {
      throw Refusal{"its root element is not 'Relationships'"};
    }
    for (const xmlNode* one : elementsOf(root)) {
      if (!isNamed(one, kRelationships, "Relationship")) {
        throw Refusal{"it has an element that is not a relationship"};
      }
      const std::string mode = attributeOf(one, "TargetMode");
      all.push_back({attributeOf(one, "Id"), attributeOf(one, "Type"), attributeOf(one, "Target"),
                     mode.empty() ? "Internal" : mode});
    }
  } catch (const Refusal& refusal) {
    throw Exception(ErrorCode::InvalidXml, refusal.reason);
  }
  std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
  return all;
}

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

CanonicalXml canonicalise(std::string_view xml, bool keepsComments) {
  const Document document = parse(xml);
  xmlChar* bytes = nullptr;
  const int size = xmlC14NDocDumpMemory(document.get(), nullptr, XML_C14N_1_0, nullptr,
                                        keepsComments ? 1 : 0, &bytes);
  if (size < 0) throw Exception(ErrorCode::InvalidXml, "it has no canonical form");
  CanonicalXml result;
  result.bytes.assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  xmlFree(bytes);
  result.lacksComments = !keepsComments && hasCommentsIn(*document);
  return result;
}

// The result of the transform is so plain that its canonical form can be written down.
CanonicalXml selectRelationships(std::string_view xml, const ManifestReference& reference) {
  const Document document = parse(xml);
  CanonicalXml result;
  result.bytes = "<Relationships xmlns=\"" + std::string(kRelationships) + "\">";
  for (const StoredRelationship& one : relationshipsIn(*document)) {
    if (!contains(reference.ids, one.id) && !contains(reference.types, one.type)) {
      result.lacking.push_back({one.id, one.type});
      continue;
    }
    result.bytes += "<Relationship";
    appendAttribute(result.bytes, "Id", one.id);
    appendAttribute(result.bytes, "Target", one.target);
    appendAttribute(result.bytes, "TargetMode", one.mode);
    appendAttribute(result.bytes, "Type", one.type);
    result.bytes += "></Relationship>";
  }
  result.bytes += "</Relationships>";
  return result;
}

}  // namespace opc::xmlsignatures
