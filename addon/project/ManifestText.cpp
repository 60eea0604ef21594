// SPDX-License-Identifier: MIT
#include "addon/project/ManifestText.h"

#include <string_view>

#include "addon/project/Guid.h"
#include "addon/project/detail/TomlText.h"

namespace addon::project {

namespace {

constexpr std::string_view kHead =
    "# The manifest for 'kraddon build'. 'kraddon init' guessed it from the content of this "
    "folder:\n"
    "# the comment above each value names its source. Correct what is wrong. Lines that begin "
    "with\n"
    "# '#' are ignored.\n";

constexpr std::string_view kTail =
    "\n"
    "# What the add-on needs.\n"
    "# [[requirements.product]]\n"
    "# name = \"Korvan\"\n"
    "# version = \"9.1\"\n"
    "\n"
    "# Files to leave out, by patterns as in a .gitignore file, in addition to the defaults.\n"
    "# [files]\n"
    "# exclude = [\"tests/\", \"*.log\"]\n";

/// A commented key, for a value that was not found.
std::string missing(std::string_view why, std::string_view line) {
  return detail::tomlComment(why) + "# " + std::string(line) + "\n";
}

std::string assignment(std::string_view key, const std::string& value) {
  return std::string(key) + " = " + value + "\n";
}

std::string fromSource(const std::string& source, std::string_view key, std::string_view value) {
  return detail::tomlComment(source) + assignment(key, detail::tomlString(value));
}

void appendOthers(const GuessedText& text, std::string& result) {
  std::string line;
  for (const std::string& path : text.others) line += (line.empty() ? "" : ", ") + path;
  if (!line.empty()) result += detail::tomlComment("Not used: " + line);
}

void appendNames(const Guesses& guesses, std::string& result) {
  const std::string& source = guesses.version.source;
  result += fromSource(guesses.name.source, "name", guesses.name.value);
  result +=
      fromSource(source.empty() ? "no git tag such as v1.2 and no change log was found" : source,
                 "version", guesses.version.value);
}

void appendTexts(const Guesses& guesses, std::string& result) {
  if (guesses.summary.value.empty()) {
    result += missing("one line about the add-on", "summary = \"\"");
  } else {
    result += fromSource("the first sentence of " + guesses.summary.source, "summary",
                         guesses.summary.value);
  }
  const GuessedText& readme = guesses.readme;
  if (readme.path.empty()) {
    result += missing("no README was found", "description-file = \"README.md\"");
  } else if (!readme.fault.empty()) {
    result += detail::tomlComment(readme.path + " cannot be the description: " + readme.fault);
  } else {
    result += fromSource("the README", "description-file", readme.path);
  }
  appendOthers(readme, result);
}

void appendAuthor(const Guesses& guesses, std::string& result) {
  if (guesses.author.value.empty()) {
    result += missing("git has no user.name here", "author = \"\"");
  } else {
    result += fromSource(guesses.author.source, "author", guesses.author.value);
  }
  const std::string contact = detail::tomlString(guesses.contact.value);
  result += missing(guesses.contact.source.empty()
                        ? "where questions go"
                        : guesses.contact.source + "; remove the '#' to publish it",
                    "contact = " + contact);
}

void appendGuid(const Guess& guid, std::string& result) {
  const std::string source = guid.source.empty() ? "random" : guid.source;
  result += fromSource(source + "; keep it in all versions of the add-on", "guid",
                       guid.value.empty() ? randomGuid() : guid.value);
}

void appendScreenshot(const Guesses& guesses, std::string& result) {
  for (const std::string& fault : guesses.screenshotFaults) result += detail::tomlComment(fault);
  if (!guesses.screenshot.empty()) {
    result += fromSource("an image of that name", "screenshot", guesses.screenshot);
  } else if (guesses.screenshotFaults.empty()) {
    result += missing("no screenshot.png or similar at the top, in images/ or in art/",
                      "screenshot = \"screenshot.png\"");
  }
}

void appendPackage(const Guesses& guesses, std::string& result) {
  result += "\n[package]\n";
  appendNames(guesses, result);
  appendTexts(guesses, result);
  appendAuthor(guesses, result);
  appendGuid(guesses.guid, result);
  appendScreenshot(guesses, result);
}

void appendLicense(const Guesses& guesses, std::string& result) {
  const GuessedText& license = guesses.license;
  result += "\n";
  if (license.path.empty()) {
    result +=
        missing("no LICENSE was found", "[license]") + "# type = \"MIT\"\n# file = \"LICENSE\"\n";
    return;
  }
  const std::string type = assignment("type", detail::tomlString(guesses.licenseType));
  const std::string file = assignment("file", detail::tomlString(license.path));
  if (!license.fault.empty()) {
    result += detail::tomlComment(license.path + " cannot be the license: " + license.fault);
    result += "# [license]\n# " + type + "# " + file;
    return;
  }
  result += "[license]\n";
  result += guesses.licenseType == "Other"
                ? detail::tomlComment("the text of " + license.path + " is not a common license")
                : detail::tomlComment("by the text of " + license.path);
  result += type + detail::tomlComment("the license file") + file;
  appendOthers(license, result);
}

void appendConfiguration(const Guesses& guesses, std::string& result) {
  result += "\n";
  const bool hasPaths = !guesses.korvanPaths.empty();
  const bool hasJars = !guesses.javaClassPaths.empty();
  if (!hasPaths && !hasJars) {
    result += missing("no .m files were found, except in examples, demos, tests, docs and private",
                      "[configuration]") +
              "# korvan-paths = [\".\"]\n";
    return;
  }
  result += "[configuration]\n";
  if (hasPaths) {
    result += detail::tomlComment(
        "the folders with .m files, except examples, demos, tests, docs, private and hidden ones");
    result += assignment("korvan-paths", detail::tomlArray(guesses.korvanPaths));
  }
  if (hasJars) {
    result += detail::tomlComment("the .jar files");
    result += assignment("java-class-paths", detail::tomlArray(guesses.javaClassPaths));
  }
}

void appendApps(const Guesses& guesses, std::string& result) {
  if (guesses.apps.empty()) {
    result += "\n" + missing("no .m files were found in apps", "[[app]]") +
              "# name = \"Viewer\"\n# file = \"apps/viewer.m\"\n";
  }
  for (const GuessedApp& app : guesses.apps) {
    result += "\n" + detail::tomlComment("a .m file in apps") + "[[app]]\n";
    result += fromSource("the file's name", "name", app.name);
    result += assignment("file", detail::tomlString(app.file));
  }
}

void appendExample(const GuessedExample& example, std::string& result) {
  result += "\n[[category.example]]\n";
  result += fromSource("the file's name", "name", example.name);
  result += assignment("main", detail::tomlString(example.main));
  if (example.thumbnail.empty()) return;
  result += fromSource("the image of the same name", "thumbnail", example.thumbnail);
}

void appendCategories(const Guesses& guesses, std::string& result) {
  for (const GuessedCategory& category : guesses.categories) {
    result += "\n[[category]]\n";
    result += fromSource("the .m files of " + category.folder, "name", category.name);
    for (const GuessedExample& example : category.examples) appendExample(example, result);
  }
}

void appendRevisions(const Guesses& guesses, std::string& result) {
  const GuessedText& changelog = guesses.changelog;
  if (!changelog.fault.empty()) {
    result += "\n" + detail::tomlComment(changelog.path + " was not read: " + changelog.fault);
  }
  for (const GuessedRevision& revision : guesses.revisions) {
    result += "\n" + detail::tomlComment("a heading of " + changelog.path) + "[[revision]]\n";
    result += assignment("version", detail::tomlString(revision.version));
    if (!revision.date.empty()) result += assignment("date", detail::tomlString(revision.date));
    if (revision.description.empty()) continue;
    result += assignment("description", detail::tomlBlock(revision.description));
  }
}

void appendRemarks(const Guesses& guesses, std::string& result) {
  if (guesses.remarks.empty()) return;
  result += "\n# Skipped:\n";
  for (const std::string& remark : guesses.remarks) result += detail::tomlComment(remark);
}

}  // namespace

std::string manifestText(const Guesses& guesses) {
  std::string result = std::string("#:schema ") + kManifestSchemaId + "\n\n" + std::string(kHead);
  appendPackage(guesses, result);
  appendLicense(guesses, result);
  appendConfiguration(guesses, result);
  appendApps(guesses, result);
  appendCategories(guesses, result);
  appendRevisions(guesses, result);
  result += kTail;
  appendRemarks(guesses, result);
  return result;
}

}  // namespace addon::project
