// SPDX-License-Identifier: MIT
#include "addon/build/Selection.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <type_traits>
#include <unordered_map>

#include "addon/build/BuildError.h"
#include "addon/build/PatternChoice.h"
#include "text/Lines.h"
#include "text/Suggest.h"

namespace addon::build {

using addon::comparison::Item;
using addon::packaging::AddonPackage;
using opc::sentence;
using opc::plservices::FileSystemEntry;

namespace {

BuildError isEmpty() {
  return BuildError(sentence("cannot find", "", "the path is empty"), "'/' stands for everything");
}

constexpr const char* kPackageHasNothing = "the package has nothing";

BuildError namesNothing(const std::string& operand, const char* holders, const std::string& hint) {
  return BuildError(sentence("cannot find", operand, fmt::format("{} with that name", holders)),
                    hint, ENOENT);
}

/// For a literal path that does not exist.
std::string hintFor(const std::string& operand, const std::vector<std::string_view>& paths) {
  const std::string nearest = text::nearestPath(operand, paths);
  if (!nearest.empty()) return fmt::format("did you mean '{}'?", nearest);
  return {};
}

std::vector<std::string_view> pathsOf(const std::vector<Item>& items) {
  std::vector<std::string_view> paths;
  paths.reserve(items.size());
  for (const Item& item : items) paths.push_back(item.path);
  return paths;
}

class LiteralPaths {
 public:
  explicit LiteralPaths(const std::vector<std::string>& operands) : operands_(operands) {
    for (const std::string& operand : operands) {
      // An unset variable of a script must not stand for everything.
      if (operand.empty()) throw isEmpty();
      isUsed_.emplace(text::trimSlashes(operand), false);
    }
  }

  bool chooses(std::string_view path, bool) {
    bool isChosen = use(std::string_view());
    for (std::size_t slash = path.find('/'); slash != path.npos;
         slash = path.find('/', slash + 1)) {
      isChosen = use(path.substr(0, slash)) || isChosen;
    }
    return use(path) || isChosen;
  }

  /// The first operand that matched nothing, or null.
  const std::string* unused() const {
    for (const std::string& operand : operands_) {
      const std::string_view path = text::trimSlashes(operand);
      // An empty package still has a root.
      if (!path.empty() && !isUsed_.at(path)) return &operand;
    }
    return nullptr;
  }

 private:
  bool use(std::string_view path) {
    const auto found = isUsed_.find(path);
    if (found == isUsed_.end()) return false;
    found->second = true;
    return true;
  }

  const std::vector<std::string>& operands_;
  std::unordered_map<std::string_view, bool> isUsed_;
};

/// Moves the items that are not chosen to the end. Returns where they begin.
template <typename Chooser>
std::vector<Item>::iterator partition(std::vector<Item>& items, Chooser& chooser) {
  return std::stable_partition(items.begin(), items.end(), [&](const Item& item) {
    return chooser.chooses(text::trimSlashes(item.path), item.isFolder());
  });
}

template <typename Chooser>
[[noreturn]] void refuseUnused(const Chooser& chooser, const char* holders,
                               const std::vector<std::string_view>& paths) {
  constexpr bool kIsLiteral = std::is_same_v<Chooser, LiteralPaths>;
  const std::string& operand = *chooser.unused();
  throw namesNothing(operand, holders, kIsLiteral ? hintFor(operand, paths) : std::string());
}

template <typename Chooser>
std::vector<Item> chooseWith(std::vector<Item> items, Chooser chooser) {
  const auto end = partition(items, chooser);
  if (chooser.unused() != nullptr) refuseUnused(chooser, kPackageHasNothing, pathsOf(items));
  items.erase(end, items.end());
  return items;
}

template <typename Chooser>
void chooseInBothWith(std::vector<Item>& a, std::vector<Item>& b, Chooser chooser) {
  const auto endOfA = partition(a, chooser);
  const auto endOfB = partition(b, chooser);
  if (chooser.unused() != nullptr) {
    std::vector<std::string_view> paths = pathsOf(a);
    const std::vector<std::string_view> others = pathsOf(b);
    paths.insert(paths.end(), others.begin(), others.end());
    refuseUnused(chooser, "neither of the two has anything", paths);
  }
  a.erase(endOfA, a.end());
  b.erase(endOfB, b.end());
}

}  // namespace

std::vector<FileSystemEntry> findEntries(AddonPackage& package,
                                         const std::vector<std::string>& operands) {
  auto& tree = package.fileSystem();
  std::vector<FileSystemEntry> entries;
  for (const std::string& operand : operands) {
    if (operand.empty()) throw isEmpty();
    const auto entry = tree.find(text::trimSlashes(operand));
    if (entry == nullptr) {
      const std::vector<Item> items = addon::comparison::readTree(package);
      throw namesNothing(operand, kPackageHasNothing, hintFor(operand, pathsOf(items)));
    }
    entries.push_back(*entry);
  }
  return entries;
}

std::vector<Item> choose(std::vector<Item> items, const std::vector<std::string>& operands,
                         bool areGlobs) {
  if (operands.empty()) return items;
  if (areGlobs) return chooseWith(std::move(items), PatternChoice(operands));
  return chooseWith(std::move(items), LiteralPaths(operands));
}

void chooseInBoth(std::vector<Item>& a, std::vector<Item>& b,
                  const std::vector<std::string>& operands, bool areGlobs) {
  if (operands.empty()) return;
  if (areGlobs) {
    chooseInBothWith(a, b, PatternChoice(operands));
  } else {
    chooseInBothWith(a, b, LiteralPaths(operands));
  }
}

}  // namespace addon::build
