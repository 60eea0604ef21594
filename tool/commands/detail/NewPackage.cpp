// SPDX-License-Identifier: MIT
#include "tool/commands/detail/NewPackage.h"

#include <sys/stat.h>

#include <utility>

#include "addon/packaging/AddonProperties.h"
#include "addon/project/Guid.h"
#include "opc/Exception.h"
#include "tool/process/Errors.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands::detail {

using addon::packaging::AddonPackage;

namespace {

void setTimes(AddonPackage& package, std::int64_t seconds) {
  auto properties = package.coreProperties().getCoreProperties();
  properties.setCreatedTime(toTime(seconds));
  properties.setLastModifiedTime(toTime(seconds));
  package.coreProperties().setCoreProperties(properties);
}

bool isPackageOf(const std::string& guid, const std::string& path) {
  try {
    addon::packaging::AddonProperties properties;
    openForReading(path)->getAddonProperties(properties);
    return addon::project::plainGuid(properties.GUID) == guid;
  } catch (const opc::Exception&) {
    return false;
  } catch (const process::Failure&) {
    return false;
  }
}

}  // namespace

NewPackage::NewPackage(const std::string& path, const Replacing& replacing,
                       const line::Invocation& invocation)
    : path_{path}, lock_(lockPackage(path, invocation)) {
  replaces_ = requireFreePlace(path, replacing);
}

AddonPackage& NewPackage::open(addon::packaging::AddonProperties& properties,
                               std::optional<std::int64_t> time) {
  package_ = std::make_unique<AddonPackage>(path_, properties);
  package_->physicalPackage().setReplaceExisting(replaces_);
  if (time) setTimes(*package_, *time);
  return *package_;
}

void NewPackage::commit(opc::zippackage::WriteOptions options, const line::Settings& settings) {
  report::ProgressBar bar(settings);
  options.progress = bar.function();
  package_->physicalPackage().setWriteOptions(std::move(options));
  tool::commands::detail::commit(*package_);
}

bool requireFreePlace(const std::string& path, const Replacing& replacing) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return replacing.any;
  if (S_ISDIR(info.st_mode)) {
    throw process::Failure(process::sentence("cannot create", path, "it is a folder"));
  }
  if (!S_ISREG(info.st_mode)) {
    throw process::Failure(process::sentence("cannot create", path, "it is not a file"));
  }
  if (!replacing.any && (replacing.guid.empty() || !isPackageOf(replacing.guid, path))) {
    const bool isOther = !replacing.guid.empty();
    throw process::Failure(
        process::sentence("cannot create", path,
                          isOther ? "it already exists, and is not a package of this add-on"
                                  : "it already exists"),
        "--force replaces it");
  }
  report::requireWritable(path);
  return true;
}

}  // namespace tool::commands::detail
