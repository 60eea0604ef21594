// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <string>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "opc/Text.h"

// Documents by their number of records, each step compared with plain Xerces-C on the same XML.

namespace {

using namespace addon::packaging;
using opc::model::DocumentPointer;
using opc::model::ParserPointer;
using opc::model::XercesHelper;
using xercesc::DOMElement;
using xercesc::DOMNode;

std::u16string text(const char* begin, std::size_t number) {
  return opc::fromUtf8(begin + std::to_string(number));
}

void fill(AddonRevisionHistory& history, std::size_t records) {
  for (std::size_t i = 0; i < records; ++i) {
    AddonRevision revision;
    revision.date = u"2026-02-01";
    revision.version = text("1.", i);
    revision.description = text("What changed with number ", i);
    history.revisions.push_back(revision);
  }
}

void fill(AddonExamples& examples, std::size_t records) {
  examples.categories.emplace_back();
  examples.categories[0].name = u"All";
  for (std::size_t i = 0; i < records; ++i) {
    Example example;
    example.name = text("Example ", i);
    example.type = u"script";
    example.main = text("examples/step", i);
    example.thumbnail = text("images/step", i);
    example.images = {text("images/large", i)};
    examples.categories[0].examples.push_back(example);
  }
}

void fill(AddonSystemRequirements& requirements, std::size_t records) {
  for (std::size_t i = 0; i < records; ++i) {
    ProductDependency product;
    product.name = text("Product ", i);
    product.version = u"9.1";
    product.identifier = text("P", i);
    requirements.productDependencies.push_back(product);
  }
}

void fill(AddonAppInstallList& list, std::size_t records) {
  for (std::size_t i = 0; i < records; ++i) {
    AddonAppInstall app;
    app.name = text("App ", i);
    app.guid = text("guid-", i);
    app.relativePath = text("apps/app", i);
    list.apps.push_back(app);
  }
}

template <typename Document>
Document makeDocument(const benchmark::State& state) {
  Document document;
  fill(document, static_cast<std::size_t>(state.range(0)));
  return document;
}

class StringOutput final : public opc::OutputStream {
 public:
  void write(const unsigned char* data, std::size_t size) override {
    text.append(reinterpret_cast<const char*>(data), size);
  }
  std::string text;
};

template <typename Document>
std::string xmlOf(Document& document) {
  DocumentPointer dom = XercesHelper::createDocument();
  document.buildDOM(dom);
  StringOutput output;
  XercesHelper::writeDocumentToStream(XercesHelper::createWriter(), dom, output);
  return output.text;
}

void parseBare(xercesc::XercesDOMParser& parser, const std::string& xml) {
  const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()), xml.size(),
                                          "bench");
  parser.setDoNamespaces(true);
  parser.parse(source);
}

// The same tree, built node by node.
void copyInto(xercesc::DOMDocument& document, DOMElement& into, const DOMElement& from) {
  const xercesc::DOMNamedNodeMap& attributes = *from.getAttributes();
  for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
    const DOMNode& attribute = *attributes.item(i);
    into.setAttributeNS(attribute.getNamespaceURI(), attribute.getNodeName(),
                        attribute.getNodeValue());
  }
  for (const DOMNode* node = from.getFirstChild(); node != nullptr; node = node->getNextSibling()) {
    if (node->getNodeType() == DOMNode::TEXT_NODE) {
      into.appendChild(document.createTextNode(node->getNodeValue()));
    } else if (node->getNodeType() == DOMNode::ELEMENT_NODE) {
      DOMElement* child = document.createElementNS(node->getNamespaceURI(), node->getNodeName());
      into.appendChild(child);
      copyInto(document, *child, static_cast<const DOMElement&>(*node));
    }
  }
}

template <typename Document>
void Build(benchmark::State& state) {
  auto document = makeDocument<Document>(state);
  for (auto _ : state) {
    DocumentPointer dom = XercesHelper::createDocument();
    document.buildDOM(dom);
  }
}

template <typename Document>
void BuildBare(benchmark::State& state) {
  auto document = makeDocument<Document>(state);
  xercesc::XercesDOMParser parser;
  parseBare(parser, xmlOf(document));
  const DOMElement& root = *parser.getDocument()->getDocumentElement();
  for (auto _ : state) {
    DocumentPointer dom = XercesHelper::createDocument();
    DOMElement* copy = dom->createElementNS(root.getNamespaceURI(), root.getNodeName());
    dom->appendChild(copy);
    copyInto(*dom, *copy, root);
  }
}

template <typename Document>
void Write(benchmark::State& state) {
  auto document = makeDocument<Document>(state);
  DocumentPointer dom = XercesHelper::createDocument();
  document.buildDOM(dom);
  for (auto _ : state) {
    StringOutput output;
    XercesHelper::writeDocumentToStream(XercesHelper::createWriter(), dom, output);
    benchmark::DoNotOptimize(output.text.data());
  }
}

template <typename Document>
void Parse(benchmark::State& state) {
  auto document = makeDocument<Document>(state);
  const std::string xml = xmlOf(document);
  for (auto _ : state) {
    const ParserPointer parser = XercesHelper::createParser();
    opc::MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
    benchmark::DoNotOptimize(
        XercesHelper::readDocumentFromStream(parser, stream, false, {}, document.namespaceURI));
  }
}

template <typename Document>
void ParseBare(benchmark::State& state) {
  auto document = makeDocument<Document>(state);
  const std::string xml = xmlOf(document);
  for (auto _ : state) {
    xercesc::XercesDOMParser parser;
    parseBare(parser, xml);
    benchmark::DoNotOptimize(parser.getDocument());
  }
}

template <typename Document>
void ReadBack(benchmark::State& state) {
  auto document = makeDocument<Document>(state);
  xercesc::XercesDOMParser parser;
  parseBare(parser, xmlOf(document));
  for (auto _ : state) {
    Document read;
    read.populateFromDOM(parser.getDocument());
    benchmark::DoNotOptimize(&read);
  }
}

#define KRADDON_STEP(step, document) \
  BENCHMARK(step<document>)->Arg(10)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond)
#define KRADDON_DOCUMENT(document)   \
  KRADDON_STEP(Build, document);     \
  KRADDON_STEP(BuildBare, document); \
  KRADDON_STEP(Write, document);     \
  KRADDON_STEP(Parse, document);     \
  KRADDON_STEP(ParseBare, document); \
  KRADDON_STEP(ReadBack, document)

KRADDON_DOCUMENT(AddonAppInstallList);
KRADDON_DOCUMENT(AddonExamples);
KRADDON_DOCUMENT(AddonRevisionHistory);
KRADDON_DOCUMENT(AddonSystemRequirements);

}  // namespace
