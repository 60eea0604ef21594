// SPDX-License-Identifier: MIT
#include "addon/build/Screenshot.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>

#include "addon/build/BuildError.h"
#include "addon/packaging/DocumentRemoval.h"
#include "addon/packaging/ImageSignature.h"
#include "opc/FileDescriptor.h"
#include "opc/SystemCall.h"
#include "opc/Text.h"
#include "opc/plservices/FileContentSource.h"

namespace addon::build {

using opc::sentence;

void checkScreenshot(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) throw systemError("cannot read", path, errno);
  if (S_ISDIR(info.st_mode)) throw systemError("cannot read", path, EISDIR);
  if (!S_ISREG(info.st_mode)) throw BuildError(sentence("cannot read", path, "it is not a file"));
  const opc::FileDescriptor file(
      opc::uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); }));
  if (!file) throw systemError("cannot read", path, errno);
  const auto content = opc::plservices::FileContentSource(path).getInputStream();
  const std::string fault = packaging::screenshotFault(path, *content);
  if (!fault.empty()) throw BuildError(sentence("cannot use the image", path, fault));
}

void storeScreenshot(packaging::AddonPackage& package, const std::string& name,
                     const std::u16string& image) {
  auto& model = package.logicalPackage();
  if (const auto other = packaging::relationshipInTheWay(model)) {
    const std::string why =
        fmt::format("the relationship '{}' leads to '{}', which is not a screenshot",
                    opc::toUtf8ForDisplay(other->getId()),
                    opc::toUtf8ForDisplay(other->getTargetURI().toString()));
    throw BuildError(sentence("cannot store the screenshot in", name, why),
                     fmt::format("'kraddon unset {} screenshot' gives it another id", name));
  }
  packaging::removeScreenshot(model);
  try {
    package.setScreenshot(image);
  } catch (const opc::Exception& error) {
    if (error.code() != opc::ErrorCode::AlreadyExists) throw;
    throw BuildError(sentence("cannot store the screenshot in", name,
                              "something else uses the name of its part"),
                     "an image of another format gets another name");
  }
}

}  // namespace addon::build
