// SPDX-License-Identifier: MIT
#include "addon/checks/detail/ReferenceCheck.h"

#include "addon/checks/AddonFindings.h"
#include "addon/checks/PathCheck.h"
#include "addon/checks/detail/Readable.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/DocumentXml.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::model::XercesHelper;
using packaging::AddonPackage;
using packaging::AppsXml;
using packaging::ConfigurationXml;
using packaging::ExamplesXml;
using xercesc::DOMElement;
using Kind = PathReference::Kind;

namespace {

std::u16string textOf(const DOMElement* element) {
  std::u16string text;
  XercesHelper::getElementText(element, text);
  return text;
}

std::u16string attributeOf(const DOMElement* element, const char16_t* name) {
  std::u16string value;
  XercesHelper::getElementAttribute(element, name, value);
  return value;
}

void checkApps(AddonPackage& package, PathCheck& paths) {
  ReadableDocument document(package, packaging::AddonAppInstallList().relationshipType);
  DocumentText* text = document.text();
  if (text == nullptr) return;
  for (const auto* app : XercesHelper::getElements(text->root(), AppsXml::kApplication)) {
    const DOMElement* file = XercesHelper::getElement(app, AppsXml::kFile);
    if (file == nullptr) continue;  // which is a fault of the document
    paths.check({textOf(file), Kind::File, kMissingAppFile,
                 "the app " + quoted(attributeOf(app, AppsXml::kName)), document.part(),
                 text->lineOf(file)});
  }
}

void checkExample(ReadableDocument& document, const DOMElement* example, PathCheck& paths) {
  const std::string name = quoted(attributeOf(example, ExamplesXml::kName));
  for (const auto* file : XercesHelper::getElements(example, ExamplesXml::kFile)) {
    const std::u16string type = attributeOf(file, ExamplesXml::kType);
    const bool isCode = type == ExamplesXml::kSource || type == ExamplesXml::kMain;
    const bool isImage = type == ExamplesXml::kThumbnail || type == ExamplesXml::kImage;
    if (!isCode && !isImage) continue;  // nobody reads those
    paths.check({textOf(file), Kind::File, isCode ? kMissingExampleCode : kMissingExampleImage,
                 "the " + opc::toUtf8(type) + " of the example " + name, document.part(),
                 document.text()->lineOf(file)});
  }
}

void checkExamples(AddonPackage& package, PathCheck& paths) {
  ReadableDocument document(package, packaging::AddonExamples().relationshipType);
  if (document.text() == nullptr) return;
  const DOMElement* root = document.text()->root();
  for (const auto* category : XercesHelper::getElements(root, ExamplesXml::kCategory)) {
    for (const auto* example : XercesHelper::getElements(category, ExamplesXml::kExample)) {
      checkExample(document, example, paths);
    }
  }
}

struct PathList {
  const char16_t* list;
  const char16_t* path;
  Kind kind;
  FindingId id;
  const char* what;
};
constexpr PathList kPathLists[] = {
    {ConfigurationXml::kKorvanPaths, ConfigurationXml::kKorvanPath, Kind::Folder,
     kMissingSearchPath, "the search path"},
    {ConfigurationXml::kJavaClassPaths, ConfigurationXml::kJavaClassPath, Kind::Either,
     kMissingClassPath, "the Java class path"},
};

void checkConfiguration(AddonPackage& package, PathCheck& paths) {
  ReadableDocument document(package, packaging::AddonConfiguration().relationshipType);
  DocumentText* text = document.text();
  if (text == nullptr) return;
  for (const PathList& list : kPathLists) {
    const DOMElement* parent = XercesHelper::getElement(text->root(), list.list);
    for (const auto* path : XercesHelper::getElements(parent, list.path)) {
      paths.check(
          {textOf(path), list.kind, list.id, list.what, document.part(), text->lineOf(path)});
    }
  }
}

}  // namespace

void checkReferences(AddonPackage& package, Report& report) {
  const opc::model::XercesGuard guard;  // one start for all documents
  checkThumbnail(package, report);
  checkNewestRevision(package, report);
  checkGuids(package, report);
  if (!isReadable([&] { package.fileSystem().getRoot(); })) return;
  for (const auto& file : package.fileSystem().unreadable()) {
    report.add(kFileOutsideTree, file.name, file.why);
  }
  PathCheck paths(package.fileSystem(), report);
  checkApps(package, paths);
  checkExamples(package, paths);
  checkConfiguration(package, paths);
}

}  // namespace addon::checks::detail
