// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "opc/Exception.h"
#include "opc/Streams.h"

/// Defined by every target: runs one input, and ends the process if something is wrong.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// Ends the process, naming `invariant`, unless it holds.
void require(bool holds, const char* invariant);

/// Requires the message of a refusal to be one line of text that a terminal can show.
void requireReadable(const opc::Exception& refusal);

/// Returns the result of `body`, or nothing if it refuses the input. Exceptions other than those of
/// the packaging layer pass, and end the process.
template <typename Body>
auto unlessRefused(const Body& body) -> std::optional<decltype(body())> {
  try {
    return body();
  } catch (const opc::Exception& refusal) {
    requireReadable(refusal);
    return std::nullopt;
  }
}

/// The same for a `body` without a result: returns whether it succeeded.
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

/// Uses the first byte of the input to choose a number below `count`; 0 if the input is empty.
inline std::size_t takeChoice(std::string_view& input, std::size_t count) {
  if (input.empty()) return 0;
  const auto choice = static_cast<unsigned char>(input.front()) % count;
  input.remove_prefix(1);
  return choice;
}

}  // namespace fuzz
