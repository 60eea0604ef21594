// SPDX-License-Identifier: MIT
#include "addon/gallery/PageReader.h"

#include <algorithm>

#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/Documents.h"
#include "opc/Text.h"
#include "opc/plservices/W3cDateTime.h"
#include "text/Lines.h"

namespace addon::gallery {

namespace {

using packaging::AddonPackage;

std::string timeText(const boost::optional<boost::posix_time::ptime>& time) {
  if (!time || time->is_special()) return {};
  return opc::plservices::formatTime(*time);
}

bool isBlank(std::string_view text) {
  return text::trimmed(text).empty();
}

}  // namespace

Page::Page() {
  for (const auto* table : packaging::documents()) documents.push_back(table->make());
}

const packaging::OwnedDocument& Page::find(const packaging::DocumentTable& table) const {
  return *std::find_if(documents.begin(), documents.end(),
                       [&](const auto& document) { return document.table == &table; });
}

std::string utf8(const std::u16string& text) {
  return opc::toUtf8ForDisplay(text);
}

Page readPage(AddonPackage& package, const std::string& fallbackName) {
  Page page;
  for (const auto& document : page.documents) packaging::loadDocument(package, *document.part);
  page.name = utf8(page.get<packaging::AddonProperties>().name);
  if (isBlank(page.name)) page.name = fallbackName;
  const auto core = package.coreProperties().getCoreProperties();
  page.created = timeText(core.getCreatedTime());
  page.modified = timeText(core.getLastModifiedTime());
  page.downloadSize = package.logicalPackage().physical().fileSize();
  const auto sizeOf = [&](opc::model::PartId part) {
    return package.logicalPackage().partInfo(part).size;
  };
  page.files = PageFiles(package.fileSystem().nodes(), sizeOf);
  return page;
}

}  // namespace addon::gallery
