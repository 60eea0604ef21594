// SPDX-License-Identifier: MIT
//
// Takes the place of parts of Xerces-C where Xerces-C is linked statically: its start, and the
// choice of a scanner. No document is read with a schema or a document type, so that all of that is
// neither started nor linked. The tables for schemas would take longer than everything else that a
// short command does, and the code a megabyte.
#include <xercesc/internal/WFXMLScanner.hpp>
#include <xercesc/internal/XMLScannerResolver.hpp>

XERCES_CPP_NAMESPACE_BEGIN

// No header that is installed declares it. What is left out: names of encodings, range tokens,
// regular expressions, errors of schemas, data types, attributes, values and complex types.
class XMLInitializer {
 public:
  static void initializeStaticData();
  static void terminateStaticData();

 private:
  static void initializeXMLException();
  static void initializeXMLScanner();
  static void initializeXMLValidator();
  static void initializeDTDGrammar();
  static void initializeDOMImplementationRegistry();
  static void initializeDOMImplementationImpl();
  static void initializeDOMDocumentTypeImpl();
  static void initializeDOMNodeListImpl();
  static void initializeDOMNormalizer();
  static void initializeXInclude();

  static void terminateXMLException();
  static void terminateXMLScanner();
  static void terminateXMLValidator();
  static void terminateDTDGrammar();
  static void terminateDOMImplementationRegistry();
  static void terminateDOMImplementationImpl();
  static void terminateDOMDocumentTypeImpl();
  static void terminateDOMNodeListImpl();
  static void terminateDOMNormalizer();
  static void terminateXInclude();
};

void XMLInitializer::initializeStaticData() {
  initializeXMLException();
  initializeXMLScanner();
  initializeXMLValidator();
  initializeDTDGrammar();
  initializeDOMImplementationRegistry();
  initializeDOMImplementationImpl();
  initializeDOMDocumentTypeImpl();
  initializeDOMNodeListImpl();
  initializeDOMNormalizer();
  initializeXInclude();
}

void XMLInitializer::terminateStaticData() {
  terminateXInclude();
  terminateDOMNormalizer();
  terminateDOMNodeListImpl();
  terminateDOMDocumentTypeImpl();
  terminateDOMImplementationImpl();
  terminateDOMImplementationRegistry();
  terminateDTDGrammar();
  terminateXMLValidator();
  terminateXMLScanner();
  terminateXMLException();
}

XMLScanner* XMLScannerResolver::getDefaultScanner(XMLValidator* const validator,
                                                  GrammarResolver* const grammars,
                                                  MemoryManager* const memory) {
  return new (memory) WFXMLScanner(validator, grammars, memory);
}

XMLScanner* XMLScannerResolver::resolveScanner(const XMLCh* const, XMLValidator* const validator,
                                               GrammarResolver* const grammars,
                                               MemoryManager* const memory) {
  return getDefaultScanner(validator, grammars, memory);
}

XERCES_CPP_NAMESPACE_END
