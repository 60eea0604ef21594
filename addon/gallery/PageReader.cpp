// SPDX-License-Identifier: MIT
#include "addon/gallery/PageReader.h"

#include <algorithm>
#include <utility>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "opc/Text.h"
#include "opc/plservices/W3cDateTime.h"
#include "text/Lines.h"

namespace addon::gallery {

namespace {

using packaging::AddonPackage;

std::string utf8(const std::u16string& text) {
  return opc::toUtf8ForDisplay(text);
}

std::vector<std::string> utf8(const std::vector<std::u16string>& texts) {
  std::vector<std::string> result;
  result.reserve(texts.size());
  for (const std::u16string& text : texts) result.push_back(utf8(text));
  return result;
}

template <typename Document>
Document load(AddonPackage& package) {
  Document document;
  package.getXMLPart(document);
  return document;
}

std::string timeText(const boost::optional<boost::posix_time::ptime>& time) {
  if (!time || time->is_special()) return {};
  return opc::plservices::formatTime(*time);
}

bool isBlank(std::string_view text) {
  return text::trimmed(text).empty();
}

void readProperties(AddonPackage& package, Page& page) {
  packaging::AddonProperties properties;
  package.getAddonProperties(properties);
  page.name = utf8(properties.name);
  page.type = utf8(properties.type);
  page.version = utf8(properties.version);
  page.release = utf8(properties.KorvanRelease);
  page.summary = utf8(properties.summary);
  page.description = utf8(properties.description);
  page.author = utf8(properties.authorName);
  page.contact = utf8(properties.authorContact);
  page.organization = utf8(properties.authorOrganization);
  page.guid = utf8(properties.GUID);
  const auto core = package.coreProperties().getCoreProperties();
  page.created = timeText(core.getCreatedTime());
  page.modified = timeText(core.getLastModifiedTime());
}

std::vector<PageRequirement> requirements(
    const std::vector<packaging::ProductDependency>& dependencies) {
  std::vector<PageRequirement> result;
  result.reserve(dependencies.size());
  for (const auto& each : dependencies) {
    result.push_back({utf8(each.name), utf8(each.version), utf8(each.identifier)});
  }
  return result;
}

void readRequirements(AddonPackage& package, Page& page) {
  const auto document = load<packaging::AddonSystemRequirements>(package);
  page.products = requirements(document.productDependencies);
  page.supportPackages = requirements(document.supportPackageDependencies);
}

void readExamples(AddonPackage& package, Page& page) {
  for (const auto& category : load<packaging::AddonExamples>(package).categories) {
    PageCategory& to = page.categories.emplace_back();
    to.name = utf8(category.name);
    for (const packaging::Example& each : category.examples) {
      to.examples.push_back({utf8(each.name), utf8(each.type), utf8(each.source), utf8(each.main),
                             utf8(each.thumbnail), utf8(each.images)});
    }
  }
}

void readApps(AddonPackage& package, Page& page) {
  for (const auto& app : load<packaging::AddonAppInstallList>(package).apps) {
    page.apps.push_back(
        {utf8(app.name), utf8(app.guid), utf8(app.relativePath), app.installByDefault});
  }
}

void readRevisions(AddonPackage& package, Page& page) {
  for (const auto& each : load<packaging::AddonRevisionHistory>(package).revisions) {
    page.revisions.push_back({utf8(each.date), utf8(each.version), utf8(each.description)});
  }
}

void readTexts(AddonPackage& package, Page& page) {
  const auto license = load<packaging::AddonLicense>(package);
  page.licenseType = utf8(license.type);
  page.licenseText = utf8(license.text);
  const auto configuration = load<packaging::AddonConfiguration>(package);
  page.searchPath = utf8(configuration.korvanPaths);
  page.javaClassPath = utf8(configuration.javaClassPaths);
}

void readFiles(AddonPackage& package, Page& page) {
  package.fileSystem().visitFiles(
      [&](std::string_view path, const opc::plservices::FileSystemEntry& entry) {
        const opc::model::PartInfo info = entry.info();
        page.files.push_back({std::string(path), info.size, !entry.isFile()});
        page.packedSize += info.packedSize;
      });
}

}  // namespace

Page readPage(AddonPackage& package, const std::string& fallbackName) {
  Page page;
  readProperties(package, page);
  if (isBlank(page.name)) page.name = fallbackName;
  readRequirements(package, page);
  readExamples(package, page);
  readApps(package, page);
  readRevisions(package, page);
  readTexts(package, page);
  readFiles(package, page);
  return page;
}

}  // namespace addon::gallery
