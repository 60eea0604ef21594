// SPDX-License-Identifier: MIT
#include "addon/build/Project.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <unordered_map>

#include "addon/build/BuildError.h"
#include "addon/build/TreeWalk.h"
#include "addon/build/detail/ReadFile.h"
#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/project/Guid.h"
#include "addon/project/PlainText.h"
#include "opc/Text.h"

namespace addon::build {

using addon::packaging::AddonAppInstall;
using addon::packaging::AddonAppInstallList;
using addon::packaging::AddonProperties;
using addon::packaging::Field;
using addon::packaging::OwnedDocument;
using addon::packaging::Record;

namespace {

constexpr std::size_t kMaxManifestSize = std::size_t{16} << 20;
constexpr std::size_t kMaxTextSize = std::size_t{32} << 20;  // parts end at twice as much

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string readText(const std::string& path) {
  std::string text = detail::readWholeFile(path, kMaxTextSize);
  if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  // Licenses of the time of line printers have form feeds between their pages.
  std::replace(text.begin(), text.end(), '\f', '\n');
  const std::string fault = addon::project::manifestTextFault(text);
  if (!fault.empty()) throw BuildError(opc::sentence("cannot use the text of", path, fault));
  return text;
}

std::string derivedGuid(const Manifest& manifest, const AddonAppInstall& app,
                        const std::string& key, const std::string& space) {
  if (auto guid = addon::project::guidWithin(space, opc::toUtf8(app.relativePath))) return *guid;
  throw ManifestError(manifest.positionOf(key),
                      fmt::format("{}.guid: expected a GUID of its own, as none can be derived "
                                  "from package.guid '{}', which is not a GUID",
                                  key, space));
}

[[noreturn]] void refuseSharedGuid(const Manifest& manifest, const AddonAppInstall& app,
                                   const std::string& key, const std::string& guid,
                                   std::size_t owner) {
  if (!app.guid.empty()) {
    throw ManifestError(manifest.positionOf(key + ".guid"),
                        fmt::format("{}.guid: expected a GUID of its own, and app[{}] has '{}' too",
                                    key, owner, guid));
  }
  throw ManifestError(manifest.positionOf(key + ".file"),
                      fmt::format("{}.file: app[{}] has the file '{}' too, and so the same GUID, "
                                  "expected a 'guid' of its own",
                                  key, owner, opc::toUtf8(app.relativePath)));
}

}  // namespace

std::string Project::onDisk(const std::string& path) const {
  if (path == ".") return folder;
  return path.starts_with('/') ? path : addon::build::onDisk(folder, path);
}

std::string manifestPath(const std::string& folder) {
  return onDisk(folder, addon::project::kManifestName);
}

Project openProject(const std::string& folder) {
  struct stat info {};
  if (::stat(folder.c_str(), &info) != 0) {
    throw systemError("cannot read the folder", folder, errno);
  }
  const std::string path = manifestPath(folder);
  if (::stat(path.c_str(), &info) != 0 && errno == ENOENT) {
    const BuildError missing = systemError("cannot read", path, ENOENT);
    throw BuildError(missing.what(), "'kraddon init' writes one", ENOENT);
  }
  return {folder, addon::project::readManifest(detail::readWholeFile(path, kMaxManifestSize))};
}

void readTextFiles(const Project& project, const OwnedDocument& document) {
  const Manifest& manifest = project.manifest;
  addon::project::visitFields(
      document, [&](const Record& record, const Field& field, const std::string& path) {
        if (*field.fileKey == '\0') return;
        const std::string key = path.substr(0, path.rfind('.') + 1) + field.fileKey;
        const auto file = manifest.textFiles.find(key);
        if (file == manifest.textFiles.end()) return;
        try {
          record.text(field) = opc::fromUtf8(readText(project.onDisk(file->second)));
        } catch (const BuildError& failure) {
          throw ManifestError(manifest.positionOf(key), fmt::format("{}: {}", key, failure.what()));
        }
      });
}

AddonProperties& propertiesOf(const Project& project) {
  readTextFiles(project, project.manifest.find(AddonProperties::kTable));
  auto& properties = project.manifest.get<AddonProperties>();
  if (properties.GUID.empty()) {
    properties.GUID = opc::fromUtf8(addon::project::guidOfName(opc::toUtf8(properties.name)));
  }
  return properties;
}

void deriveAppGuids(const Manifest& manifest) {
  const std::string space = addon::project::plainGuid(manifest.get<AddonProperties>().GUID);
  std::unordered_map<std::string, std::size_t> owners;
  auto& apps = manifest.get<AddonAppInstallList>().apps;
  for (std::size_t i = 0; i < apps.size(); ++i) {
    const std::string key = fmt::format("app[{}]", i);
    const std::u16string guid = apps[i].guid.empty()
                                    ? opc::fromUtf8(derivedGuid(manifest, apps[i], key, space))
                                    : apps[i].guid;
    const auto [owner, isNew] = owners.emplace(addon::project::plainGuid(guid), i);
    if (!isNew) refuseSharedGuid(manifest, apps[i], key, opc::toUtf8(guid), owner->second);
    apps[i].guid = guid;
  }
}

}  // namespace addon::build
