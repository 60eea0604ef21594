// SPDX-License-Identifier: MIT
#include "opc/model/detail/RelationshipsReader.h"

#include <utility>
#include <xercesc/util/XMLChar.hpp>

#include "opc/Exception.h"
#include "opc/model/DocumentPieces.h"
#include "opc/model/DomText.h"
#include "opc/model/detail/MarkupCompatibility.h"
#include "opc/model/detail/TargetResolution.h"

namespace opc::model::detail {

/// Builds a set from what markup compatibility leaves of a relationships part.
class RelationshipsReader final : public MarkupConsumer {
 public:
  RelationshipsReader(RelationshipSet& set, FaultSink& faults) : set_(set), faults_(faults) {}

  void startElement(const XmlNode& element,
                    const std::vector<const XmlAttribute*>& attributes) override {
    ++depth_;
    readPiece(faults_, [&] { take(element, attributes); });
  }

  void endElement() override { --depth_; }

  void characters(std::u16string_view text) override {
    // Text inside of a relationship is allowed, and means nothing.
    if (depth_ != 1 || trimXmlSpace(text).empty()) return;
    faults_.add(FormatError("RL-3", "root element: there is text between relationships"), {});
  }

 private:
  // The attributes of one element. Null where there is none.
  struct Attributes {
    const XmlAttribute* id = nullptr;
    const XmlAttribute* type = nullptr;
    const XmlAttribute* target = nullptr;
    const XmlAttribute* mode = nullptr;
  };

  // "" if there is none.
  static std::u16string_view valueOf(const XmlAttribute* attribute) {
    return attribute == nullptr ? std::u16string_view() : attribute->value;
  }

  void take(const XmlNode& element, const std::vector<const XmlAttribute*>& attributes) {
    for (const XmlAttribute* attribute : attributes) checkNamespace(*attribute);
    if (depth_ == 1) {
      startRoot(element, attributes);
    } else if (depth_ == 2) {
      startRelationship(element, attributes);
    } else {
      throw FormatError(
          "RL-3", "element '" + element.name.shown() + "': a relationship has no elements in it");
    }
  }

  static void checkNamespace(const XmlAttribute& attribute) {
    const XmlName& name = attribute.name;
    if (name.namespaceUri != kXmlNamespace) return;
    const char* rule = name.localName == u"base" ? "RL-14" : "XM-4";
    throw FormatError(rule, "attribute '" + name.shown() + "': it may not stand here");
  }

  static void startRoot(const XmlNode& element,
                        const std::vector<const XmlAttribute*>& attributes) {
    if (element.name.localName != u"Relationships") {
      throw FormatError("RL-3",
                        "root element '" + element.name.shown() + "': it is not 'Relationships'");
    }
    if (!attributes.empty()) {
      throw FormatError("RL-3", "attribute '" + attributes.front()->name.shown() +
                                    "': the root element takes none");
    }
  }

  void startRelationship(const XmlNode& element,
                         const std::vector<const XmlAttribute*>& attributes) {
    if (element.name.localName != u"Relationship") {
      throw FormatError("RL-3", "element '" + element.name.shown() + "': it is not 'Relationship'");
    }
    add(readAttributes(attributes));
  }

  static Attributes readAttributes(const std::vector<const XmlAttribute*>& attributes) {
    Attributes result;
    for (const XmlAttribute* attribute : attributes) {
      const std::u16string_view name = attribute->name.localName;
      const bool own = attribute->name.namespaceUri.empty();
      const XmlAttribute** slot = !own                    ? nullptr
                                  : name == u"Id"         ? &result.id
                                  : name == u"Type"       ? &result.type
                                  : name == u"Target"     ? &result.target
                                  : name == u"TargetMode" ? &result.mode
                                                          : nullptr;
      if (slot == nullptr) {
        throw FormatError(
            "RL-3", "attribute '" + attribute->name.shown() + "': a relationship does not take it");
      }
      *slot = attribute;
    }
    return result;
  }

