// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "addon/materials/Materials.h"
#include "text/JsonWriter.h"

namespace addon::materials::detail {

/// The base of the writers of both formats: a JSON document of the materials that is passed on in
/// pieces.
class JsonDocument {
 protected:
  /// Both must outlive it.
  JsonDocument(const Materials& materials, const Sink& sink) : sink_(sink), materials_(materials) {}

  void writeUnlessEmpty(std::string_view name, const std::u16string& text) {
    if (!text.empty()) json_.member(name, std::u16string_view(text));
  }

  /// Passes on what was written since the last time.
  void passOn() { sink_(std::exchange(text_, {})); }

  /// Ends the outermost object and passes on what is left.
  void end() {
    json_.endObject();
    text_ += '\n';
    passOn();
  }

 private:
  const Sink& sink_;
  std::string text_;

 protected:
  const Materials& materials_;
  text::JsonWriter json_{text_};
};

}  // namespace addon::materials::detail
