// SPDX-License-Identifier: MIT
#include "tool/Selection.h"

#include <fmt/format.h>

#include <algorithm>
#include <unordered_map>

#include "addon/project/Patterns.h"
#include "tool/Errors.h"

namespace tool {

using addon::packaging::AddonPackage;
using opc::plservices::FileSystemEntry;

namespace {

Failure isEmpty() {
  return Failure(sentence("cannot find", "", "the path is empty"), "'/' stands for everything");
}

Failure namesNothing(const std::string& operand,
                     const char* holders = "the package holds nothing") {
  return Failure(sentence("cannot find", operand, fmt::format("{} of that name", holders)));
}

/// Calls `visit(path, isFolder)` for every folder above, from the top down, and then for the item.
template <typename Visit>
void visitLevels(std::string_view path, bool isFolder, Visit visit) {
  for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
       slash = path.find('/', slash + 1)) {
    visit(path.substr(0, slash), true);
  }
  visit(path, isFolder);
}

class LiteralPaths {
 public:
  explicit LiteralPaths(const std::vector<std::string>& operands) : operands_(operands) {
    for (const std::string& operand : operands) {
      // An unset variable of a script must not stand for everything.
      if (operand.empty()) throw isEmpty();
      isUsed_.emplace(trimSlashes(operand), false);
    }
  }

  bool chooses(const Item& item) {
    bool isChosen = false;
    const auto root = isUsed_.find(std::string_view());
    if (root != isUsed_.end()) isChosen = root->second = true;
    visitLevels(trimSlashes(item.path), item.isFolder(), [&](std::string_view path, bool) {
      const auto found = isUsed_.find(path);
      if (found != isUsed_.end()) isChosen = found->second = true;
    });
    return isChosen;
  }

  /// The first one that named nothing, or null.
  const std::string* unused() const {
    for (const std::string& operand : operands_) {
      const std::string_view path = trimSlashes(operand);
      // An empty package still has a root.
      if (!path.empty() && !isUsed_.at(path)) return &operand;
    }
    return nullptr;
  }

 private:
  const std::vector<std::string>& operands_;
  std::unordered_map<std::string_view, bool> isUsed_;
};

class GlobPaths {
 public:
  explicit GlobPaths(const std::vector<std::string>& operands) : isUsed_(operands.size(), false) {
    for (const std::string& operand : operands) patterns_.emplace_back(operand);
  }

  bool chooses(const Item& item) {
    bool isChosen = false;
    visitLevels(trimSlashes(item.path), item.isFolder(),
                [&](std::string_view path, bool isFolder) { apply(path, isFolder, isChosen); });
    return isChosen;
  }

  /// The first one that matched nothing, or null.
  const std::string* unused() const {
    const auto unused = std::find(isUsed_.begin(), isUsed_.end(), false);
    if (unused == isUsed_.end()) return nullptr;
    return &patterns_[static_cast<std::size_t>(unused - isUsed_.begin())].text();
  }

 private:
  void apply(std::string_view path, bool isFolder, bool& isChosen) {
    for (std::size_t i = 0; i < patterns_.size(); ++i) {
      if (!patterns_[i].matches(path, isFolder)) continue;
      isUsed_[i] = true;
      isChosen = !patterns_[i].takesBack();
    }
  }

  std::vector<addon::project::Pattern> patterns_;
  std::vector<bool> isUsed_;
};

template <typename Chooser>
void keepChosen(std::vector<Item>& items, Chooser& chooser) {
  std::erase_if(items, [&](const Item& item) { return !chooser.chooses(item); });
}

template <typename Chooser>
std::vector<Item> chooseWith(std::vector<Item> items, Chooser chooser) {
  keepChosen(items, chooser);
  if (const std::string* operand = chooser.unused()) throw namesNothing(*operand);
  return items;
}

template <typename Chooser>
void chooseInBothWith(std::vector<Item>& a, std::vector<Item>& b, Chooser chooser) {
  keepChosen(a, chooser);
  keepChosen(b, chooser);
  if (const std::string* operand = chooser.unused())
    throw namesNothing(*operand, "neither of the two holds anything");
}

}  // namespace

std::string_view trimSlashes(std::string_view path) {
  while (path.starts_with('/')) path.remove_prefix(1);
  while (path.ends_with('/')) path.remove_suffix(1);
  return path;
}

std::vector<FileSystemEntry> findEntries(AddonPackage& package,
                                         const std::vector<std::string>& operands) {
  auto& tree = package.fileSystem();
  std::vector<FileSystemEntry> entries;
  for (const std::string& operand : operands) {
    if (operand.empty()) throw isEmpty();
    const auto entry = tree.find(trimSlashes(operand));
    if (entry == nullptr) throw namesNothing(operand);
    entries.push_back(*entry);
  }
  return entries;
}

std::vector<Item> choose(std::vector<Item> items, const std::vector<std::string>& operands,
                         bool areGlobs) {
  if (operands.empty()) return items;
  if (areGlobs) return chooseWith(std::move(items), GlobPaths(operands));
  return chooseWith(std::move(items), LiteralPaths(operands));
}

void chooseInBoth(std::vector<Item>& a, std::vector<Item>& b,
                  const std::vector<std::string>& operands, bool areGlobs) {
  if (operands.empty()) return;
  if (areGlobs) {
    chooseInBothWith(a, b, GlobPaths(operands));
  } else {
    chooseInBothWith(a, b, LiteralPaths(operands));
  }
}

}  // namespace tool
