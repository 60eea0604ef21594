// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/HostJson.h"

namespace tool {

enum class FieldKind {
  Text,
  Flag,    ///< the text "true" or "false"
  Texts,   ///< any number of texts
  Records  ///< any number of records of one shape
};

struct RecordShape;

struct FieldShape {
  std::string_view name;  ///< ends with a NUL
  FieldKind kind = FieldKind::Text;
  bool isRequired = true;               ///< an optional one may be null or left out
  const RecordShape* record = nullptr;  ///< of FieldKind::Records
};

/// The fields of a host struct, in their order.
struct RecordShape {
  std::span<const FieldShape> fields;
  /// The text fields that tell a record of a list from the others, the best one first.
  std::span<const std::string_view> keys = {};
};

/// What a metadata document looks like as JSON and as a host struct: one record or, for a list, any
/// number. The one description by which documents are checked, converted and printed.
struct DocumentShape {
  std::string_view name;
  bool isList = false;
  RecordShape record;

  /// Whether it is one record of nothing but texts, whose fields can be set one by one.
  bool isFlat() const;
  std::vector<std::string_view> fieldNames() const;
};

/// Throws JsonError that names the first field that is unknown, missing, of a wrong kind or of
/// characters that XML cannot carry ("examples[2].examples[0].images: expected an array of texts").
void checkDocument(const DocumentShape& shape, const JsonValue& value);

/// The host struct array of a value that checkDocument let pass: always with all fields, in their
/// order; those that are missing or null stay unset.
HostArrayPointer toHostDocument(const DocumentShape& shape, const JsonValue& value);

/// The way back. Lists of records are arrays whatever their length, unset fields are null.
std::string toJson(const DocumentShape& shape, const kxArray* document, JsonWriter::Layout layout);

}  // namespace tool
