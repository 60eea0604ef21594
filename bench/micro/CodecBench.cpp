// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "opc/zippackage/Codec.h"

// Packing and unpacking by the size of a file. Up to kWholeLimit a file is packed in one piece.

namespace {

using opc::ByteBuffer;
using opc::zippackage::Bytes;
using opc::zippackage::kWholeLimit;
using opc::zippackage::StreamDeflater;
using opc::zippackage::StreamInflater;
using opc::zippackage::updateCrc;
using opc::zippackage::WholeDeflater;
using opc::zippackage::WholeInflater;

constexpr std::size_t kPiece = 256 << 10;

// Text that compresses like source code.
std::vector<unsigned char> makeText(std::size_t size) {
  static const char* const kWords[] = {"function ", "end\n", "signal", "(x, y)", " = ", "zeros",
                                       "length(",   ")",     "\n  ",   "window", "% ",  "spectrum"};
  std::mt19937 random(1);
  std::vector<unsigned char> text;
  text.reserve(size + 16);
  while (text.size() < size) {
    const std::string word = kWords[random() % std::size(kWords)];
    text.insert(text.end(), word.begin(), word.end());
    if (random() % 8 == 0) text.push_back(static_cast<unsigned char>('a' + random() % 26));
  }
  text.resize(size);
  return text;
}

void setBytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Crc(benchmark::State& state) {
  const auto text = makeText(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(updateCrc(0, text));
  setBytes(state);
}

void PackWhole(benchmark::State& state) {
  const auto text = makeText(static_cast<std::size_t>(state.range(0)));
  WholeDeflater deflater;
  ByteBuffer packed;
  for (auto _ : state) benchmark::DoNotOptimize(deflater.pack(6, text, packed));
  setBytes(state);
}

void UnpackWhole(benchmark::State& state) {
  const auto text = makeText(static_cast<std::size_t>(state.range(0)));
  ByteBuffer packed;
  if (!WholeDeflater().pack(6, text, packed)) return state.SkipWithError("it does not pack");
  std::vector<unsigned char> out(text.size());
  WholeInflater inflater;
  for (auto _ : state) inflater.unpack(packed.bytes(), out.data(), out.size());
  setBytes(state);
}

std::vector<unsigned char> packStreamed(Bytes text) {
  StreamDeflater deflater(6);
  std::vector<unsigned char> packed;
  std::vector<unsigned char> piece(kPiece);
  bool finish = false;
  while (true) {
    const std::size_t length = deflater.pack(text, finish, piece.data(), piece.size());
    packed.insert(packed.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(length));
    if (length == piece.size()) continue;
    if (finish) return packed;
    finish = true;
  }
}

void PackStreamed(benchmark::State& state) {
  const auto text = makeText(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(packStreamed(text));
  setBytes(state);
}

void UnpackStreamed(benchmark::State& state) {
  const auto text = makeText(static_cast<std::size_t>(state.range(0)));
  const auto packed = packStreamed(text);
  std::vector<unsigned char> piece(kPiece);
  for (auto _ : state) {
    StreamInflater inflater;
    Bytes left(packed);
    while (!inflater.isEnd()) inflater.unpack(left, piece.data(), piece.size());
  }
  setBytes(state);
}

constexpr std::int64_t kSmall = 256;
constexpr std::int64_t kLarge = std::int64_t{kWholeLimit};

BENCHMARK(Crc)->RangeMultiplier(16)->Range(kSmall, kLarge);
BENCHMARK(PackWhole)->RangeMultiplier(16)->Range(kSmall, kLarge);
BENCHMARK(UnpackWhole)->RangeMultiplier(16)->Range(kSmall, kLarge);
BENCHMARK(PackStreamed)->Arg(kLarge)->Arg(4 * kLarge)->Unit(benchmark::kMillisecond);
BENCHMARK(UnpackStreamed)->Arg(kLarge)->Arg(4 * kLarge)->Unit(benchmark::kMillisecond);

}  // namespace
