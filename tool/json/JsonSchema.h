// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/DocumentTable.h"
#include "text/JsonText.h"

// What JSON Schemas (2020-12) are made of.

namespace tool::json::schema {

using text::JsonValue;

/// The dialect, then the schema.
JsonValue whole(const JsonValue& schema);

/// The schema with a description.
JsonValue described(JsonValue schema, std::string_view help);
/// The schema, or null.
JsonValue orNull(const JsonValue& schema);

JsonValue text();
JsonValue filledText();
JsonValue matching(std::string_view pattern);
JsonValue constant(std::string_view value);
JsonValue words(const std::vector<std::string_view>& all);
JsonValue flag();
JsonValue number();
JsonValue list(const JsonValue& elements);

// Texts of a fixed form.
JsonValue time();
JsonValue sha256();
JsonValue digest();

struct Member {
  std::string name;
  JsonValue schema;
  bool isRequired = true;
};
/// An object of these members and no others.
JsonValue object(std::string_view title, std::string_view help, const std::vector<Member>& members);
/// The member 'schema': the name and version of the shape of an output.
Member shape(std::string_view name);
/// An object of these members, to which later versions may add others.
JsonValue openObject(std::string_view title, std::string_view help,
                     const std::vector<Member>& members);
/// An object of any members whose names match the pattern, each with that schema.
JsonValue map(std::string_view title, std::string_view help, std::string_view pattern,
              const JsonValue& element);

/// A document, as 'get' prints it and 'set' takes it.
JsonValue document(const addon::packaging::DocumentTable& table);
/// The names of all documents.
std::vector<std::string_view> documentNames();

}  // namespace tool::json::schema
