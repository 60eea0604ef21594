// SPDX-License-Identifier: MIT
#include "addon/checks/detail/DocumentCheck.h"

#include "addon/checks/AddonFindings.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/model/InvalidXMLDocument.h"
#include "opc/model/PartName.h"
#include "opc/plservices/FileTreePart.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::model::ContentType;
using opc::model::InvalidXMLDocument;
using opc::plservices::FileTreePart;
using packaging::AddonPackage;
using packaging::DocumentSchema;

namespace {

// By the rule that the parser names: encoding and document type, its limits, or the syntax.
FindingId findingOf(const InvalidXMLDocument& fault) {
  if (fault.rule() == "XM-1" || fault.rule() == "XM-2") return kDocumentDoctypeOrEncoding;
  return fault.rule().starts_with("RB-") ? kDocumentTooLarge : kMalformedDocument;
}

void checkContentType(const DocumentSchema& schema, const Destination& found, Report& report) {
  const ContentType& type = found.part->getContentType();
  if (type == ContentType(schema.contentType)) return;
  report.add(kWrongContentType, found.name,
             "content type " + quoted(type.ascii()) + ": expected " + quoted(schema.contentType));
}

// Returns whether it could be read.
bool checkContent(AddonPackage& package, const DocumentSchema& schema, const Destination& found,
                  Report& report) {
  try {
    DocumentText text(package.logicalPackage(), found.part->id());
    const ParsedDocument document{schema, found.name, text};
    checkStructure(document, report);
    checkValues(document, report);
    return true;
  } catch (const InvalidXMLDocument& fault) {
    report.add(findingOf(fault), found.name, fault.what(), static_cast<std::size_t>(fault.line()),
               fault.rule());
  } catch (const opc::SystemError&) {
    throw;
  } catch (const opc::Exception& fault) {
    // Anything else is damage, which the checks of the container report.
    if (fault.code() == opc::ErrorCode::TooLarge) {
      report.add(kDocumentTooLarge, found.name, fault.what());
    }
  }
  return false;
}

// Reports why the relationship does not lead to a part. Returns false if it does, or if there is
// none.
bool reportDeadEnd(const Destination& found, const std::u16string& relationshipType,
                   const std::u16string& standardName, Report& report) {
  const std::string type = quoted(relationshipType);
  const std::string name = found.name.empty() ? opc::toUtf8(standardName) : found.name;
  switch (found.kind) {
    case Destination::Kind::Several:
      report.add(kSeveralRelationships, name,
                 std::to_string(found.count) + " relationships of the type " + type +
                     ": only one is allowed, so none of them is used");
      return true;
    case Destination::Kind::Outside:
      report.add(kMissingPart, name,
                 "the relationship of the type " + type + " leads out of the package");
      return true;
    case Destination::Kind::Missing:
      report.add(kMissingPart, name,
                 "the relationship of the type " + type +
                     " leads to this part, which is not in the package");
      return true;
    default:
      return false;
  }
}

bool isFileTree(const DocumentSchema& schema) {
  return schema.relationshipType == FileTreePart::relationshipType();
}

// The table of the file tree is found by its name if no relationship leads to it.
Destination findDocument(opc::model::Package& package, const DocumentSchema& schema) {
  Destination found = follow(package, schema.relationshipType);
  if (found.kind != Destination::Kind::Nowhere || !isFileTree(schema)) return found;
  const opc::model::PartName name(FileTreePart::kDefaultName);
  if (!package.hasPart(name)) return found;
  return {Destination::Kind::Part, name.canonical(), package.getPart(name), 0};
}

// Unlike other documents, the table of the file tree is rejected if any of it is wrong.
void checkFileTree(AddonPackage& package, const std::string& part, Report& report) {
  try {
    package.fileSystem().getRoot();
  } catch (const opc::SystemError&) {
    throw;
  } catch (const opc::Exception& fault) {
    const auto* format = dynamic_cast<const opc::FormatError*>(&fault);
    const bool isTooLarge = fault.code() == opc::ErrorCode::TooLarge;
    report.add(isTooLarge ? kDocumentTooLarge : kMissingElement, part, fault.what(), 0,
               format == nullptr ? "" : format->rule());
  }
}

void checkDocument(AddonPackage& package, const DocumentSchema& schema, Report& report) {
  const Destination found = findDocument(package.logicalPackage(), schema);
  if (reportDeadEnd(found, schema.relationshipType, schema.partName, report)) return;
  if (found.kind == Destination::Kind::Nowhere) return;
  checkContentType(schema, found, report);
  const bool isRead = checkContent(package, schema, found, report);
  if (isRead && isFileTree(schema)) checkFileTree(package, found.name, report);
}

void checkScreenshot(AddonPackage& package, Report& report) {
  const std::u16string type = packaging::ScreenshotPart::relationshipType();
  const Destination found = follow(package.logicalPackage(), type);
  const std::u16string standardName = packaging::ScreenshotPart::kNameStem + std::u16string(u"png");
  if (reportDeadEnd(found, type, standardName, report)) return;
  if (found.kind == Destination::Kind::Part) checkImage(package, found, report);
}

}  // namespace

void checkDocuments(AddonPackage& package, Report& report, FileTable fileTable) {
  const std::vector<DocumentSchema> schemas = packaging::documentSchemas();
  for (const DocumentSchema& schema : schemas) {
    if (isFileTree(schema) && fileTable == FileTable::LeftOut) continue;
    checkDocument(package, schema, report);
  }
  checkScreenshot(package, report);
  checkUnreachable(package, schemas, report);
}

}  // namespace addon::checks::detail
