// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/XMLPartType.h"
#include "hostarray/kxarray.h"

namespace addon::packaging {

/// One revision of an add-on. Date and version are free text, kept as they were given.
class AddonRevision {
 public:
  std::u16string date;
  std::u16string version;
  std::u16string description;  ///< what changed

  AddonRevision() = default;
  /// From one element of a host struct array. Raises a host error for a missing field or one that
  /// is not text.
  AddonRevision(const kxArray* array, std::size_t index);
  /// From a "revision" element; what is missing is empty.
  explicit AddonRevision(const xercesc::DOMElement* element);
  AddonRevision(const AddonRevision&) = default;
  AddonRevision& operator=(const AddonRevision&) = default;
  virtual ~AddonRevision() = default;

  /// A new host struct array with the fields of this record; the caller owns it.
  static kxArray* createStructArray(std::size_t count);
  /// Fills one element of such an array.
  void addRow(kxArray* array, std::size_t index) const;
  /// Writes attributes and children into a "revision" element.
  void populateXMLNode(xercesc::DOMElement* element, const std::u16string& namespaceURI) const;
};

/// The releases of an add-on, in the order given: the part "/metadata/revisionHistory.xml".
class AddonRevisionHistory : public XMLPartType {
 public:
  std::vector<AddonRevision> revisions;

  AddonRevisionHistory();
  /// From a host struct array of any shape, one revision an element. Raises what AddonRevision
  /// does.
  explicit AddonRevisionHistory(const kxArray* s);

  /// A new host struct array of one element a revision; the caller owns it.
  kxArray* getStructArray();
  void buildDOM(
      std::unique_ptr<xercesc::DOMDocument, opc::model::XercesDeleter>& document) override;
  void populateFromDOM(xercesc::DOMDocument* document) override;
};

}  // namespace addon::packaging
