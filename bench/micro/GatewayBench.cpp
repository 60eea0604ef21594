// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include "bench/micro/BenchPackage.h"
#include "opc/Text.h"
#include "tests/support/GatewayCaller.h"

// A gateway called repeatedly in one process, as by a host, by the number of files in the package.

namespace {

void GetLicense(benchmark::State& state) {
  const auto path =
      test::makeText(opc::fromUtf8(bench::packageOf(static_cast<std::size_t>(state.range(0)))));
  for (auto _ : state) {
    const test::Outcome outcome = test::call(test::kGetLicense, 1, {path.get()});
    if (outcome.output == nullptr) return state.SkipWithError("there is no license");
  }
}

BENCHMARK(GetLicense)->Arg(10)->Arg(100000)->Iterations(1000)->Unit(benchmark::kMicrosecond);

}  // namespace
