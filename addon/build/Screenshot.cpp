// SPDX-License-Identifier: MIT
#include "addon/build/Screenshot.h"

#include <fmt/format.h>

#include "addon/build/BuildError.h"
#include "addon/build/detail/ReadFile.h"
#include "addon/packaging/DocumentRemoval.h"
#include "addon/packaging/ImageSignature.h"
#include "opc/Text.h"
#include "opc/plservices/FileContentSource.h"

namespace addon::build {

using opc::sentence;

void checkScreenshot(const std::string& path) {
  detail::openRegularFile(path);
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
