// SPDX-License-Identifier: MIT
#include "fuzz/Require.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "opc/Text.h"

namespace fuzz {

void require(bool holds, const char* invariant) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", invariant);
  std::abort();
}

void requireReadable(const opc::Exception& refusal) {
  const std::string_view text = refusal.what();
  require(!text.empty(), "a refusal says why");
  require(opc::isUtf8(text), "a refusal is UTF-8");
  require(opc::printable(text) == text, "a refusal holds no control characters");
  const auto* fault = dynamic_cast<const opc::FormatError*>(&refusal);
  require(fault == nullptr || !fault->rule().empty(), "a broken rule has a name");
}

}  // namespace fuzz
