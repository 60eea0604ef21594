// SPDX-License-Identifier: MIT
#include "gateway/PackageGateways.h"

#include <string>

#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/AddonProperties.h"
#include "gateway/GatewayFrame.h"

namespace gateway {

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using opc::interfaces::OpenMode;

void addonCreatePackage(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  runGateway(kWriter, nlhs, nrhs, [&] {
    std::u16string path = matrix::get_ustring(prhs[0]);
    AddonProperties properties(prhs[1]);

    AddonPackage package(path, properties);
    package.logicalPackage().close(false);
  });
}

void addonSetProperties(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  runGateway(kWriter, nlhs, nrhs, [&] {
    const std::u16string path = matrix::get_ustring(prhs[0]);
    AddonProperties properties(prhs[1]);

    AddonPackage package(path);
    package.logicalPackage().open(OpenMode::Modify);
    package.setAddonProperties(properties);
    package.logicalPackage().close(false);
  });
}

void addonGetProperties(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
  runGateway(kReader, nlhs, nrhs, [&] {
    const std::u16string path = matrix::get_ustring(prhs[0]);

    AddonPackage package(path);
    AddonProperties properties;
    package.logicalPackage().open(OpenMode::Read);
    package.getAddonProperties(properties);
    // The one reader that hands its result out before it closes: a failing close leaves it there.
    plhs[0] = properties.getStructArray();
    package.logicalPackage().close(false);
  });
}

}  // namespace gateway
