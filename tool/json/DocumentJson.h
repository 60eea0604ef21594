// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "addon/packaging/DocumentTable.h"
#include "text/JsonText.h"
#include "text/JsonWriter.h"

// Documents as JSON: one object or, for a list, an array of objects; flags are the texts "true" and
// "false", as the host has them.

namespace tool::json {

using text::JsonError;
using text::JsonValue;

/// Fills an empty document. Throws JsonError that names the first field that is unknown, missing,
/// of a wrong kind or of characters that XML cannot carry ("examples[2].examples[0].images:
/// expected an array of texts").
void readDocument(const addon::packaging::DocumentTable& table,
                  const addon::packaging::Record& document, const JsonValue& value);

/// The inverse. Lists that a host struct leaves unset are null.
std::string toJson(const addon::packaging::DocumentTable& table,
                   const addon::packaging::ConstRecord& document, text::JsonWriter::Layout layout);
void writeRecord(const addon::packaging::ConstRecord& record, text::JsonWriter& json);
void writeField(const addon::packaging::ConstRecord& record, const addon::packaging::Field& field,
                text::JsonWriter& json);

/// Whether it is a single record of texts only, so that its fields can be set one by one.
bool isFlat(const addon::packaging::DocumentTable& table);
std::vector<std::string_view> fieldNames(const addon::packaging::RecordTable& table);

}  // namespace tool::json
