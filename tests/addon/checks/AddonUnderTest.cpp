// SPDX-License-Identifier: MIT
#include "tests/addon/checks/AddonUnderTest.h"

#include <stdexcept>

#include "addon/checks/AddonVerification.h"
#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"

namespace test {

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using opc::checks::Finding;
using opc::checks::Report;
using opc::interfaces::OpenMode;
using opc::model::ContentType;
using opc::model::PartName;
using opc::model::StandardPartInfo;
using opc::model::URI;

namespace {

AddonProperties baseProperties() {
  AddonProperties properties;
  properties.type = u"Korvan Toolbox";
  properties.name = u"Wave Tools";
  properties.version = u"1.2";
  properties.summary = u"Short-time spectra";
  properties.description = u"Spectra, and how to look at them.";
  properties.authorName = u"Ada Lind";
  properties.authorContact = u"ada@example.org";
  properties.GUID = u"6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f";
  return properties;
}

void addDocuments(AddonPackage& package) {
  addon::packaging::AddonLicense license;
  license.type = u"MIT";
  license.text = u"Permission is hereby granted";
  package.addXMLPart(license);

  addon::packaging::AddonConfiguration configuration;
  configuration.korvanPaths = {u".", u"/", u"lib"};
  configuration.javaClassPaths = {u"java/wave.jar", u"lib"};
  package.addXMLPart(configuration);

  addon::packaging::AddonAppInstallList apps;
  auto& app = apps.apps.emplace_back();
  app.name = u"Viewer";
  app.guid = u"1f0d2f4f-8a11-4a53-9c58-0c3a0d9e5b7a";
  app.relativePath = u"apps/viewer.m";
  package.addXMLPart(apps);

  addon::packaging::AddonExamples examples;
  auto& example = examples.categories.emplace_back().examples.emplace_back();
  examples.categories.front().name = u"First steps";
  example.name = u"A chirp";
  example.source = example.main = u"examples/chirp.m";
  example.thumbnail = u"examples/chirp.png";
  example.images = {u"examples/chirp.png", u"examples/größe.png"};
  package.addXMLPart(examples);
}

void addHistory(AddonPackage& package) {
  addon::packaging::AddonRevisionHistory history;
  history.revisions.resize(2);
  history.revisions[0].date = u"2025-04-30";
  history.revisions[0].version = u"1.0";
  history.revisions[1].date = u"2026-02-01";
  history.revisions[1].version = u"1.2";
  package.addXMLPart(history);

  addon::packaging::AddonSystemRequirements requirements;
  requirements.productDependencies.emplace_back().name = u"Korvan";
  requirements.supportPackageDependencies.emplace_back().name = u"Sound";
  package.addXMLPart(requirements);
}

}  // namespace

AddonUnderTest::AddonUnderTest() {
  std::u16string path = package_.u16string();
  AddonProperties properties = baseProperties();
  AddonPackage package(path, properties);
  addDocuments(package);
  addHistory(package);
  package.logicalPackage().close(false);
  setScreenshot("shot.png", "\x89PNG\r\n\x1A\nrest");
  for (const char16_t* file : {u"apps/viewer.m", u"lib/f.m", u"java/wave.jar", u"examples/chirp.m",
                               u"examples/chirp.png", u"examples/größe.png"}) {
    addFile(file);
  }
  change([](AddonPackage& opened) { opened.addFolders({u"empty"}); });
}

void AddonUnderTest::change(const std::function<void(AddonPackage&)>& change) {
  AddonPackage package(package_.u16string());
  package.logicalPackage().open(OpenMode::Modify);
  change(package);
  package.logicalPackage().close(false);
}

void AddonUnderTest::replace(const std::u16string& part, const std::string& content) {
  change([&](AddonPackage& package) {
    package.logicalPackage()
        .getPart(PartName(part))
        ->getOutputStream()
        ->write(reinterpret_cast<const unsigned char*>(content.data()), content.size());
  });
}

void AddonUnderTest::replaceType(const std::u16string& part, const std::u16string& contentType) {
  change([&](AddonPackage& package) {
    auto& model = package.logicalPackage();
    const PartName name(part);
    opc::ByteBuffer bytes;
    model.readPart(model.getPart(name)->id(), bytes, 1u << 20);
    model.deletePart(name);
    const StandardPartInfo info(opc::interfaces::CompressionType::Normal, bytes.size());
    model.createPart(name, ContentType(contentType), info)
        ->getOutputStream()
        ->write(bytes.data(), bytes.size());
  });
}

void AddonUnderTest::drop(const std::u16string& part) {
  dropRelationships(part);
  change([&](AddonPackage& package) { package.logicalPackage().deletePart(PartName(part)); });
}

void AddonUnderTest::dropRelationships(const std::u16string& target) {
  change([&](AddonPackage& package) {
    for (const auto& relationship : package.logicalPackage().getRelationships()) {
      if (relationship.getTargetURI().toString() != target) continue;
      package.logicalPackage().deleteRelationship(relationship.getId());
    }
  });
}

void AddonUnderTest::doubleRelationship(const std::u16string& target) {
  change([&](AddonPackage& package) {
    for (const auto& relationship : package.logicalPackage().getRelationships()) {
      if (relationship.getTargetURI().toString() != target) continue;
      package.logicalPackage().createInternalRelationship(relationship.getType(), URI(target), u"");
      return;
    }
  });
}

void AddonUnderTest::addFile(const std::u16string& path, std::string_view content) {
  const auto file = diskFile(content);
  change([&](AddonPackage& package) { package.addFiles({file.u16string()}, {path}); });
}

void AddonUnderTest::changeProperty(std::u16string AddonProperties::*field,
                                    const std::u16string& text) {
  AddonProperties properties = baseProperties();
  properties.*field = text;
  change([&](AddonPackage& package) { package.setAddonProperties(properties); });
}

void AddonUnderTest::setScreenshot(const std::string& fileName, std::string_view content) {
  const auto file = folder_ / fileName;
  writeFile(file, content);
  std::u16string path = file.u16string();
  change([&](AddonPackage& package) { package.setScreenshot(path); });
}

void AddonUnderTest::damage(const std::string& itemName) {
  std::string bytes = readFile(package_);
  // The first one is in the local header, before the data.
  const std::size_t name = bytes.find(itemName);
  if (name == std::string::npos) throw std::runtime_error("no item " + itemName);
  const auto extraSize = static_cast<unsigned char>(bytes.at(name - 2));
  bytes.at(name + itemName.size() + extraSize + 10) ^= 0x55;
  writeFile(package_, bytes);
}

std::filesystem::path AddonUnderTest::diskFile(std::string_view content) {
  auto file = folder_ / ("file" + std::to_string(++diskFiles_));
  writeFile(file, content);
  return file;
}

Report AddonUnderTest::check() const {
  AddonPackage package(package_.u16string());
  package.logicalPackage().open(OpenMode::Read);
  Report report;
  addon::checks::checkAddon(package, report);
  return report;
}

std::set<std::uint16_t> numbersIn(const Report& report) {
  std::set<std::uint16_t> numbers;
  for (const Finding& finding : report.findings()) numbers.insert(finding.id.number);
  return numbers;
}

std::string describe(const Report& report) {
  std::string text;
  for (const Finding& finding : report.findings()) {
    text += opc::checks::idOf(finding.id.number) + ": " + finding.part + ":" +
            std::to_string(finding.line) + ": " + finding.message + "\n";
  }
  return text;
}

std::string documentXml(const std::string& root, const std::string& content) {
  return "<" + root + " xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/" + root +
         "\">" + content + "</" + root + ">";
}

}  // namespace test
