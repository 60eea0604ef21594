// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <xercesc/dom/DOM.hpp>

#include "addon/packaging/Field.h"
#include "addon/packaging/HostStruct.h"
#include "addon/packaging/RecordXml.h"
#include "addon/packaging/XMLPartType.h"
#include "hostarray/kxarray.h"

namespace addon::packaging {

struct DocumentTable;

/// A document that its table has created.
struct OwnedDocument {
  const DocumentTable* table;
  std::unique_ptr<XMLPartType> part;
  Record record;  ///< the same object
};

/// A kind of document.
struct DocumentTable {
  RecordTable record;
  /// The name of its root element, and the stem of the four texts that identify its part.
  const char* xml;
  /// The table of the manifest that holds the document; "" for a list, whose field has the key.
  const char* key = "";
  OwnedDocument (*make)();
  /// Whether the document is a list: its only field is the list of its records, and host struct and
  /// JSON are that list.
  bool isList = false;
  /// The stem of the content type, where it is another one.
  const char* contentTypeStem = xml;

  /// On the command line.
  const char* name() const { return record.noun; }

  // What identifies its part.
  std::u16string partName() const;
  std::u16string contentType() const;
  std::u16string namespaceURI() const;
  std::u16string relationshipType() const;

  const Field& list() const { return record.fields.front(); }
  /// The table of its records if it is a list, otherwise its own.
  const RecordTable& records() const { return isList ? list().table() : record; }
};

constexpr const RecordTable& recordTable(const DocumentTable& table) {
  return table.record;
}

template <typename Class>
OwnedDocument makeDocument() {
  auto document = std::make_unique<Class>();
  const Record record(*document);
  return {&Class::kTable, std::move(document), record};
}

/// A document class that `static const DocumentTable kTable` describes completely.
template <typename Class>
class TableDocument : public XMLPartType {
 public:
  TableDocument()
      : XMLPartType(Class::kTable.partName(), Class::kTable.contentType(),
                    Class::kTable.namespaceURI(), Class::kTable.relationshipType()) {}

  /// A new host struct: 1-by-1, or an array of one element per record. The caller owns it.
  kxArray* getStructArray() { return toStruct(Class::kTable, self()).release(); }
  void buildDOM(opc::model::DocumentPointer& document) override {
    writeXml(tree(), self(), document, namespaceURI);
  }
  void populateFromDOM(xercesc::DOMDocument* document) override {
    readXml(tree(), self(), document->getDocumentElement());
  }

 protected:
  void readStruct(const kxArray* array) { packaging::readStruct(Class::kTable, self(), array); }

 private:
  Record self() { return Record(static_cast<Class&>(*this)); }
  static const Element& tree() {
    static const Element element = elementOf(Class::kTable);
    return element;
  }
};

/// A record class that all is known of by `static const RecordTable kTable`.
template <typename Class>
class TableRecord {
 public:
  TableRecord() = default;
  TableRecord(const TableRecord&) = default;
  TableRecord& operator=(const TableRecord&) = default;
  virtual ~TableRecord() = default;

  /// A new host struct array with the fields of this record; the caller owns it.
  static kxArray* createStructArray(std::size_t count) {
    return createStruct(Class::kTable, count).release();
  }
  /// Fills one element of such an array.
  void addRow(kxArray* array, std::size_t index) const {
    writeStruct(ConstRecord(static_cast<const Class&>(*this)), array, index);
  }
  /// Writes the record into its element.
  void populateXMLNode(xercesc::DOMElement* element, const std::u16string& namespaceURI) const {
    writeXml(tree(), ConstRecord(static_cast<const Class&>(*this)), element, namespaceURI);
  }

 protected:
  void readStruct(const kxArray* array, std::size_t index) {
    packaging::readStruct(Record(static_cast<Class&>(*this)), array, index);
  }
  void readElement(const xercesc::DOMElement* element) {
    readXml(tree(), Record(static_cast<Class&>(*this)), element);
  }

 private:
  static const Element& tree() {
    static const Element element = elementOf(Class::kTable);
    return element;
  }
};

}  // namespace addon::packaging
