// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "opc/model/ContentTypes.h"
#include "opc/model/NameKey.h"
#include "opc/model/PartName.h"

// Part names, and looking up their content types.

namespace {

using opc::model::ContentType;
using opc::model::ContentTypes;
using opc::model::PartName;

const std::vector<std::string>& names() {
  static const std::vector<std::string> kNames = {
      "files/filters/lowpassKernel.m", "files/docs/%C3%9Cbersicht%20neu.md",
      "metadata/addonProperties.xml", "files/a/b/c/d/e/f/g/h/i/j/k/step000123.m"};
  return kNames;
}

void ParsePartName(benchmark::State& state) {
  const std::string& name = names()[static_cast<std::size_t>(state.range(0))];
  for (auto _ : state) benchmark::DoNotOptimize(PartName::fromItemName(name));
  state.SetLabel(name);
}

void CheckPartName(benchmark::State& state) {
  const std::string& name = names()[static_cast<std::size_t>(state.range(0))];
  for (auto _ : state) benchmark::DoNotOptimize(opc::model::findNameFault(name));
  state.SetLabel(name);
}

void HashPartName(benchmark::State& state) {
  const std::string& name = names()[static_cast<std::size_t>(state.range(0))];
  for (auto _ : state) benchmark::DoNotOptimize(opc::model::nameHash(name));
  state.SetLabel(name);
}

// By the number of overrides in the stream, in addition to a default for "m".
void FindContentType(benchmark::State& state) {
  const ContentType type(u"text/plain");
  ContentTypes types;
  types.addDefault("m", type);
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    types.addOverride("files/extra/step" + std::to_string(i), type);
  }
  const std::string byDefault = names()[0];
  const std::string byOverride = "files/extra/step" + std::to_string(state.range(0) / 2);
  for (auto _ : state) {
    benchmark::DoNotOptimize(types.find(byDefault));
    benchmark::DoNotOptimize(types.find(byOverride));
  }
  state.SetItemsProcessed(state.iterations() * 2);
}

BENCHMARK(ParsePartName)->DenseRange(0, 3);
BENCHMARK(CheckPartName)->DenseRange(0, 3);
BENCHMARK(HashPartName)->DenseRange(0, 3);
BENCHMARK(FindContentType)->RangeMultiplier(100)->Range(1, 100000);

}  // namespace
