// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/XMLPartType.h"
#include "hostarray/kxarray.h"

namespace addon::packaging {

/// One example of an add-on. Paths name files of the add-on's tree; empty when there is none.
class Example {
 public:
  std::u16string name;
  std::u16string type;  ///< free text
  std::u16string source;
  std::u16string main;
  std::u16string thumbnail;
  std::vector<std::u16string> images;

  Example() = default;
  /// From element 0 of a host struct. Raises a host error for a missing text field, for one that is
  /// not text, and for images that are no cell array of texts; unset or empty images are none.
  explicit Example(const kxArray* element);
  /// From an "example" element. What is missing is empty; of several files of one kind (images
  /// apart) the last counts.
  explicit Example(const xercesc::DOMElement* element);
  Example(const Example&) = default;
  Example& operator=(const Example&) = default;
  virtual ~Example() = default;

  /// A new host struct array with the fields of this record; the caller owns it.
  static kxArray* createStructArray(std::size_t count);
  /// Fills one element of such an array; without images that field stays unset.
  void addRow(kxArray* array, std::size_t index) const;
  /// Writes attributes and "file" children, in that namespace, into an "example" element.
  void populateXMLNode(xercesc::DOMElement* element, std::u16string namespaceUri) const;
};

/// A named group of examples.
class ExampleCategory {
 public:
  std::u16string name;
  std::vector<Example> examples;

  ExampleCategory() = default;
  ExampleCategory(const ExampleCategory&) = default;
  ExampleCategory& operator=(const ExampleCategory&) = default;
  virtual ~ExampleCategory() = default;
};

/// The examples of an add-on by category, in order: the part "/metadata/examples.xml".
class AddonExamples : public XMLPartType {
 public:
  std::vector<ExampleCategory> categories;

  AddonExamples();
  /// From a host struct array of any shape, one category an element. A category whose examples are
  /// unset has none. Raises a host error for a name that is missing or no text, and what Example
  /// does.
  explicit AddonExamples(const kxArray* array);

  /// A new host struct array of one element a category; the caller owns it.
  kxArray* getStructArray();
  void buildDOM(
      std::unique_ptr<xercesc::DOMDocument, opc::model::XercesDeleter>& document) override;
  void populateFromDOM(xercesc::DOMDocument* document) override;
};

}  // namespace addon::packaging
