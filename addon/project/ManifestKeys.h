// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <string>

#include "addon/packaging/AddonProperties.h"
#include "addon/project/Manifest.h"

// The keys of every table, each with a sentence. A visitor is called with each key, its member and
// the sentence. Reading, suggestions, the list of keys and the schema are based on this. The keys
// of documents come from the tables of the documents.

namespace addon::project {

/// A field of a document, where a member is expected.
struct FieldMember {
  packaging::Record record;
  const packaging::Field& field;
};
/// A whole record; of the properties also the screenshot.
struct RecordMember {
  packaging::Record record;
  Path* screenshot = nullptr;
};
/// The key of a file with the text of a field, which has that other key.
struct FileMember {
  const packaging::Field& field;
};

template <typename Visitor>
void visitKeys(RecordMember& member, Visitor& visitor) {
  for (const packaging::Field* field : keyFields(member.record.table())) {
    FieldMember value{member.record, *field};
    if (field->isKeyRequired) {
      visitor.required(field->key, value, field->help);
    } else {
      visitor.optional(field->key, value, field->help);
    }
    if (*field->fileKey == '\0') continue;
    FileMember file{*field};
    const std::string help =
        std::string("A file to read it from, instead of '") + field->key + "'.";
    visitor.optional(field->fileKey, file, help);
  }
  if (member.screenshot == nullptr) return;
  visitor.optional("screenshot", *member.screenshot, "The image file that represents the add-on.");
}

template <typename Visitor>
void visitKeys(AddedFileSection& section, Visitor& visitor) {
  visitor.required("from", section.from, "The file on disk.");
  visitor.required("to", section.to,
                   "Its path in the package, without a leading '/'. The path must be free.");
}

template <typename Visitor>
void visitKeys(FilesSection& section, Visitor& visitor) {
  visitor.optional("root", section.root, "The folder on disk to pack.");
  visitor.optional("include", section.include, "Patterns of files to include.");
  visitor.optional("exclude", section.exclude, "Patterns of files to exclude from those.");
  visitor.optional("default-excludes", section.defaultExcludes,
                   "Whether to exclude files of version control systems and editors.");
  visitor.optional("empty-folders", section.emptyFolders, "Whether to include empty folders.");
  visitor.optional("add", section.added, "A file from outside the root, or under another path.");
}

template <typename Visitor>
void visitKeys(BuildSection& section, Visitor& visitor) {
  visitor.optional("output", section.output,
                   "The path of the package, relative to the current folder.");
  visitor.optional("level", section.level, "The compression level, 0 (store only) to 9.");
}

template <typename Visitor>
void visitKeys(VerifySection& section, Visitor& visitor) {
  visitor.optional("ignore", section.ignore,
                   "Findings to ignore: \"KR506\" everywhere, \"KR508:docs/**\" where a pattern "
                   "matches.");
  visitor.optional("error", section.error,
                   "Findings that count as errors, unless they are ignored.");
  visitor.optional("warn", section.warn,
                   "Findings that count as warnings, unless they are ignored or errors.");
  visitor.optional("strict", section.strict, "Whether warnings count as errors.");
}

template <typename Visitor>
void visitKeys(PolicySection& policy, Visitor& visitor) {
  visitor.optional("verify", policy.verify, "How packages are checked.");
}

template <typename Visitor>
void visitKeys(Manifest& manifest, Visitor& visitor) {
  for (const packaging::OwnedDocument& document : manifest.documents) {
    const packaging::DocumentTable& table = *document.table;
    if (table.isList) {
      FieldMember list{document.record, table.list()};
      visitor.optional(table.list().key, list, table.list().help);
      continue;
    }
    const auto& fields = table.record.fields;
    const bool isRequired = std::any_of(fields.begin(), fields.end(),
                                        [](const auto& field) { return field.isKeyRequired; });
    const bool isProperties = &table == &packaging::AddonProperties::kTable;
    RecordMember member{document.record, isProperties ? &manifest.screenshot : nullptr};
    if (isRequired) {
      visitor.required(table.key, member, table.record.help);
    } else {
      visitor.optional(table.key, member, table.record.help);
    }
  }
  visitor.optional("files", manifest.files, "What goes into the file tree.");
  visitor.optional("build", manifest.build, "How the package is written.");
  visitor.optional("verify", manifest.verify, "How the result is checked.");
}

// The names of the types of values.
constexpr std::string_view typeName(const Text&) {
  return "a string";
}
constexpr std::string_view typeName(const FileMember&) {
  return "a string";
}
constexpr std::string_view typeName(const RecordMember&) {
  return "a table";
}
constexpr std::string_view typeName(const Flag&) {
  return "true or false";
}
constexpr std::string_view typeName(const Level&) {
  return "a whole number from 0 to 9";
}
constexpr std::string_view typeName(const Texts&) {
  return "an array of strings";
}
constexpr std::string_view typeName(const Section&) {
  return "a table";
}
template <typename Record>
constexpr std::string_view typeName(const std::vector<Record>&) {
  return "an array of tables";
}
inline std::string_view typeName(const FieldMember& member) {
  switch (member.field.kind()) {
    case packaging::FieldKind::Text:
      return member.field.isDate ? "a string or a date" : "a string";
    case packaging::FieldKind::Flag:
      return "true or false";
    case packaging::FieldKind::Texts:
      return "an array of strings";
    case packaging::FieldKind::Records:
      break;
  }
  return "an array of tables";
}

}  // namespace addon::project
