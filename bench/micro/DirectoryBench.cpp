// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include "addon/packaging/AddonPackage.h"
#include "bench/micro/BenchPackage.h"
#include "opc/Text.h"
#include "opc/zippackage/PackageFile.h"
#include "opc/zippackage/ZipDirectory.h"

// The cost of opening a package, step by step, by its number of files.

namespace {

using addon::packaging::AddonPackage;
using opc::interfaces::OpenMode;

std::size_t filesOf(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

void ReadDirectory(benchmark::State& state) {
  const opc::zippackage::PackageFile file(bench::packageOf(filesOf(state)));
  for (auto _ : state) benchmark::DoNotOptimize(opc::zippackage::ZipDirectory::read(file));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void OpenPackage(benchmark::State& state) {
  AddonPackage package(opc::fromUtf8(bench::packageOf(filesOf(state))));
  for (auto _ : state) {
    package.logicalPackage().open(OpenMode::Read);
    package.logicalPackage().close(true);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void ListFiles(benchmark::State& state) {
  AddonPackage package(opc::fromUtf8(bench::packageOf(filesOf(state))));
  for (auto _ : state) {
    package.logicalPackage().open(OpenMode::Read);
    benchmark::DoNotOptimize(package.getFileList());
    package.logicalPackage().close(true);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(ReadDirectory)->RangeMultiplier(10)->Range(10, 100000);
BENCHMARK(OpenPackage)->RangeMultiplier(10)->Range(10, 100000);
BENCHMARK(ListFiles)->RangeMultiplier(10)->Range(10, 100000);

}  // namespace
