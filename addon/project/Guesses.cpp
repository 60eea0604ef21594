// SPDX-License-Identifier: MIT
#include "addon/project/Guesses.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/ImageSignature.h"
#include "addon/project/PlainText.h"
#include "addon/project/detail/LicenseGuess.h"
#include "addon/project/detail/ReadmeGuess.h"
#include "opc/Streams.h"
#include "opc/Text.h"

namespace addon::project {

namespace {

using Words = std::span<const std::string_view>;

constexpr std::size_t kMaxTextSize = std::size_t{4} << 20;
constexpr std::array<std::string_view, 6> kImageExtensions{"png", "jpg", "jpeg",
                                                           "gif", "bmp", "tiff"};
constexpr std::array<std::string_view, 2> kExampleFolders{"examples", "demos"};
constexpr std::array<std::string_view, 3> kOtherFolders{"tests", "docs", "private"};

bool isOneOf(std::string_view word, Words words) {
  return std::find(words.begin(), words.end(), opc::toLowerAscii(word)) != words.end();
}

std::string_view folderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? std::string_view{} : path.substr(0, slash);
}

std::string_view fileOf(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

/// The text after the last dot; "" if there is none, or only a leading one.
std::string_view extensionOf(std::string_view path) {
  const std::string_view file = fileOf(path);
  const std::size_t dot = file.rfind('.');
  return dot == file.npos || dot == 0 ? std::string_view{} : file.substr(dot + 1);
}

std::string_view withoutExtension(std::string_view path) {
  const std::string_view extension = extensionOf(path);
  return extension.empty() ? path : path.substr(0, path.size() - extension.size() - 1);
}

bool isCode(std::string_view path) {
  return extensionOf(path) == "m";
}

/// Whether a folder above the file has such a name.
template <typename Predicate>
bool liesInFolder(std::string_view path, Predicate isSuch) {
  for (std::string_view folder = folderOf(path); !folder.empty(); folder = folderOf(folder)) {
    if (isSuch(fileOf(folder))) return true;
  }
  return false;
}

bool liesAmongExamples(std::string_view path) {
  return liesInFolder(path, [](std::string_view name) { return isOneOf(name, kExampleFolders); });
}

/// Whether the file is for developers of the add-on rather than for its users.
bool liesApart(std::string_view path) {
  return liesInFolder(path, [](std::string_view name) {
    return name.starts_with('.') || isOneOf(name, kOtherFolders);
  });
}

std::string_view topOf(std::string_view path) {
  return path.substr(0, path.find('/'));
}

// Texts at the top

/// A rank, lower for names that are looked for first: README.md, then README.de.md, then others.
std::size_t rankOf(std::string_view file, std::string_view stem) {
  constexpr std::array<std::string_view, 6> kEnds{"", ".md", ".txt", ".markdown", ".rst", ".adoc"};
  const std::string end = opc::toLowerAscii(file.substr(stem.size()));
  return static_cast<std::size_t>(std::find(kEnds.begin(), kEnds.end(), end) - kEnds.begin());
}

/// "LICENSE-MIT" and "license.txt" begin with "LICENSE", "licensed.txt" does not.
bool isNamed(std::string_view file, std::string_view stem) {
  if (!startsWithWord(file, stem) || isCode(file)) return false;
  return file.size() == stem.size() || std::string_view(".-_").find(file[stem.size()]) != file.npos;
}

std::vector<std::string> filesNamed(const ProjectFolder& folder,
                                    std::initializer_list<std::string_view> stems) {
  std::vector<std::string> found;
  for (const std::string_view stem : stems) {
    const auto first = static_cast<std::ptrdiff_t>(found.size());
    for (const std::string& path : folder.files()) {
      if (path.find('/') == path.npos && isNamed(path, stem)) found.push_back(path);
    }
    std::stable_sort(found.begin() + first, found.end(),
                     [&](const std::string& a, const std::string& b) {
                       return rankOf(a, stem) < rankOf(b, stem);
                     });
  }
  return found;
}

std::string faultOf(const std::optional<std::string>& content) {
  if (!content) return "it cannot be read, or is larger than 4 MiB";
  // Old licenses have form feeds between their pages.
  std::string text = *content;
  std::replace(text.begin(), text.end(), '\f', '\n');
  return manifestTextFault(text);
}

/// Chooses the first file that a manifest can use, or else the first one, and reads it to
/// `content`.
GuessedText chooseText(const ProjectFolder& folder, std::vector<std::string> paths,
                       std::string& content) {
  GuessedText chosen;
  for (const std::string& path : paths) {
    std::optional<std::string> text = folder.read(path, kMaxTextSize);
    const std::string fault = faultOf(text);
    if (!fault.empty() && !chosen.path.empty()) continue;
    chosen.path = path;
    chosen.fault = fault;
    content = std::move(text).value_or("");
    if (fault.empty()) break;
  }
  std::erase(paths, chosen.path);
  chosen.others = std::move(paths);
  return chosen;
}

void guessTexts(const ProjectFolder& folder, Guesses& guesses) {
  std::string text;
  guesses.readme = chooseText(folder, filesNamed(folder, {"README"}), text);
  if (guesses.readme.fault.empty()) {
    const detail::ReadmeFacts facts = detail::readmeFacts(text);
    guesses.summary = {facts.summary, guesses.readme.path};
    if (!facts.title.empty()) guesses.name = {facts.title, "the title of " + guesses.readme.path};
  }

  text.clear();
  guesses.license = chooseText(folder, filesNamed(folder, {"LICENSE", "LICENCE", "COPYING"}), text);
  guesses.licenseType = detail::licenseTypeOf(text);

  text.clear();
  guesses.changelog = chooseText(folder, filesNamed(folder, {"CHANGELOG"}), text);
  if (guesses.changelog.fault.empty()) guesses.revisions = revisionsOf(text);
}

// Properties

Guess guessName(const ProjectFolder& folder) {
  const std::string_view name = fileOf(folder.path());
  const std::string line = opc::isUtf8(name) ? asOneLine(name) : "";
  if (line.empty()) return {"Untitled", "the folder's name cannot be used"};
  return {line, "the folder's name"};
}

std::string newestVersionOf(const std::vector<GuessedRevision>& guessed) {
  std::vector<packaging::AddonRevision> revisions;
  for (const GuessedRevision& one : guessed) {
    revisions.emplace_back().date = opc::fromUtf8(one.date);
    revisions.back().version = opc::fromUtf8(one.version);
  }
  std::vector<std::string> newest;
  for (const auto* one : newestOf(revisions)) newest.push_back(opc::toUtf8(one->version));
  const std::string highest = newestVersionTag({newest.begin(), newest.end()});
  return highest.empty() ? newest.front() : highest;
}

/// The revisions are known.
Guess guessVersion(const GitFacts& git, const Guesses& guesses) {
  if (!git.version.empty()) {
    const std::string where = git.isBelowTop ? ", in the repository that contains the folder" : "";
    return {git.version, "the newest git tag, " + git.tag + where};
  }
  if (guesses.revisions.empty()) return {"1.0", ""};
  return {newestVersionOf(guesses.revisions), "the newest heading of " + guesses.changelog.path};
}

void guessAuthor(const GitFacts& git, Guesses& guesses) {
  if (!git.userName.empty()) guesses.author = {git.userName, "git's user.name"};
  if (!git.userEmail.empty()) guesses.contact = {git.userEmail, "git's user.email"};
}

/// At the top, then in images/, then in art/, in the order of the extensions.
std::vector<std::string> filesNamedScreenshot(const ProjectFolder& folder) {
  constexpr std::array<std::string_view, 3> kFolders{"", "images", "art"};
  const auto indexIn = [](const auto& words, std::string_view word) {
    return static_cast<std::size_t>(std::find(words.begin(), words.end(), opc::toLowerAscii(word)) -
                                    words.begin());
  };
  const auto rank = [&](std::string_view path) {
    return std::pair{indexIn(kFolders, folderOf(path)),
                     indexIn(kImageExtensions, extensionOf(path))};
  };
  std::vector<std::string> found;
  for (const std::string& path : folder.files()) {
    if (opc::toLowerAscii(withoutExtension(fileOf(path))) != "screenshot") continue;
    const auto [place, extension] = rank(path);
    if (place == kFolders.size() || extension == kImageExtensions.size()) continue;
    found.push_back(path);
  }
  std::stable_sort(found.begin(), found.end(),
                   [&](const std::string& a, const std::string& b) { return rank(a) < rank(b); });
  return found;
}

/// Why 'kraddon build' would refuse it; "" if it would not.
std::string screenshotFaultOf(const ProjectFolder& folder, const std::string& path) {
  const auto start = folder.readStart(path, packaging::kImageSignatureSize);
  if (!start) return "it cannot be read";
  opc::MemoryInputStream stream(*start);
  return packaging::screenshotFault(path, stream);
}

void guessScreenshot(const ProjectFolder& folder, Guesses& guesses) {
  for (const std::string& path : filesNamedScreenshot(folder)) {
    const std::string fault = screenshotFaultOf(folder, path);
    if (fault.empty()) {
      guesses.screenshot = path;
      return;
    }
    guesses.screenshotFaults.emplace_back(path).append(" cannot be the screenshot: ").append(fault);
  }
}

// Lists

void guessPaths(const ProjectFolder& folder, Guesses& guesses) {
  std::set<std::string_view> folders;  // "" is the top and comes first
  for (const std::string& path : folder.files()) {
    if (extensionOf(path) == "jar") guesses.javaClassPaths.push_back(path);
    if (!isCode(path) || liesAmongExamples(path) || liesApart(path)) continue;
    folders.insert(folderOf(path));
  }
  for (const std::string_view one : folders)
    guesses.korvanPaths.emplace_back(one.empty() ? "." : one);
}

void guessApps(const ProjectFolder& folder, Guesses& guesses) {
  for (const std::string& path : folder.files()) {
    if (!isCode(path) || folderOf(path) != "apps") continue;
    guesses.apps.push_back({std::string(withoutExtension(fileOf(path))), path});
  }
}

std::string categoryName(std::string_view folder) {
  const std::string_view top = topOf(folder);
  if (folder.size() > top.size()) return std::string(folder.substr(top.size() + 1));
  std::string name(folder);
  if (name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - ('a' - 'A'));
  return name;
}

std::string imageBeside(const std::string& path, const std::unordered_set<std::string>& images) {
  const std::string stem(withoutExtension(path));
  for (const std::string_view extension : kImageExtensions) {
    std::string image = stem + "." + std::string(extension);
    if (images.contains(image)) return image;
  }
  return {};
}

std::unordered_set<std::string> imagesOf(const ProjectFolder& folder) {
  std::unordered_set<std::string> images;
  for (const std::string& path : folder.files()) {
    if (isOneOf(topOf(path), kExampleFolders) && isOneOf(extensionOf(path), kImageExtensions)) {
      images.insert(path);
    }
  }
  return images;
}

void guessExamples(const ProjectFolder& folder, Guesses& guesses) {
  const std::unordered_set<std::string> images = imagesOf(folder);
  std::map<std::string_view, std::size_t> known;
  for (const std::string& path : folder.files()) {
    const std::string_view place = folderOf(path);
    const bool isExample = !place.empty() && isCode(path) && isOneOf(topOf(path), kExampleFolders);
    if (!isExample || liesApart(path)) continue;
    const auto [at, isNew] = known.emplace(place, guesses.categories.size());
    if (isNew) guesses.categories.push_back({categoryName(place), std::string(place), {}});
    guesses.categories[at->second].examples.push_back(
        {std::string(withoutExtension(fileOf(path))), path, imageBeside(path, images)});
  }
  std::stable_sort(
      guesses.categories.begin(), guesses.categories.end(),
      [](const GuessedCategory& a, const GuessedCategory& b) { return a.folder < b.folder; });
}

}  // namespace

Guesses guessFrom(const ProjectFolder& folder, const GitFacts& git) {
  Guesses guesses;
  guesses.name = guessName(folder);
  guessTexts(folder, guesses);
  guesses.version = guessVersion(git, guesses);
  guessAuthor(git, guesses);
  guessScreenshot(folder, guesses);
  guessPaths(folder, guesses);
  guessApps(folder, guesses);
  guessExamples(folder, guesses);
  guesses.remarks = folder.remarks();
  return guesses;
}

}  // namespace addon::project
