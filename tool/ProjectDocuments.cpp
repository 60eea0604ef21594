// SPDX-License-Identifier: MIT
#include "tool/ProjectDocuments.h"

#include <fmt/format.h>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/plservices/FileContentSource.h"
#include "tool/commands/detail/PackageAccess.h"

namespace tool {

using addon::packaging::AddonPackage;

using namespace addon::packaging;
using addon::project::ExampleSection;
using addon::project::ProductSection;
using addon::project::Text;
using addon::project::Texts;

namespace {

std::u16string utf16(const addon::project::Setting<std::string>& text) {
  return opc::fromUtf8(text.value);
}

std::vector<std::u16string> utf16(const Texts& texts) {
  std::vector<std::u16string> converted;
  for (const Text& text : texts.value) converted.push_back(utf16(text));
  return converted;
}

void storeLicense(const Project& project, AddonPackage& package) {
  const auto& section = project.manifest.license;
  if (!section.isGiven()) return;
  AddonLicense license;
  license.type = utf16(section.type);
  license.text = opc::fromUtf8(textOf(project, section.text, section.file, "license.file"));
  package.setLicense(license);
}

void storeConfiguration(const Manifest& manifest, AddonPackage& package) {
  if (!manifest.configuration.isGiven()) return;
  AddonConfiguration configuration;
  configuration.korvanPaths = utf16(manifest.configuration.korvanPaths);
  configuration.javaClassPaths = utf16(manifest.configuration.javaClassPaths);
  package.addXMLPart(configuration);
}

void storeApps(const Manifest& manifest, AddonPackage& package) {
  if (manifest.apps.empty()) return;
  const std::vector<std::string> guids = appGuidsOf(manifest);
  AddonAppInstallList list;
  for (const auto& section : manifest.apps) {
    AddonAppInstall app;
    app.name = utf16(section.name);
    app.guid = opc::fromUtf8(guids[list.apps.size()]);
    app.relativePath = utf16(section.file);
    app.installByDefault = section.installByDefault.value;
    list.apps.push_back(app);
  }
  package.addXMLPart(list);
}

Example toExample(const ExampleSection& section) {
  Example example;
  example.name = utf16(section.name);
  example.type = utf16(section.type);
  example.source = utf16(section.source);
  example.main = utf16(section.main);
  example.thumbnail = utf16(section.thumbnail);
  example.images = utf16(section.images);
  return example;
}

void storeExamples(const Manifest& manifest, AddonPackage& package) {
  if (manifest.categories.empty()) return;
  AddonExamples examples;
  for (const auto& section : manifest.categories) {
    ExampleCategory& category = examples.categories.emplace_back();
    category.name = utf16(section.name);
    for (const ExampleSection& example : section.examples) {
      category.examples.push_back(toExample(example));
    }
  }
  package.addXMLPart(examples);
}

void storeRevisions(const Manifest& manifest, AddonPackage& package) {
  if (manifest.revisions.empty()) return;
  AddonRevisionHistory history;
  for (const auto& section : manifest.revisions) {
    AddonRevision& revision = history.revisions.emplace_back();
    revision.date = utf16(section.date);
    revision.version = utf16(section.version);
    revision.description = utf16(section.description);
  }
  package.addXMLPart(history);
}

std::vector<ProductDependency> toProducts(const std::vector<ProductSection>& sections) {
  std::vector<ProductDependency> products;
  for (const ProductSection& section : sections) {
    ProductDependency& product = products.emplace_back();
    product.name = utf16(section.name);
    product.version = utf16(section.version);
    product.identifier = utf16(section.identifier);
  }
  return products;
}

void storeRequirements(const Manifest& manifest, AddonPackage& package) {
  const auto& section = manifest.requirements;
  if (section.products.empty() && section.supportPackages.empty()) return;
  AddonSystemRequirements requirements;
  requirements.productDependencies = toProducts(section.products);
  requirements.supportPackageDependencies = toProducts(section.supportPackages);
  package.addXMLPart(requirements);
}

void storeScreenshot(const Project& project, AddonPackage& package) {
  const Text& screenshot = project.manifest.package.screenshot;
  if (!screenshot.isGiven()) return;
  const std::string path = project.onDisk(screenshot.value);
  try {
    const opc::plservices::FileContentSource probe(path);  // before the part is made
    std::u16string image = commands::detail::toUtf16("cannot read", path);
    package.setScreenshot(image);
  } catch (const opc::Exception& error) {
    throw ManifestError(screenshot.position, fmt::format("package.screenshot: {}", error.what()));
  }
}

}  // namespace

void storeDocuments(const Project& project, AddonPackage& package) {
  const Manifest& manifest = project.manifest;
  storeLicense(project, package);
  storeConfiguration(manifest, package);
  storeApps(manifest, package);
  storeExamples(manifest, package);
  storeRevisions(manifest, package);
  storeRequirements(manifest, package);
  storeScreenshot(project, package);
}

}  // namespace tool
