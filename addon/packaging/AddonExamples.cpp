// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonExamples.h"

#include <algorithm>
#include <iterator>

#include "addon/packaging/DocumentElements.h"
#include "addon/packaging/DocumentXml.h"
#include "addon/packaging/HostStruct.h"

namespace addon::packaging {

using opc::model::XercesHelper;

namespace {

constexpr const char16_t* kPartName = u"/metadata/examples.xml";
constexpr const char16_t* kContentType = u"application/vnd.pellandry.korvan.addon.examples+xml";
constexpr const char16_t* kNamespacePath = u"/korvan/addon/2014/examples";
constexpr const char16_t* kRelationshipPath = u"/korvan/addon/2014/relationships/examples";

constexpr const char* kCategoryFields[] = {"name", "examples"};
constexpr TextField<Example> kTextFields[] = {
    {"name", &Example::name}, {"type", &Example::type},           {"source", &Example::source},
    {"main", &Example::main}, {"thumbnail", &Example::thumbnail},
};
constexpr const char* kImagesField = "images";

using Xml = ExamplesXml;
constexpr TextAttribute<Example> kAttributes[] = {
    {Xml::kName, &Example::name},
    {Xml::kType, &Example::type},
};
constexpr TextAttribute<Example> kSingleFiles[] = {
    {Xml::kSource, &Example::source},
    {Xml::kMain, &Example::main},
    {Xml::kThumbnail, &Example::thumbnail},
};

void appendFile(xercesc::DOMElement* example, const std::u16string& namespaceURI,
                const std::u16string& type, const std::u16string& path) {
  xercesc::DOMElement* file = XercesHelper::appendElementNS(example, namespaceURI, Xml::kFile);
  XercesHelper::setElementAttribute(file, Xml::kType, type);
  XercesHelper::setElementText(file, path);
}

void readFile(const xercesc::DOMElement* file, Example& example) {
  std::u16string type;
  XercesHelper::getElementAttribute(file, Xml::kType, type);
  const auto* single = std::find_if(std::begin(kSingleFiles), std::end(kSingleFiles),
                                    [&](const auto& kind) { return type == kind.name; });
  if (single != std::end(kSingleFiles)) {
    XercesHelper::getElementText(file, example.*single->member);
  } else if (type == Xml::kImage) {
    XercesHelper::getElementText(file, example.images.emplace_back());
  }
}

}  // namespace

Example::Example(const kxArray* element) {
  readTexts(*this, element, 0, kTextFields);
  images = readOptionalTexts(element, 0, kImagesField);
}

Example::Example(const xercesc::DOMElement* element) {
  readAttributes(*this, element, kAttributes);
  for (const auto* file : XercesHelper::getElements(element, Xml::kFile)) readFile(file, *this);
}

kxArray* Example::createStructArray(std::size_t count) {
  std::vector<const char*> names;
  for (const auto& field : kTextFields) names.push_back(field.name);
  names.push_back(kImagesField);
  return createStruct(count, names).release();
}

void Example::addRow(kxArray* array, std::size_t index) const {
  writeTexts(*this, array, index, kTextFields);
  if (!images.empty()) setField(array, index, kImagesField, toTextCell(images));
}

// By value, as everything that calls it expects.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void Example::populateXMLNode(xercesc::DOMElement* element, std::u16string namespaceUri) const {
  writeAttributes(*this, element, kAttributes);
  for (const auto& kind : kSingleFiles) {
    const std::u16string& path = this->*kind.member;
    if (!path.empty()) appendFile(element, namespaceUri, kind.name, path);
  }
  for (const std::u16string& image : images) appendFile(element, namespaceUri, Xml::kImage, image);
}

AddonExamples::AddonExamples()
    : XMLPartType(kPartName, kContentType, SchemaRoot + kNamespacePath,
                  SchemaRoot + kRelationshipPath) {}

AddonExamples::AddonExamples(const kxArray* array) : AddonExamples() {
  const std::size_t count = kxGetNumberOfElements(array);
  for (std::size_t i = 0; i < count; ++i) {
    ExampleCategory& category = categories.emplace_back();
    category.name = readText(array, i, kCategoryFields[0]);
    category.examples = readRecords<Example>(kxGetField(array, i, kCategoryFields[1]));
  }
}

kxArray* AddonExamples::getStructArray() {
  ArrayPointer s = createStruct(categories.size(), kCategoryFields);
  for (std::size_t i = 0; i < categories.size(); ++i) {
    setField(s.get(), i, kCategoryFields[0], toText(categories[i].name));
    if (categories[i].examples.empty()) continue;
    setField(s.get(), i, kCategoryFields[1], toStructArray(categories[i].examples));
  }
  return s.release();
}

void AddonExamples::buildDOM(opc::model::DocumentPointer& document) {
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, namespaceURI, Xml::kRoot);
  for (const ExampleCategory& category : categories) {
    auto* element = XercesHelper::appendElementNS(root, namespaceURI, Xml::kCategory);
    XercesHelper::setElementAttribute(element, Xml::kName, category.name);
    appendRecords(element, namespaceURI, Xml::kExample, category.examples);
  }
}

void AddonExamples::populateFromDOM(xercesc::DOMDocument* document) {
  categories.clear();
  const xercesc::DOMElement* root = document->getDocumentElement();
  for (const auto* element : XercesHelper::getElements(root, Xml::kCategory)) {
    ExampleCategory category;
    XercesHelper::getElementAttribute(element, Xml::kName, category.name);
    readChildRecords(element, Xml::kExample, category.examples);
    categories.push_back(std::move(category));
  }
}

}  // namespace addon::packaging
