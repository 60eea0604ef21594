// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "opc/Exception.h"
#include "opc/Streams.h"

/// What every target defines: runs one input, and ends the process when something is wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// Ends the process, naming `invariant`, unless it holds.
void require(bool holds, const char* invariant);

/// A refusal has to be one line of text that a terminal can show.
void requireReadable(const opc::Exception& refusal);

/// What `body` returns, or nothing when it refuses the input. Any exception but those of the
/// packaging layer passes, and ends the process.
template <typename Body>
auto unlessRefused(const Body& body) -> std::optional<decltype(body())> {
  try {
    return body();
  } catch (const opc::Exception& refusal) {
    requireReadable(refusal);
    return std::nullopt;
  }
}

/// The same for what returns nothing: whether it went through.
template <typename Body>
bool isAccepted(const Body& body) {
  return unlessRefused([&] { return body(), true; }).has_value();
}

inline opc::MemoryInputStream streamOver(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Takes the first byte of the input for a choice between `count` things; 0 when there is none.
inline std::size_t takeChoice(std::string_view& input, std::size_t count) {
  if (input.empty()) return 0;
  const auto choice = static_cast<unsigned char>(input.front()) % count;
  input.remove_prefix(1);
  return choice;
}

}  // namespace fuzz
