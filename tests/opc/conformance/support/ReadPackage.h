// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "opc/model/Package.h"
#include "opc/plservices/CorePropertiesPart.h"

namespace test::conformance {

/// What a user gets who opens a package and reads all of it.
struct ReadPackage {
  struct Part {
    std::string type;
    std::string content;
  };

  bool opened = false;
  std::string rule;   ///< of the first refusal; "" for one without a rule, "none" without refusal
  std::string fault;  ///< its text
  std::map<std::string, Part> parts;                 ///< by the name of the item
  std::map<std::string, std::string> targets;        ///< of the package's relationships, by id
  std::map<std::string, std::string> targetsOfPart;  ///< of the relationships of "b.m"
  std::optional<opc::plservices::CorePropertiesPart> core;
  std::vector<std::string> stray;
  std::vector<std::string> untyped;
};

ReadPackage readPackage(const std::string& bytes);

/// The bytes of a new package with what `fill` puts into it.
std::string writtenPackage(const std::function<void(opc::model::Package&)>& fill);
/// The bytes of a package after `change`.
std::string changedPackage(const std::string& bytes,
                           const std::function<void(opc::model::Package&)>& change);

/// Adds a part with some text, as "text/plain" unless said otherwise.
std::shared_ptr<opc::model::Part> addPart(opc::model::Package& package, std::u16string_view name,
                                          std::u16string_view type = u"text/plain",
                                          std::string_view text = "data");

/// Replaces what is in a part.
void writeTextOf(opc::model::Package& package, std::u16string_view name, std::string_view text);

/// The rule of the refusal that `action` ends in; "" for one without a rule, "none" for none.
std::string refusalOf(const std::function<void()>& action);

}  // namespace test::conformance
