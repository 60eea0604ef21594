// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/XMLPartType.h"
#include "hostarray/kxarray.h"

namespace addon::packaging {

/// One app of an add-on.
class AddonAppInstall {
 public:
  std::u16string name;          ///< for display
  std::u16string guid;          ///< free text
  std::u16string relativePath;  ///< of the app's file, as given
  bool installByDefault = false;

  AddonAppInstall() = default;
  /// From one element of a host struct array. Raises a host error for a missing field or one that
  /// is not text. The flag is set unless its text is exactly "false".
  AddonAppInstall(const kxArray* array, std::size_t index);
  /// From an "application" element. What is missing is empty; the flag is set only if its text is
  /// exactly "true".
  explicit AddonAppInstall(const xercesc::DOMElement* element);
  AddonAppInstall(const AddonAppInstall&) = default;
  AddonAppInstall& operator=(const AddonAppInstall&) = default;
  virtual ~AddonAppInstall() = default;

  /// A new host struct array with the fields of this record; the caller owns it.
  static kxArray* createStructArray(std::size_t count);
  /// Fills one element of such an array.
  void addRow(kxArray* array, std::size_t index) const;
  /// Writes attributes and children into an "application" element.
  void populateXMLNode(xercesc::DOMElement* element, const std::u16string& namespaceURI) const;
};

/// The apps that an add-on ships, in order: the part "/metadata/applications.xml".
class AddonAppInstallList : public XMLPartType {
 public:
  std::vector<AddonAppInstall> apps;

  AddonAppInstallList();
  /// From a host struct array of any shape, one app an element. Raises what AddonAppInstall does.
  explicit AddonAppInstallList(const kxArray* s);

  /// A new host struct array of one element an app; the caller owns it.
  kxArray* getStructArray();
  void buildDOM(
      std::unique_ptr<xercesc::DOMDocument, opc::model::XercesDeleter>& document) override;
  void populateFromDOM(xercesc::DOMDocument* document) override;
};

}  // namespace addon::packaging
