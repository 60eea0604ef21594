// SPDX-License-Identifier: MIT
#include "addon/packaging/ReferenceRenaming.h"

#include "addon/packaging/DocumentRemoval.h"
#include "addon/packaging/Documents.h"
#include "opc/Text.h"

namespace addon::packaging {

namespace {

class Renaming {
 public:
  Renaming(const std::string& from, const std::string& to) : from_(from), to_(to) {}

  void rename(const Record& record, const std::string& place) {
    for (const Field& field : record.table().fields) {
      renameField(record, field, place + "." + field.name);
    }
  }

  void renameList(const Record& document, const Field& list, const std::string& place) {
    for (std::size_t i = 0; i < document.size(list); ++i) {
      rename(document.at(list, i), place + "[" + std::to_string(i) + "]");
    }
  }

  std::vector<RenamedReference>& done() { return done_; }

 private:
  void renameField(const Record& record, const Field& field, const std::string& place) {
    if (field.kind() == FieldKind::Records) return renameList(record, field, place);
    if (field.reference == Reference::None) return;
    if (field.kind() == FieldKind::Text) return renameText(record.text(field), place);
    if (field.kind() != FieldKind::Texts) return;
    std::vector<std::u16string>& texts = record.texts(field);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      renameText(texts[i], place + "[" + std::to_string(i) + "]");
    }
  }

  // A leading slash has no meaning, and neither has one after the name of a folder.
  void renameText(std::u16string& text, const std::string& place) {
    const std::string old = opc::toUtf8ForDisplay(text);
    const std::string slash = old.starts_with('/') ? "/" : "";
    const std::string path = old.substr(slash.size());
    const bool isMeant = path == from_ || path.starts_with(from_ + "/");
    if (!isMeant) return;
    const std::string renamed = slash + to_ + path.substr(from_.size());
    text = opc::fromUtf8(renamed);
    done_.push_back({place, old, renamed});
  }

  const std::string& from_;
  const std::string& to_;
  std::vector<RenamedReference> done_;
};

}  // namespace

std::vector<RenamedReference> renameReferences(AddonPackage& package, const std::string& from,
                                               const std::string& to) {
  Renaming renaming(from, to);
  for (const DocumentTable* table : documents()) {
    if (!isPresent(*table, package)) continue;
    const std::size_t before = renaming.done().size();
    const OwnedDocument document = loadDocument(package, *table);
    if (table->isList) {
      renaming.renameList(document.record, table->list(), table->name());
    } else {
      renaming.rename(document.record, table->name());
    }
    if (renaming.done().size() != before) replaceDocument(package, *document.part);
  }
  return std::move(renaming.done());
}

}  // namespace addon::packaging
