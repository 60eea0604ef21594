// SPDX-License-Identifier: MIT
#include "opc/xmlsignatures/SignatureDocument.h"

#include <libxml/parser.h>

#include <algorithm>
#include <array>
#include <map>
#include <new>
#include <utility>

#include "opc/xmlsignatures/Names.h"
#include "opc/xmlsignatures/SignatureTime.h"

namespace opc::xmlsignatures {

using interfaces::Hash;
using interfaces::ManifestReference;

namespace {

constexpr std::size_t kMaxReferences = 16;  // references in SignedInfo
constexpr std::size_t kMaxCertificates = 32;

constexpr std::array<std::pair<std::string_view, Hash>, 3> kHashes{
    {{"http://www.w3.org/2001/04/xmlenc#sha256", Hash::Sha256},
     {"http://www.w3.org/2001/04/xmldsig-more#sha384", Hash::Sha384},
     {"http://www.w3.org/2001/04/xmlenc#sha512", Hash::Sha512}}};

std::size_t sizeOf(Hash hash) {
  return hash == Hash::Sha256 ? 32 : hash == Hash::Sha384 ? 48 : 64;
}

/// For messages, shortened.
std::string quoted(std::string_view text) {
  constexpr std::size_t kMaxLength = 100;
  if (text.size() <= kMaxLength) return "'" + std::string(text) + "'";
  std::size_t size = kMaxLength;
  while ((static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
  return "'" + std::string(text.substr(0, size)) + "...'";
}

void require(bool condition, const std::string& reason) {
  if (!condition) throw Refusal{reason};
}

void requireDsig(const xmlNode* node, std::string_view name) {
  require(isNamed(node, kDsig, name), "it has an element " + quoted(nameOf(node)) +
                                          " in the place of '" + std::string(name) + "'");
}

bool isPlainId(std::string_view id) {
  const auto isLetter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  };
  const auto isMore = [&](char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
  };
  return !id.empty() && id.size() <= 256 && isLetter(id.front()) &&
         std::all_of(id.begin(), id.end(), isMore);
}

/// The algorithm of an element that holds nothing else.
std::string algorithmOf(const xmlNode* node) {
  allowAttributes(node, {"Algorithm"});
  require(elementsOf(node).empty(),
          "its element '" + std::string(nameOf(node)) + "' has parameters");
  return attributeOf(node, "Algorithm");
}

bool isCanonicalisation(std::string_view algorithm) {
  return algorithm == kC14n || algorithm == kC14nWithComments;
}

Hash hashOf(const xmlNode* method) {
  requireDsig(method, "DigestMethod");
  const std::string algorithm = algorithmOf(method);
  for (const auto& [name, hash] : kHashes) {
    if (name == algorithm) return hash;
  }
  throw Refusal{"its digest algorithm " + quoted(algorithm) + " is not supported"};
}

class Reader {
 public:
  explicit Reader(std::string_view xml) { result_.document = parse(xml); }

  SignatureDocument read() {
    xmlNode* root = xmlDocGetRootElement(result_.document.get());
    require(root != nullptr && isNamed(root, kDsig, "Signature"),
            "its root element is not 'Signature'");
    result_.signature = root;
    collectIds(root);
    allowAttributes(root, {"Id"});
    readParts(elementsOf(root));
    return std::move(result_);
  }

 private:
  /// Every element with an Id. Only these ids can be referred to.
  void collectIds(xmlNode* root) {
    for (xmlNode* node = root; node != nullptr; node = next(node, root)) {
      if (node->type != XML_ELEMENT_NODE) continue;
      require(node == root || !isNamed(node, kDsig, "Signature"), "it has a signature inside it");
      for (xmlAttr* one = node->properties; one != nullptr; one = one->next) collectId(node, one);
    }
  }

  void collectId(xmlNode* node, xmlAttr* attribute) {
    const std::string_view name = toView(attribute->name);
    // The parser itself takes xml:id for an id.
    require(attribute->ns == nullptr || name != "id", "it has an attribute 'xml:id'");
    if (name != "Id" || attribute->ns != nullptr) return;
    const std::string id = attributeOf(node, "Id");
    require(isPlainId(id), "its id " + quoted(id) + " is not a plain name");
    auto* document = result_.document.get();
    const auto* key = reinterpret_cast<const xmlChar*>(id.c_str());
    const bool isNew = ids_.emplace(id, node).second && xmlGetID(document, key) == nullptr;
    require(isNew, "its id " + quoted(id) + " occurs twice");
    if (xmlAddID(nullptr, document, key, attribute) == nullptr) throw std::bad_alloc();
  }

  static xmlNode* next(xmlNode* node, const xmlNode* root) {
    if (node->type == XML_ELEMENT_NODE && node->children != nullptr) return node->children;
    while (node != root && node->next == nullptr) node = node->parent;
    return node == root ? nullptr : node->next;
  }

  void readParts(const std::vector<xmlNode*>& parts) {
    require(parts.size() >= 3, "its element 'Signature' is not complete");
    requireDsig(parts[0], "SignedInfo");
    requireDsig(parts[1], "SignatureValue");
    allowAttributes(parts[1], {"Id"});
    base64Of(parts[1]);
    std::size_t at = 2;
    if (isNamed(parts[at], kDsig, "KeyInfo")) readKeyInfo(parts[at++]);
    for (; at < parts.size(); ++at) {
      requireDsig(parts[at], "Object");
      allowAttributes(parts[at], {"Id", "MimeType", "Encoding"});
    }
    readSignedInfo(parts[0]);
  }

  void readSignedInfo(const xmlNode* info) {
    allowAttributes(info, {"Id"});
    const std::vector<xmlNode*> parts = elementsOf(info);
    require(parts.size() >= 3 && parts.size() <= kMaxReferences + 2,
            "its element 'SignedInfo' has no references, or too many");
    requireDsig(parts[0], "CanonicalizationMethod");
    result_.canonicalisation = algorithmOf(parts[0]);
    require(isCanonicalisation(result_.canonicalisation),
            "its canonicalisation " + quoted(result_.canonicalisation) + " is not supported");
    requireDsig(parts[1], "SignatureMethod");
    result_.method = algorithmOf(parts[1]);
    const xmlNode* object = nullptr;
    for (std::size_t i = 2; i < parts.size(); ++i) {
      const xmlNode* target = readSignedReference(parts[i]);
      if (attributeOf(target, "Id") == kPackageObject) object = target;
    }
    if (object == nullptr) throw Refusal{"what is signed is not the object 'idPackageObject'"};
    require(object->parent == result_.signature,
            "its object 'idPackageObject' is not directly below 'Signature'");
    readPackageObject(object);
  }

  const xmlNode* readSignedReference(const xmlNode* reference) {
    requireDsig(reference, "Reference");
    allowAttributes(reference, {"Id", "URI", "Type"});
    const std::string uri = attributeOf(reference, "URI");
    const auto target = uri.starts_with('#') ? ids_.find(uri.substr(1)) : ids_.end();
    require(target != ids_.end(), "it refers to " + quoted(uri) + ", which is not in it");
    require(isInObject(target->second), "it refers to " + quoted(uri) + ", which is not an object");
    auto& uris = result_.signedUris;
    require(std::find(uris.begin(), uris.end(), uri) == uris.end(),
            "it refers to " + quoted(uri) + " twice");
    uris.push_back(uri);
    ManifestReference form;
    readDigest(reference, form);
    require(form.form != ManifestReference::Form::Relationships,
            "it has a relationship transform in 'SignedInfo'");
    return target->second;
  }

  bool isInObject(const xmlNode* node) const {
    while (node != nullptr && node->parent != result_.signature) node = node->parent;
    return node != nullptr && isNamed(node, kDsig, "Object");
  }

  void readPackageObject(const xmlNode* object) {
    requireDsig(object, "Object");
    const std::vector<xmlNode*> parts = elementsOf(object);
    require(parts.size() == 2,
            "its package object has other elements than a manifest and its time");
    const bool isManifestFirst = isNamed(parts[0], kDsig, "Manifest");
    const xmlNode* manifest = isManifestFirst ? parts[0] : parts[1];
    const xmlNode* properties = isManifestFirst ? parts[1] : parts[0];
    requireDsig(manifest, "Manifest");
    requireDsig(properties, "SignatureProperties");
    allowAttributes(manifest, {"Id"});
    for (const xmlNode* reference : elementsOf(manifest)) readManifestReference(reference);
    readTime(properties);
  }

  void readManifestReference(const xmlNode* node) {
    requireDsig(node, "Reference");
    allowAttributes(node, {"Id", "URI", "Type"});
    ManifestReference reference;
    reference.uri = attributeOf(node, "URI");
    require(reference.uri.starts_with('/') && !reference.uri.starts_with("//"),
            "its manifest refers to " + quoted(reference.uri) + ", which is not in the package");
    readDigest(node, reference);
    result_.references.push_back(std::move(reference));
  }

  /// Transforms, if any, algorithm and value.
  static void readDigest(const xmlNode* node, ManifestReference& reference) {
    const std::vector<xmlNode*> parts = elementsOf(node);
    const bool hasTransforms = !parts.empty() && isNamed(parts[0], kDsig, "Transforms");
    require(parts.size() == (hasTransforms ? 3 : 2), "its element 'Reference' is not complete");
    if (hasTransforms) readTransforms(parts[0], reference);
    reference.hash = hashOf(parts[parts.size() - 2]);
    requireDsig(parts.back(), "DigestValue");
    allowAttributes(parts.back(), {});
    reference.digest = base64Of(parts.back());
    require(reference.digest.size() == sizeOf(reference.hash), "a digest in it has another size");
  }

  static void readTransforms(const xmlNode* node, ManifestReference& reference) {
    using Form = ManifestReference::Form;
    allowAttributes(node, {});
    std::vector<xmlNode*> transforms = elementsOf(node);
    for (const xmlNode* one : transforms) requireDsig(one, "Transform");
    if (!transforms.empty() && attributeOf(transforms[0], "Algorithm") == kRelationshipTransform) {
      readSelection(transforms[0], reference);
      reference.form = Form::Relationships;
      transforms.erase(transforms.begin());
    }
    require(transforms.size() == 1, "its transforms are not supported");
    const std::string algorithm = algorithmOf(transforms[0]);
    require(isCanonicalisation(algorithm),
            "its transform " + quoted(algorithm) + " is not supported");
    reference.keepsComments = algorithm == kC14nWithComments;
    if (reference.form == Form::Bytes) reference.form = Form::Xml;
  }

  static void readSelection(const xmlNode* transform, ManifestReference& reference) {
    allowAttributes(transform, {"Algorithm"});
    for (const xmlNode* one : elementsOf(transform)) {
      const bool isOne = isNamed(one, kPackageDsig, "RelationshipReference");
      require(isOne || isNamed(one, kPackageDsig, "RelationshipsGroupReference"),
              "its relationship transform has an element " + quoted(nameOf(one)));
      const char* name = isOne ? "SourceId" : "SourceType";
      allowAttributes(one, {name});
      require(elementsOf(one).empty(), "its relationship transform has parameters");
      (isOne ? reference.ids : reference.types).push_back(attributeOf(one, name));
    }
  }

  void readTime(const xmlNode* properties) {
    allowAttributes(properties, {"Id"});
    for (const xmlNode* property : elementsOf(properties)) {
      requireDsig(property, "SignatureProperty");
      if (attributeOf(property, "Id") != "idSignatureTime") continue;
      const std::vector<xmlNode*> times = elementsOf(property);
      require(times.size() == 1 && isNamed(times[0], kPackageDsig, "SignatureTime"),
              "its property 'idSignatureTime' is not a time");
      const std::vector<xmlNode*> parts = elementsOf(times[0]);
      require(parts.size() == 2 && isNamed(parts[0], kPackageDsig, "Format") &&
                  isNamed(parts[1], kPackageDsig, "Value"),
              "its property 'idSignatureTime' is not a time");
      result_.time = parseTime(textOf(parts[1]));
    }
    require(result_.time.has_value(), "it does not say when it was made");
  }

  // Nothing in here is signed, so nothing but certificates is used.
  void readKeyInfo(const xmlNode* info) {
    allowAttributes(info, {"Id"});
    for (const xmlNode* data : elementsOf(info)) {
      if (!isNamed(data, kDsig, "X509Data")) continue;
      for (const xmlNode* one : elementsOf(data)) {
        if (!isNamed(one, kDsig, "X509Certificate")) continue;
        require(result_.certificates.size() < kMaxCertificates, "it has too many certificates");
        result_.certificates.push_back(base64Of(one));
      }
    }
  }

  SignatureDocument result_;
  std::map<std::string, const xmlNode*, std::less<>> ids_;
};

}  // namespace

SignatureDocument readSignature(std::string_view xml) {
  return Reader(xml).read();
}

}  // namespace opc::xmlsignatures
