// SPDX-License-Identifier: MIT
#include "addon/build/NewPackage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "addon/build/BuildError.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/project/Guid.h"
#include "opc/Exception.h"

namespace addon::build {

using opc::sentence;
using packaging::AddonPackage;

namespace {

bool isPackageOf(const std::string& guid, const std::string& path) {
  try {
    packaging::AddonProperties properties;
    AddonPackage package(opc::SystemPath{path});
    package.logicalPackage().open(opc::interfaces::OpenMode::Read);
    package.getAddonProperties(properties);
    return project::plainGuid(properties.GUID) == guid;
  } catch (const opc::Exception&) {
    return false;
  }
}

}  // namespace

NewPackage::NewPackage(const std::string& path, const Replacing& replacing)
    : path_{path}, replaces_(requireFreePlace(path, replacing)) {}

AddonPackage& NewPackage::open(packaging::AddonProperties& properties,
                               std::optional<std::int64_t> time) {
  package_ = std::make_unique<AddonPackage>(path_, properties);
  package_->physicalPackage().setReplaceExisting(replaces_);
  if (time) package_->setTimes(*time);
  return *package_;
}

void NewPackage::commit(opc::zippackage::WriteOptions options) {
  package_->physicalPackage().setWriteOptions(std::move(options));
  package_->logicalPackage().close(false);
}

bool requireFreePlace(const std::string& path, const Replacing& replacing) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return replacing.any;
  if (S_ISDIR(info.st_mode)) {
    throw BuildError(sentence("cannot create", path, "it is a folder"), {}, EISDIR);
  }
  if (!S_ISREG(info.st_mode)) throw BuildError(sentence("cannot create", path, "it is not a file"));
  if (!replacing.any && (replacing.guid.empty() || !isPackageOf(replacing.guid, path))) {
    const bool isOther = !replacing.guid.empty();
    throw BuildError(sentence("cannot create", path,
                              isOther ? "it already exists, and is not a package of this add-on"
                                      : "it already exists"),
                     "--force replaces it", EEXIST);
  }
  // A rename could replace it all the same.
  if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) {
    throw systemError("cannot replace", path, errno);
  }
  return true;
}

}  // namespace addon::build