  void add(const Attributes& attributes) {
    const std::u16string id = readId(attributes.id);
    if (trimXmlSpace(valueOf(attributes.type)).empty()) {
      throw FormatError("RL-5", set_.describe(id) + ": it has no type");
    }
    const TargetMode mode = readMode(attributes.mode, id);
    if (attributes.target == nullptr) {
      throw FormatError(mode == TargetMode::Internal ? "RL-7" : "RL-3",
                        set_.describe(id) + ": it has no target");
    }
    const std::u16string type(valueOf(attributes.type));
    const std::u16string_view target = attributes.target->value;
    if (mode == TargetMode::Internal) {
      addInternal(id, type, target);
    } else {
      set_.addStored({Relationship(id, type, URI(std::u16string(target)), mode), {}, false});
    }
  }

  void addInternal(const std::u16string& id, const std::u16string& type,
                   std::u16string_view target) {
    ResolvedTarget resolved = resolve(id, target);
    if (resolved.name.isRelationshipsPartName()) {
      throw FormatError("RL-9", set_.describe(id) + ": it points at the relationships part '" +
                                    resolved.name.canonical() + "'");
    }
    Relationship relationship(id, type, URI(fromUtf8(resolved.name.canonical())),
                              TargetMode::Internal);
    set_.addStored({std::move(relationship), std::move(resolved.fragment), resolved.corrected});
  }

  ResolvedTarget resolve(const std::u16string& id, std::u16string_view target) const {
    return inContext([&] { return set_.describe(id); },
                     [&] { return resolveTarget(set_.source_, target); });
  }

  std::u16string readId(const XmlAttribute* attribute) const {
    const std::u16string_view id = trimXmlSpace(valueOf(attribute));
    if (!xercesc::XMLChar1_0::isValidNCName(id.data(), id.size())) {
      throw FormatError("RL-4", set_.describe(id) + ": the id is " +
                                    (id.empty() ? "missing" : "not an XML name without a colon"));
    }
    return std::u16string(id);
  }

  TargetMode readMode(const XmlAttribute* attribute, std::u16string_view id) const {
    if (attribute == nullptr || attribute->value == u"Internal") return TargetMode::Internal;
    if (attribute->value == u"External") return TargetMode::External;
    throw FormatError("RL-6", set_.describe(id) + ": target mode '" +
                                  toUtf8ForDisplay(attribute->value) +
                                  "' is neither 'Internal' nor 'External'");
  }

  RelationshipSet& set_;
  FaultSink& faults_;
  std::size_t depth_ = 0;
};

namespace {

void checkRootNamespace(const XmlName& root) {
  if (root.namespaceUri == kRelationshipsNamespace) return;
  throw FormatError(
      "RL-3", "root element '" + root.shown() + "': it is not of the relationships namespace");
}

// What breaks the rules of the markup ends the reading.
class RelationshipsDocument final : public DocumentPieces {
 public:
  RelationshipsDocument(RelationshipsReader& reader, FaultSink& faults)
      : markup_(kRelationshipsNamespace, reader), faults_(faults) {}

  void startRoot(const XmlNode& root) override {
    read([&] {
      checkRootNamespace(root.name);
      markup_.startRoot(root);
    });
  }

  void takeChild(const XmlNode& child) override {
    if (isSound_) read([&] { markup_.takeChild(child); });
  }

 private:
  template <typename Read>
  void read(const Read& action) {
    readPiece(faults_, [&] {
      isSound_ = false;
      action();
      isSound_ = true;
    });
  }

  MarkupProcessor markup_;
  FaultSink& faults_;
  bool isSound_ = true;
};

}  // namespace

void readRelationships(InputStream& stream, RelationshipSet& set, FaultSink& faults) {
  DelayedFaults::collect(faults, [&](FaultSink& delayed) {
    RelationshipsReader reader(set, delayed);
    RelationshipsDocument document(reader, delayed);
    parsePieces(stream, document);
  });
}

}  // namespace opc::model::detail
