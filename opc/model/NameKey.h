// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

namespace opc::model {

/// Names of items compared by their keys (see PartName) without building the keys: "É.M",
/// "%c3%89.m" and "%C3%89.m" are one. Names need not be names of parts.
bool equalKeys(std::string_view a, std::string_view b) noexcept;

/// Whether the key of `name` begins with the key of `prefix`.
bool keyStartsWith(std::string_view name, std::string_view prefix) noexcept;

/// Hashes of keys, built segment by segment, so that a name's hash comes from its folder's: that of
/// "a/b" is extendHash(extendHash(rootHash(), "a"), "b"). They differ from process to process, so
/// that a package with names that collide cannot be prepared.
std::uint64_t rootHash() noexcept;
std::uint64_t extendHash(std::uint64_t folder, std::string_view segment) noexcept;
std::uint64_t nameHash(std::string_view itemName) noexcept;

}  // namespace opc::model
