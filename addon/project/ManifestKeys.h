// SPDX-License-Identifier: MIT
#pragma once

#include "addon/project/Manifest.h"

// The keys of every table. A visitor is called with each key and its member. Reading, suggestions
// and the list of keys are based on this.

namespace addon::project {

template <typename Visitor>
void visitKeys(PackageSection& section, Visitor& visitor) {
  visitor.required("name", section.name);
  visitor.required("version", section.version);
  visitor.optional("type", section.type);
  visitor.optional("summary", section.summary);
  visitor.optional("author", section.author);
  visitor.optional("contact", section.contact);
  visitor.optional("organization", section.organization);
  visitor.optional("description", section.description);
  visitor.optional("description-file", section.descriptionFile);
  visitor.optional("guid", section.guid);
  visitor.optional("screenshot", section.screenshot);
}

template <typename Visitor>
void visitKeys(LicenseSection& section, Visitor& visitor) {
  visitor.optional("type", section.type);
  visitor.optional("text", section.text);
  visitor.optional("file", section.file);
}

template <typename Visitor>
void visitKeys(ConfigurationSection& section, Visitor& visitor) {
  visitor.optional("korvan-paths", section.korvanPaths);
  visitor.optional("java-class-paths", section.javaClassPaths);
}

template <typename Visitor>
void visitKeys(AppSection& section, Visitor& visitor) {
  visitor.required("name", section.name);
  visitor.required("file", section.file);
  visitor.optional("guid", section.guid);
  visitor.optional("install-by-default", section.installByDefault);
}

template <typename Visitor>
void visitKeys(ExampleSection& section, Visitor& visitor) {
  visitor.required("name", section.name);
  visitor.optional("type", section.type);
  visitor.optional("source", section.source);
  visitor.optional("main", section.main);
  visitor.optional("thumbnail", section.thumbnail);
  visitor.optional("images", section.images);
}

template <typename Visitor>
void visitKeys(CategorySection& section, Visitor& visitor) {
  visitor.required("name", section.name);
  visitor.optional("example", section.examples);
}

template <typename Visitor>
void visitKeys(RevisionSection& section, Visitor& visitor) {
  visitor.required("version", section.version);
  visitor.optional("date", section.date);
  visitor.optional("description", section.description);
}

template <typename Visitor>
void visitKeys(ProductSection& section, Visitor& visitor) {
  visitor.required("name", section.name);
  visitor.optional("version", section.version);
  visitor.optional("identifier", section.identifier);
}

template <typename Visitor>
void visitKeys(RequirementsSection& section, Visitor& visitor) {
  visitor.optional("product", section.products);
  visitor.optional("support-package", section.supportPackages);
}

template <typename Visitor>
void visitKeys(AddedFileSection& section, Visitor& visitor) {
  visitor.required("from", section.from);
  visitor.required("to", section.to);
}

template <typename Visitor>
void visitKeys(FilesSection& section, Visitor& visitor) {
  visitor.optional("root", section.root);
  visitor.optional("include", section.include);
  visitor.optional("exclude", section.exclude);
  visitor.optional("default-excludes", section.defaultExcludes);
  visitor.optional("empty-folders", section.emptyFolders);
  visitor.optional("add", section.added);
}

template <typename Visitor>
void visitKeys(BuildSection& section, Visitor& visitor) {
  visitor.optional("output", section.output);
  visitor.optional("level", section.level);
}

template <typename Visitor>
void visitKeys(VerifySection& section, Visitor& visitor) {
  visitor.optional("ignore", section.ignore);
  visitor.optional("strict", section.strict);
}

template <typename Visitor>
void visitKeys(Manifest& manifest, Visitor& visitor) {
  visitor.required("package", manifest.package);
  visitor.optional("license", manifest.license);
  visitor.optional("configuration", manifest.configuration);
  visitor.optional("app", manifest.apps);
  visitor.optional("category", manifest.categories);
  visitor.optional("revision", manifest.revisions);
  visitor.optional("requirements", manifest.requirements);
  visitor.optional("files", manifest.files);
  visitor.optional("build", manifest.build);
  visitor.optional("verify", manifest.verify);
}

// The names of the types of values.
constexpr std::string_view typeName(const Text&) {
  return "a string";
}
constexpr std::string_view typeName(const Date&) {
  return "a string or a date";
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

}  // namespace addon::project
