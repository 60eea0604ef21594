// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/Pages.h"

#include <fmt/format.h>

#include <charconv>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/PackageRecord.h"
#include "addon/gallery/PackageImages.h"
#include "addon/gallery/PageReader.h"
#include "addon/gallery/PageWriter.h"
#include "opc/SystemPath.h"
#include "text/Sha256.h"

namespace addon::catalogue::detail {

using packaging::AddonPackage;

namespace {

constexpr std::size_t kStart = 200;  // more than the first line of any file

std::string markOf(const Record& record) {
  return "package=" + record.sha256 + " ";
}

}  // namespace

void writeScreenshot(SiteFiles& files, AddonPackage& package, Record& record) {
  const Image image = readScreenshot(package);
  record.screenshot.clear();
  if (image.bytes.empty()) return;
  const std::string folder = pageFolder(record.guid, record.version);
  files.makeFolder(folder);
  record.screenshot = files.writeHashed(folder, image.extension, image.bytes).path;
}

void writePage(SiteFiles& files, AddonPackage& package, const Record& record,
               std::uint64_t sequence) {
  const gallery::Page page = gallery::readPage(package, record.guid);
  gallery::PackageImages images(package);
  files.makeFolder(pageFolder(record.guid, record.version));
  files.replace(record.page, [&](const SiteFiles::Sink& sink) {
    sink(fmt::format("<!-- kraddon.page/1 {}sequence={} -->\n", markOf(record), sequence));
    gallery::writePage(page, images, sink, fmt::format("../../../{}", kFrontPage));
  });
}

void writePage(SiteFiles& files, const Record& record, std::uint64_t sequence) {
  AddonPackage package(opc::SystemPath{files.onDisk(record.package)});
  package.logicalPackage().open(opc::interfaces::OpenMode::Read);
  writePage(files, package, record, sequence);
}

bool isPageOf(const SiteFiles& files, const Record& record) {
  return files.readStart(record.page, kStart).find(markOf(record)) != std::string::npos;
}

std::uint64_t sequenceAtStart(const SiteFiles& files, const std::string& path) {
  constexpr std::string_view kName = "sequence";
  const std::string start = files.readStart(path, kStart);
  const std::size_t found = start.find(kName);
  if (found == std::string::npos) return 0;
  // sequence=12 in a comment, "sequence":12 in JSON
  const std::size_t number = start.find_first_of("0123456789", found);
  if (number == std::string::npos || number > found + kName.size() + 2) return 0;
  std::uint64_t sequence = 0;
  std::from_chars(start.data() + number, start.data() + start.size(), sequence);
  return sequence;
}

}  // namespace addon::catalogue::detail
