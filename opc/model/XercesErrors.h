// SPDX-License-Identifier: MIT
#pragma once

#include <new>
#include <string>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/sax/SAXException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLException.hpp>

#include "opc/Text.h"
#include "opc/model/InvalidXMLDocument.h"

namespace opc::model {

/// A message of Xerces-C as UTF-8; it may be null.
inline std::string xercesMessage(const char16_t* message) {
  return message == nullptr ? std::string("no reason given") : toUtf8ForDisplay(message);
}

/// Runs `body`. What Xerces-C throws leaves as InvalidXMLDocument, "`what`: its reason", or as
/// std::bad_alloc; everything else passes.
template <typename Body>
decltype(auto) translatingXercesErrors(const std::string& what, Body body) {
  try {
    return body();
  } catch (const xercesc::OutOfMemoryException&) {
    throw std::bad_alloc();
  } catch (const xercesc::DOMException& fault) {
    throw InvalidXMLDocument(what + ": " + xercesMessage(fault.getMessage()), 0, 0);
  } catch (const xercesc::XMLException& fault) {
    throw InvalidXMLDocument(what + ": " + xercesMessage(fault.getMessage()), 0, 0);
  } catch (const xercesc::SAXException& fault) {
    throw InvalidXMLDocument(what + ": " + xercesMessage(fault.getMessage()), 0, 0);
  }
}

}  // namespace opc::model
