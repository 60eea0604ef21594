// SPDX-License-Identifier: MIT
#include "tool/Project.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <unordered_map>

#include "addon/project/Guid.h"
#include "addon/project/PlainText.h"
#include "opc/Text.h"
#include "tool/TreeWalk.h"
#include "tool/process/Errors.h"
#include "tool/process/ReadFile.h"

namespace tool {

using addon::packaging::AddonProperties;
using addon::project::AppSection;
using addon::project::PackageSection;
using addon::project::Text;

namespace {

constexpr std::size_t kLargestManifest = std::size_t{16} << 20;
constexpr std::size_t kLargestText = std::size_t{32} << 20;  // parts end at twice as much

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string readText(const std::string& path) {
  std::string text = process::readWholeFile(path, kLargestText);
  if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  // Licenses of the time of line printers have form feeds between their pages.
  std::replace(text.begin(), text.end(), '\f', '\n');
  const std::string fault = addon::project::manifestTextFault(text);
  if (!fault.empty())
    throw process::Failure(process::sentence("cannot use the text of", path, fault));
  return text;
}

std::string derivedGuid(const AppSection& app, std::size_t index, const std::string& space) {
  if (auto guid = addon::project::guidWithin(space, app.file.value)) return *guid;
  throw ManifestError(app.position, fmt::format("app[{}].guid: expected a GUID of its own, as none "
                                                "can be derived from package.guid '{}', which is "
                                                "no GUID",
                                                index, space));
}

[[noreturn]] void refuseSharedGuid(const AppSection& app, const std::vector<std::string>& guids,
                                   std::size_t owner) {
  const std::size_t index = guids.size() - 1;
  if (!app.guid.value.empty()) {
    throw ManifestError(app.guid.position,
                        fmt::format("app[{}].guid: expected a GUID of its own, and app[{}] has "
                                    "'{}' too",
                                    index, owner, guids.back()));
  }
  throw ManifestError(app.file.position,
                      fmt::format("app[{}].file: app[{}] has the file '{}' too, and so the same "
                                  "GUID, expected a 'guid' of its own",
                                  index, owner, app.file.value));
}

}  // namespace

std::string Project::onDisk(const std::string& path) const {
  if (path == ".") return folder;
  return path.starts_with('/') ? path : tool::onDisk(folder, path);
}

std::string manifestPath(const std::string& folder) {
  return Project{folder, {}}.onDisk(addon::project::kManifestName);
}

Project openProject(const std::string& folder) {
  struct stat info {};
  if (::stat(folder.c_str(), &info) != 0) {
    throw process::systemFailure("cannot read the folder", folder, errno);
  }
  const std::string path = manifestPath(folder);
  if (::stat(path.c_str(), &info) != 0 && errno == ENOENT) {
    const process::Failure missing = process::systemFailure("cannot read", path, ENOENT);
    throw process::Failure(missing.what(), "'kraddon init' writes one");
  }
  return {folder, addon::project::readManifest(process::readWholeFile(path, kLargestManifest))};
}

std::string textOf(const Project& project, const Text& text, const Text& file,
                   std::string_view key) {
  if (!file.isGiven()) return text.value;
  try {
    return readText(project.onDisk(file.value));
  } catch (const process::Failure& failure) {
    throw ManifestError(file.position, fmt::format("{}: {}", key, failure.what()));
  }
}

std::string guidOf(const Manifest& manifest) {
  const PackageSection& package = manifest.package;
  return package.guid.value.empty() ? addon::project::guidOfName(package.name.value)
                                    : package.guid.value;
}

std::vector<std::string> appGuidsOf(const Manifest& manifest) {
  const std::string space = addon::project::plainGuid(opc::fromUtf8(guidOf(manifest)));
  std::vector<std::string> guids;
  std::unordered_map<std::string, std::size_t> owners;
  for (const AppSection& app : manifest.apps) {
    guids.push_back(app.guid.value.empty() ? derivedGuid(app, guids.size(), space)
                                           : app.guid.value);
    const auto [owner, isNew] =
        owners.emplace(addon::project::plainGuid(opc::fromUtf8(guids.back())), guids.size() - 1);
    if (!isNew) refuseSharedGuid(app, guids, owner->second);
  }
  return guids;
}

AddonProperties propertiesOf(const Project& project) {
  const PackageSection& package = project.manifest.package;
  AddonProperties properties;
  properties.type = opc::fromUtf8(package.type.value);
  properties.name = opc::fromUtf8(package.name.value);
  properties.version = opc::fromUtf8(package.version.value);
  properties.summary = opc::fromUtf8(package.summary.value);
  properties.description = opc::fromUtf8(
      textOf(project, package.description, package.descriptionFile, "package.description-file"));
  properties.authorName = opc::fromUtf8(package.author.value);
  properties.authorContact = opc::fromUtf8(package.contact.value);
  properties.authorOrganization = opc::fromUtf8(package.organization.value);
  properties.GUID = opc::fromUtf8(guidOf(project.manifest));
  return properties;
}

}  // namespace tool
