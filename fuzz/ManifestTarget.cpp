// SPDX-License-Identifier: MIT
// Manifests: values have positions and valid texts, and errors have positions.
#include <string>

#include "addon/project/Manifest.h"
#include "addon/project/PlainText.h"
#include "fuzz/Require.h"

namespace {

using addon::project::Manifest;
using addon::project::ManifestError;
using addon::project::Text;
using fuzz::require;

void checkText(const Text& text) {
  require(addon::project::isManifestText(text.value), "a text is fit for a manifest");
}

void checkRequired(const Text& text) {
  require(text.isGiven() && !text.value.empty(), "a required key is there");
  require(text.position.column != 0, "a place has a column");
  checkText(text);
}

void check(const Manifest& manifest) {
  checkRequired(manifest.package.name);
  checkRequired(manifest.package.version);
  checkText(manifest.package.description);
  checkText(manifest.license.text);
  for (const auto& app : manifest.apps) {
    checkRequired(app.name);
    checkRequired(app.file);
  }
  for (const Text& pattern : manifest.files.exclude.value) checkText(pattern);
  require(manifest.build.level.value >= 0 && manifest.build.level.value <= 9, "a level is one");
  require(!addon::project::outputPath(manifest).empty(), "a package has a path");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    check(addon::project::readManifest(fuzz::textOf(data, size)));
  } catch (const ManifestError& refusal) {
    fuzz::requireReadable(refusal);
    require(refusal.position().line != 0 && refusal.position().column != 0, "a fault has a place");
  }
  return 0;
}
