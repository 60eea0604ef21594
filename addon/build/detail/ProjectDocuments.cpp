// SPDX-License-Identifier: MIT
#include "addon/build/detail/ProjectDocuments.h"

#include <fmt/format.h>

#include <algorithm>

#include "addon/build/BuildError.h"
#include "addon/build/detail/ReadFile.h"
#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/ImageSignature.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/plservices/FileContentSource.h"

namespace addon::build::detail {

using addon::packaging::AddonAppInstallList;
using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::OwnedDocument;

namespace {

/// Lists of records are said by their entries, all else by the table of the manifest.
bool isSaid(const Manifest& manifest, const OwnedDocument& document) {
  const auto& fields = document.table->record.fields;
  return std::any_of(fields.begin(), fields.end(), [&](const Field& field) {
    return field.kind() == FieldKind::Records ? !document.record.isEmpty(field)
                                              : manifest.isGiven(document.table->key);
  });
}

void storeScreenshot(const Project& project, AddonPackage& package) {
  const addon::project::Path& screenshot = project.manifest.screenshot;
  if (!screenshot.isGiven()) return;
  const std::string path = project.onDisk(screenshot.value);
  try {
    opc::plservices::FileContentSource content(path);  // before the part is made
    std::u16string image = toUtf16("cannot read", path);
    const std::string fault = addon::packaging::screenshotFault(path, *content.getInputStream());
    if (!fault.empty()) throw BuildError(opc::sentence("cannot use the image", path, fault));
    package.setScreenshot(image);
  } catch (const opc::Exception& error) {
    throw ManifestError(screenshot.position, fmt::format("package.screenshot: {}", error.what()));
  }
}

}  // namespace

void storeDocuments(const Project& project, AddonPackage& package) {
  for (const OwnedDocument& document : project.manifest.documents) {
    const bool isThere = document.table == &AddonProperties::kTable;  // the package began with it
    if (isThere || !isSaid(project.manifest, document)) continue;
    readTextFiles(project, document);
    if (document.table == &AddonAppInstallList::kTable) deriveAppGuids(project.manifest);
    package.addXMLPart(*document.part);
  }
  storeScreenshot(project, package);
}

}  // namespace addon::build::detail
