// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/DocumentTable.h"

namespace addon::packaging {

/// One example of an add-on. Paths name files of the add-on's tree; empty when there is none.
class Example : public TableRecord<Example> {
 public:
  static const RecordTable kTable;

  std::u16string name;
  std::u16string type;  ///< free text
  std::u16string source;
  std::u16string main;
  std::u16string thumbnail;
  std::vector<std::u16string> images;

  Example() = default;
  /// From element 0 of a host struct. Raises a host error for a missing text field, for one that is
  /// not text, and for images that are not a cell array of texts; unset or empty images are none.
  explicit Example(const kxArray* element) { readStruct(element, 0); }
  /// From an "example" element. What is missing is empty; of several files of one kind (images
  /// apart) the last counts.
  explicit Example(const xercesc::DOMElement* element) { readElement(element); }
};

/// A named group of examples.
class ExampleCategory : public TableRecord<ExampleCategory> {
 public:
  static const RecordTable kTable;

  std::u16string name;
  std::vector<Example> examples;
};

/// The examples of an add-on by category, in order: the part "/metadata/examples.xml".
class AddonExamples : public TableDocument<AddonExamples> {
 public:
  static const DocumentTable kTable;

  std::vector<ExampleCategory> categories;

  AddonExamples() = default;
  /// From a host struct array of any shape, one category per element. A category whose examples are
  /// unset has none. Raises a host error for a name that is missing or not text, and what Example
  /// does.
  explicit AddonExamples(const kxArray* array) { readStruct(array); }
};

}  // namespace addon::packaging
