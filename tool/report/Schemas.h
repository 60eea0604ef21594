// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "text/JsonText.h"

namespace tool::report {

using text::JsonValue;

/// A JSON Schema (2020-12) of something that the program reads or prints.
struct Schema {
  std::string name;
  std::function<JsonValue()> make;
};

/// The manifest, a policy, the outputs of --json, the files of a site, and the documents.
std::vector<Schema> schemas();

// What schemas() lists.
JsonValue manifestSchema();
JsonValue policySchema();
JsonValue infoSchema();
JsonValue infosSchema();
JsonValue listSchema();
JsonValue verifySchema();
JsonValue diffSchema();
JsonValue buildSchema();
JsonValue signaturesSchema();
JsonValue indexResultSchema();
JsonValue searchSchema();
JsonValue rootSchema();
JsonValue indexSchema();
JsonValue shardSchema();
JsonValue recordSchema();

/// A finding in a package, which is part of several of them.
JsonValue findingSchema();

}  // namespace tool::report
