// SPDX-License-Identifier: MIT
// A library that 'kraddon call --library' can load, and that is not the project's own: its table is
// too short when the environment says so, and its gateways give what JSON is not printed of.
#include <array>
#include <cstddef>
#include <cstdlib>

#include "gateway/FunctionTable.h"

namespace {

constexpr std::size_t kGateways = 32;  // more than anybody asks for
constexpr int kLevels = 300;

void giveDeepCell(int, kxArray* plhs[], int, const kxArray*[]) {
  const std::array<std::size_t, 2> sizes{1, 1};
  kxArray* array = kxCreateCellArray(sizes.size(), sizes.data());
  for (int level = 1; level < kLevels; ++level) {
    kxArray* outer = kxCreateCellArray(sizes.size(), sizes.data());
    kxSetCell(outer, 0, array);
    array = outer;
  }
  plhs[0] = array;
}

}  // namespace

const HostFunctionTable* QueryKRFcnTable_kraddon_packaging() {
  static const auto gateways = [] {
    std::array<GatewayFunction, kGateways> all{};
    all.fill(giveDeepCell);
    return all;
  }();
  static HostFunctionTable table{gateways.data(), 0, 0, gateways.size()};
  if (std::getenv("KRADDON_SHORT_TABLE") != nullptr) table.entryPointCount = 1;
  return &table;
}
