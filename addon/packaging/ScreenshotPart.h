// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "opc/plservices/SchemaRoot.h"

namespace addon::packaging {

/// How the primary screenshot is found, and what its part is called when it is made.
struct ScreenshotPart {
  static constexpr const char16_t* kNameStem = u"/metadata/primaryScreenShot.";
  // The screenshot is found for replacement by these ids, which nothing else in a package takes.
  static constexpr const char16_t* kId = u"rId100";
  static constexpr const char16_t* kThumbnailId = u"rId101";

  static std::u16string relationshipType() {
    return opc::plservices::SchemaRoot + u"/korvan/addon/2014/relationships/primaryScreenShot";
  }
};

}  // namespace addon::packaging
