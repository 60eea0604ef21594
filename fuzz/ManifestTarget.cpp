// SPDX-License-Identifier: MIT
// Manifests: values have positions and valid texts, and errors have positions.
#include <string>

#include "addon/project/Manifest.h"
#include "addon/project/PlainText.h"
#include "fuzz/Require.h"
#include "opc/Text.h"

namespace {

using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::Record;
using addon::project::Manifest;
using addon::project::ManifestError;
using addon::project::Text;
using fuzz::require;

void checkText(const std::u16string& text) {
  require(addon::project::isManifestText(opc::toUtf8(text)), "a text is fit for a manifest");
}

void checkText(const Text& text) {
  require(addon::project::isManifestText(text.value), "a text is fit for a manifest");
}

void checkRequired(const Manifest& manifest, const std::string& key, const std::u16string& text) {
  require(manifest.isGiven(key) && !text.empty(), "a required key is there");
  require(manifest.positionOf(key).column != 0, "a place has a column");
  checkText(text);
}

void check(const Manifest& manifest) {
  for (const auto& document : manifest.documents) {
    addon::project::visitFields(
        document, [&](const Record& record, const Field& field, const std::string& key) {
          if (field.kind() != FieldKind::Text) return;
          checkText(record.text(field));
          if (field.isKeyRequired) checkRequired(manifest, key, record.text(field));
        });
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
