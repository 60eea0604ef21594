// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "addon/comparison/Contents.h"
#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/AddonProperties.h"
#include "text/JsonWriter.h"

namespace tool::report {

struct Screenshot {
  std::string part;
  std::string type;
  std::uint64_t size;
};

/// What 'info' knows of a package.
struct Info {
  std::string file;
  std::uint64_t size = 0;
  addon::packaging::AddonProperties properties;
  std::string created;
  std::string modified;
  std::vector<std::string> documents;
  std::optional<Screenshot> screenshot;
  addon::comparison::Totals totals;
  std::uint64_t signatures = 0;
  std::string digest;  // empty when it is not wanted
};

enum class InfoKind : std::uint8_t { Property, Text, Time, Number, Documents, Screenshot };

/// A field of 'info': as JSON, with --field, and as a line of the text.
struct InfoField {
  const char* name;   ///< in JSON, "author.name" for a member of an object
  const char* label;  ///< of its line; "" when it has none of its own
  InfoKind kind;
  const char* help = "";  ///< of a property its own
  const addon::packaging::Member* property = nullptr;
  std::string Info::*text = nullptr;
  std::uint64_t (*number)(const Info& info) = nullptr;
  std::string (*line)(const Info& info) = nullptr;  ///< what its line says, if not the value
};

/// All of them, in the order in which they are printed.
std::span<const InfoField> infoFields();

/// Reads all but the digest. Throws opc::Exception.
Info readInfo(addon::packaging::AddonPackage& package, const std::string& path);
/// The JSON of one package.
void writeInfo(const Info& info, text::JsonWriter& json);

/// The value as text, "" when it is unset.
std::string valueOf(const InfoField& field, const Info& info);
/// The field of the properties.
const addon::packaging::Field& propertyOf(const InfoField& field);

}  // namespace tool::report
