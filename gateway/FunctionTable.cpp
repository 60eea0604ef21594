// SPDX-License-Identifier: MIT
#include "gateway/FunctionTable.h"

#include <cstddef>
#include <exception>
#include <iterator>

#include "gateway/DocumentGateways.h"
#include "gateway/FileGateways.h"
#include "gateway/PackageGateways.h"
#include "opc/model/XercesHelper.h"

namespace {

// The order is the host's contract, slot by slot; it follows no grouping.
constexpr GatewayFunction kEntryPoints[] = {
    gateway::addonCreatePackage,
    gateway::addonSetProperties,
    gateway::addonGetProperties,
    gateway::addonAddFiles,
    gateway::addonAddFolders,
    gateway::addonExtractAllFiles,
    gateway::addonGetFileList,
    gateway::addonSetLicense,
    gateway::addonGetLicense,
    gateway::addonSetRevisionHistory,
    gateway::addonGetRevisionHistory,
    gateway::addonSetConfiguration,
    gateway::addonGetConfiguration,
    gateway::addonSetScreenshot,
    gateway::addonSetAppInstallList,
    gateway::addonGetAppInstallList,
    gateway::addonSetExamples,
    gateway::addonGetExamples,
    gateway::addonSetSystemRequirements,
    gateway::addonGetSystemRequirements,
};

constexpr uint64_t kInterfaceConstant = 0x562b25c9;
// Fixed, so that a build can be repeated byte by byte: 2015-07-30 21:57:21 UTC.
constexpr uint64_t kBuildTimeStamp = 0x55ba9dc1;

constexpr HostFunctionTable kTable = {
    kEntryPoints,
    kInterfaceConstant,
    kBuildTimeStamp,
    std::size(kEntryPoints),
};

// The host knows when it loads the library, and may use Xerces-C itself, of which no two starts may
// happen at the same time.
[[gnu::constructor]] void startXerces() noexcept {
  try {
    const opc::model::XercesGuard guard;
  } catch (const std::exception&) {
    // The first call tries again.
  }
}

static_assert(std::size(kEntryPoints) == 20);
static_assert(sizeof(HostFunctionTable) == 32);

}  // namespace

const HostFunctionTable* QueryKRFcnTable_kraddon_packaging(void) {
  return &kTable;
}
