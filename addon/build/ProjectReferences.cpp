// SPDX-License-Identifier: MIT
#include "addon/build/ProjectReferences.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "addon/checks/PathCheck.h"
#include "addon/packaging/ImageSignature.h"
#include "opc/Exception.h"
#include "opc/Text.h"

namespace addon::build {

using addon::checks::FindingRules;
using addon::checks::PathCheck;
using addon::checks::ReferenceRule;
using addon::packaging::ConstRecord;
using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::Record;
using addon::project::Position;
using opc::checks::Finding;
using opc::checks::FindingId;
using opc::checks::Report;
using opc::checks::Severity;

namespace {

/// Looks paths of the manifest up, and keeps the first by position that is not there.
class ReferenceSearch {
 public:
  ReferenceSearch(const FindingRules& rules, addon::packaging::AddonPackage& package)
      : rules_(rules), files_(package.fileSystem()), check_(files_, report_) {}

  void look(const std::u16string& path, Position position, const ReferenceRule& rule,
            const std::string& key, const std::string& what) {
    const std::size_t before = report_.findings().size();
    check_.check({path, rule.kind, rule.id, what, {}, 0});
    if (report_.findings().size() == before) return;
    const Finding& finding = report_.findings().back();
    if (!isError(rule.id) || !isError(finding.id)) return;
    keep(position, fmt::format("{}: {}", key, finding.message));
  }

  /// A missing image is only a warning of 'verify'.
  void lookAtImage(const std::u16string& path, Position position, const std::string& key) {
    const std::string name = opc::toUtf8(path);
    const auto file = files_.find(name);
    if (file == nullptr || !file->isFile()) return;
    const std::string fault = addon::packaging::imageFault(name, *files_.openFile(*file));
    if (fault.empty()) return;
    keep(position, fmt::format("{}: {}", key, opc::sentence("cannot use the image", name, fault)));
  }

  void raise() const {
    if (position_) throw ManifestError(*position_, why_);
  }

 private:
  void keep(Position position, std::string why) {
    if (position_ && *position_ < position) return;
    position_ = position;
    why_ = std::move(why);
  }

  /// Unless a rule says otherwise, whatever 'verify' would call it: nothing is packed yet.
  bool isError(FindingId id) const {
    return rules_.severityOf(FindingId{id.number, Severity::Error}) == Severity::Error;
  }

  const FindingRules& rules_;
  opc::plservices::FileSystemManager& files_;
  Report report_;
  PathCheck check_;
  std::optional<Position> position_;
  std::string why_;
};

/// Whose paths they are.
std::string ownerOf(const ConstRecord& record) {
  const std::string name = addon::project::nameOf(record);
  return name.empty() ? "the search path" : fmt::format("the {} '{}'", record.table().noun, name);
}

}  // namespace

void checkReferences(const Manifest& manifest, const FindingRules& rules,
                     addon::packaging::AddonPackage& package) {
  ReferenceSearch search(rules, package);
  const auto visit = [&](const Record& record, const Field& field, const std::string& key) {
    const ReferenceRule* rule = addon::checks::ruleOf(field.reference);
    if (rule == nullptr) return;
    const bool isImage = field.reference == addon::packaging::Reference::ExampleImage;
    // What 'verify' only warns of does not stop a build here.
    if (!isImage && rule->id.severity != opc::checks::Severity::Error) return;
    const auto look = [&](const std::u16string& path, const std::string& keyOfPath) {
      if (isImage) return search.lookAtImage(path, manifest.positionOf(keyOfPath), keyOfPath);
      search.look(path, manifest.positionOf(keyOfPath), *rule, keyOfPath, ownerOf(record));
    };
    if (field.kind() == FieldKind::Text) {
      if (!record.isEmpty(field)) look(record.text(field), key);
      return;
    }
    const auto& paths = record.texts(field);
    for (std::size_t i = 0; i < paths.size(); ++i) look(paths[i], fmt::format("{}[{}]", key, i));
  };
  for (const auto& document : manifest.documents) addon::project::visitFields(document, visit);
  search.raise();
}

}  // namespace addon::build
