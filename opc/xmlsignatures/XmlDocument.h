// SPDX-License-Identifier: MIT
#pragma once

#include <libxml/tree.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace opc::xmlsignatures {

struct FreeDocument {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using Document = std::unique_ptr<xmlDoc, FreeDocument>;

/// A signature that is not checked further: it has a form that is not supported, or none at all.
struct Refusal {
  std::string reason;
};

/// Parses a document without document type, in UTF-8 or UTF-16. Throws Exception
/// (ErrorCode::InvalidXml).
Document parse(std::string_view xml);

std::string_view toView(const xmlChar* text);
bool isNamed(const xmlNode* node, std::string_view space, std::string_view name);
/// "Manifest": the local name.
std::string_view nameOf(const xmlNode* node);

/// The attribute without namespace, or "".
std::string attributeOf(const xmlNode* node, const char* name);

// They throw Refusal.

/// The elements in `node`. Refuses everything else in it but white space.
std::vector<xmlNode*> elementsOf(const xmlNode* node);
/// The text of an element that holds nothing else.
std::string textOf(const xmlNode* node);
/// Refuses all but these attributes, which have no namespace.
void allowAttributes(const xmlNode* node, std::initializer_list<std::string_view> names);
/// The bytes that an element holds in Base64.
std::string base64Of(const xmlNode* node);

std::string toBase64(std::string_view bytes);

/// Appends ` name="value"` as Canonical XML 1.0 writes an attribute.
void appendAttribute(std::string& xml, std::string_view name, std::string_view value);

}  // namespace opc::xmlsignatures
