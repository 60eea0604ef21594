// SPDX-License-Identifier: MIT
#include "tool/commands/detail/NewPackage.h"

#include <sys/stat.h>

#include <utility>

#include "addon/packaging/AddonProperties.h"
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

}  // namespace

NewPackage::NewPackage(const std::string& path, bool replaces, const line::Invocation& invocation)
    : path_{path}, replaces_(replaces), lock_(lockPackage(path, invocation)) {
  requireFreePlace(path, replaces);
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

void requireFreePlace(const std::string& path, bool replaces) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return;
  if (S_ISDIR(info.st_mode)) {
    throw process::Failure(process::sentence("cannot create", path, "it is a folder"));
  }
  if (!S_ISREG(info.st_mode)) {
    throw process::Failure(process::sentence("cannot create", path, "it is not a file"));
  }
  if (!replaces) {
    throw process::Failure(process::sentence("cannot create", path, "it already exists"),
                           "--force replaces it");
  }
  report::requireWritable(path);
}

}  // namespace tool::commands::detail
