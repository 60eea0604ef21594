// SPDX-License-Identifier: MIT
#include "addon/materials/Materials.h"

#include <algorithm>
#include <array>

#include "addon/comparison/Digest.h"
#include "addon/packaging/Documents.h"
#include "addon/project/Guid.h"
#include "opc/Text.h"
#include "opc/plservices/W3cDateTime.h"
#include "text/Sha1.h"
#include "text/Sha256.h"

namespace addon::materials {

namespace {

using addon::comparison::Item;
using addon::packaging::AddonPackage;

FileSums sumsOf(opc::InputStream& stream, const std::function<void(std::size_t)>& onRead) {
  std::vector<unsigned char> buffer(std::size_t{64} << 10);
  text::Sha1 sha1;
  text::Sha256 sha256;
  while (const std::size_t size = stream.read(buffer.data(), buffer.size())) {
    sha1.update(buffer.data(), size);
    sha256.update(buffer.data(), size);
    onRead(size);
  }
  return {sha1.finish(), sha256.finish()};
}

std::string timeOf(AddonPackage& package) {
  const auto core = package.coreProperties().getCoreProperties();
  for (const auto& time : {core.getLastModifiedTime(), core.getCreatedTime()}) {
    if (time && !time->is_special()) return opc::plservices::formatTime(*time);
  }
  return "1970-01-01T00:00:00Z";
}

std::vector<packaging::ProductDependency> requirementsOf(AddonPackage& package) {
  packaging::AddonSystemRequirements document;
  package.getXMLPart(document);
  auto all = std::move(document.productDependencies);
  std::move(document.supportPackageDependencies.begin(), document.supportPackageDependencies.end(),
            std::back_inserter(all));
  return all;
}

}  // namespace

Materials readMaterials(AddonPackage& package, const opc::interfaces::ProgressFunction& progress) {
  Materials materials;
  package.getAddonProperties(materials.properties);
  package.getLicense(materials.license);
  materials.terms = licenseTermsOf(opc::toUtf8ForDisplay(materials.license.type),
                                   !materials.license.text.empty());
  materials.requirements = requirementsOf(package);
  materials.time = timeOf(package);
  std::vector<Item> items = comparison::readTree(package);
  const auto hash = [&](const Item& item, const std::function<void(std::size_t)>& onRead) {
    materials.sums.push_back(sumsOf(*comparison::openItem(package, item), onRead));
    return materials.sums.back().sha256;
  };
  materials.digest =
      comparison::contentDigest(package, items, comparison::hashFiles(items, progress, hash));
  std::erase_if(items, [](const Item& item) { return item.isFolder(); });
  materials.files = std::move(items);
  return materials;
}

std::string guidOf(const Materials& materials, std::string_view use) {
  return *project::guidWithin(project::guidOfName(use), materials.digest);
}

}  // namespace addon::materials
