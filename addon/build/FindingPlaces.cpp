// SPDX-License-Identifier: MIT
#include "addon/build/FindingPlaces.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "addon/build/TreeWalk.h"
#include "addon/checks/AddonFindings.h"
#include "addon/checks/PathCheck.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/FileIdentity.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"

namespace addon::build {

using addon::checks::PackageVerdict;
using addon::checks::SourcePlace;
using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::OwnedDocument;
using addon::packaging::Record;
using addon::project::Position;
using opc::checks::Finding;
using opc::checks::FindingId;

namespace {

/// The key that a finding about the whole add-on is about; the first one that is given.
struct WantedKey {
  FindingId id;
  std::string_view word;  ///< of the message, where the id has several keys
  const char* key;
};
constexpr WantedKey kWantedKeys[] = {
    {checks::kNoLicense, "", "license.text"},
    {checks::kNoLicense, "", "license.file"},
    {checks::kNoLicense, "", "license"},
    {checks::kNoSummary, "summary", "package.summary"},
    {checks::kNoSummary, "description", "package.description"},
    {checks::kNoSummary, "description", "package.description-file"},
    {checks::kNoAuthor, "author", "package.author"},
    {checks::kNoAuthor, "contact", "package.contact"},
    {checks::kOddVersion, "", "package.version"},
    {checks::kNoVersion, "", "package.version"},
};

/// Whether a finding can be about the values of a field.
bool concerns(const Finding& finding, const Field& field) {
  const std::uint16_t number = finding.id.number;
  const std::string_view key = field.key;
  if (number == checks::kDuplicateGuid.number || number == checks::kNotGuid.number) {
    return key == "guid";
  }
  if (number == checks::kRevisionMismatch.number) return key == "version";
  return checks::ruleOf(field.reference) != nullptr;
}

bool names(const Finding& finding, const std::u16string& text) {
  return finding.message.find(opc::checks::quoted(text)) != std::string::npos;
}

/// The name of a part as it is compared.
std::string partKey(std::u16string_view name) {
  return opc::toLowerAscii(opc::toUtf8(name));
}

class Locator {
 public:
  explicit Locator(const Project& project)
      : project_(project),
        manifest_(fromCurrentFolder(manifestPath(project.folder))),
        root_(project.onDisk(project.manifest.files.root.value)) {}

  SourcePlace placeOf(const Finding& finding) {
    const std::string file = fileOf(finding);
    if (!file.empty()) return {fromCurrentFolder(file), finding.line, 0};
    const Position position = positionOf(finding);
    if (position.line == 0) return {};
    return {manifest_, position.line, position.column};
  }

 private:
  /// The path in the package of the file or folder that a finding is about; "" for none.
  static std::string_view treePathOf(const Finding& finding) {
    constexpr std::string_view kFiles = "files/";
    constexpr std::uint16_t kStyle = 500;
    std::string_view part = finding.part;
    if (finding.id.number > kStyle && !part.starts_with('/')) return part;
    if (part.starts_with('/')) part.remove_prefix(1);
    return part.starts_with(kFiles) ? part.substr(kFiles.size()) : std::string_view();
  }

  std::string fileOf(const Finding& finding) const {
    const std::string path(treePathOf(finding));
    if (path.empty()) return {};
    const auto& added = project_.manifest.files.added;
    const auto other = std::find_if(added.begin(), added.end(),
                                    [&](const auto& file) { return file.to.value == path; });
    const std::string file =
        other == added.end() ? onDisk(root_, path) : project_.onDisk(other->from.value);
    return opc::identityOf(file) ? file : std::string();  // names of parts may be encoded
  }

  Position positionOf(const Finding& finding) {
    const Manifest& manifest = project_.manifest;
    const std::string part = opc::toLowerAscii(finding.part);
    if (part.starts_with(partKey(packaging::ScreenshotPart::kNameStem))) {
      return manifest.screenshot.position;
    }
    for (const OwnedDocument& document : manifest.documents) {
      if (part != partKey(document.part->partName)) continue;
      const std::string key = keyOf(document, finding);
      if (!key.empty()) return manifest.positionOf(key);
      const Position table = manifest.positionOf(document.table->key);
      if (finding.id.number < checks::kNoLicense.number && table.line != 0) return table;
    }
    for (const WantedKey& wanted : kWantedKeys) {
      if (wanted.id.number != finding.id.number || !manifest.isGiven(wanted.key)) continue;
      if (finding.message.find(wanted.word) == std::string::npos) continue;
      return manifest.positionOf(wanted.key);
    }
    const bool isFiles = finding.id == checks::kNoFiles && manifest.files.isGiven();
    return isFiles ? manifest.files.position : manifest.positionOf("package");
  }

  /// The key of a document whose value and record the message names; "" for none. Equal values are
  /// matched with the findings one by one.
  std::string keyOf(const OwnedDocument& document, const Finding& finding) {
    std::string found;
    const auto look = [&](const Record& record, const std::u16string& value,
                          const std::string& key) {
      if (!found.empty() || value.empty() || !names(finding, value)) return;
      const Field* name = key.find('[') == key.npos ? nullptr : record.table().find("name");
      const bool isIt =
          name == nullptr || record.isEmpty(*name) || names(finding, record.text(*name));
      if (!isIt || !project_.manifest.isGiven(key)) return;
      if (used_.emplace(finding.id.number, key).second) found = key;
    };
    addon::project::visitFields(
        document, [&](const Record& record, const Field& field, const std::string& key) {
          if (!concerns(finding, field)) return;
          if (field.kind() == FieldKind::Text) return look(record, record.text(field), key);
          if (field.kind() != FieldKind::Texts) return;
          const auto& values = record.texts(field);
          for (std::size_t i = 0; i < values.size(); ++i) {
            look(record, values[i], key + "[" + std::to_string(i) + "]");
          }
        });
    return found;
  }

  const Project& project_;
  std::string manifest_;
  std::string root_;
  std::set<std::pair<std::uint16_t, std::string>> used_;
};

}  // namespace

std::string fromCurrentFolder(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  fs::path plain = fs::path(path).lexically_normal();
  const auto isSame = [&] { return opc::identityOf(plain.string()) == opc::identityOf(path); };
  if (plain.is_relative() && isSame()) return plain.string();
  const fs::path here = fs::current_path(error);
  if (!error) plain = plain.lexically_relative(here);
  if (!error && !plain.empty() && isSame()) return plain.string();
  // '..' after a link leads elsewhere.
  plain = fs::canonical(path, error);
  return error ? path : plain.lexically_relative(here).string();
}

SourcePlace placeOf(const ManifestError& error, const std::string& manifest) {
  return {fromCurrentFolder(manifest), error.position().line, error.position().column};
}

void locateFindings(const Project& project, PackageVerdict& verdict) {
  Locator locator(project);
  verdict.places.clear();
  for (const Finding& finding : verdict.findings) {
    verdict.places.push_back(locator.placeOf(finding));
  }
}

}  // namespace addon::build
