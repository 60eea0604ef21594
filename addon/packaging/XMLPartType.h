// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <xercesc/dom/DOM.hpp>

#include "opc/model/XercesHelper.h"
#include "opc/plservices/SchemaRoot.h"

namespace addon::packaging {

using opc::plservices::SchemaRoot;

/// A metadata document: one XML part of the package, with the four texts that identify it.
///
/// A document is a value that lives as long as a call. The first one initialises Xerces-C.
class XMLPartType {
 private:
  opc::model::XercesGuard xercesGuard;  // initialised before the other members

 public:
  const std::u16string partName;          ///< absolute, such as "/metadata/license.xml"
  const std::u16string contentType;       ///< of the part
  const std::u16string namespaceURI;      ///< of every element
  const std::u16string relationshipType;  ///< by which the package points at the part

  XMLPartType(std::u16string partName, std::u16string contentType, std::u16string namespaceURI,
              std::u16string relationshipType);
  virtual ~XMLPartType();

  /// Appends the whole document to an empty DOM document. Throws opc::model::InvalidXMLDocument for
  /// text with U+0000.
  virtual void buildDOM(
      std::unique_ptr<xercesc::DOMDocument, opc::model::XercesDeleter>& document) = 0;
  /// Takes over what the DOM document holds; what it lacks keeps its value in single-record
  /// documents, while lists are replaced. Lenient: names and namespaces of unknown elements and of
  /// the root are not looked at.
  virtual void populateFromDOM(xercesc::DOMDocument* document) = 0;

  /// populateFromDOM on parsed text, whatever encoding its declaration names. For text that is not
  /// well-formed throws opc::model::InvalidXMLDocument, for half a surrogate pair or too much text
  /// another opc::Exception; the document then keeps what it holds. What populateFromDOM throws
  /// passes, and what it had read by then stays.
  void populateFromXML(std::u16string xml);
  /// The document as standalone XML. Throws opc::model::InvalidXMLDocument for text that XML cannot
  /// carry or that the limits of opc::model::XercesHelper rule out.
  std::u16string getAsXMLString();

 protected:
  XMLPartType(const XMLPartType&) = default;
  /// For the assignment of one document to another of its class, which has the same identity.
  XMLPartType& operator=(const XMLPartType&) { return *this; }
};

}  // namespace addon::packaging
