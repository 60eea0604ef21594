// SPDX-License-Identifier: MIT
#include "tool/commands/detail/TrustAnchors.h"

#include <cstddef>

#include "opc/signatures/XmlSignatureLibrary.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/process/ReadFile.h"

namespace tool::commands::detail {

std::unique_ptr<opc::interfaces::ITrustAnchors> trustAnchorsOf(const line::Invocation& invocation) {
  constexpr std::size_t kMaxSize = std::size_t{16} << 20;
  std::unique_ptr<opc::interfaces::ITrustAnchors> anchors;
  for (const std::string& path : invocation.values(kTrustOption.longName)) {
    opc::signatures::xmlSignatures().addAnchors(anchors, path, process::readInput(path, kMaxSize));
  }
  return anchors;
}

}  // namespace tool::commands::detail
