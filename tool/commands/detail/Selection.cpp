// SPDX-License-Identifier: MIT
#include "tool/commands/detail/Selection.h"

#include <fmt/format.h>

#include <unordered_map>

#include "addon/build/PatternChoice.h"
#include "text/Lines.h"
#include "tool/process/Errors.h"

namespace tool::commands::detail {

using addon::build::PatternChoice;
using addon::comparison::Item;
using addon::packaging::AddonPackage;
using opc::plservices::FileSystemEntry;

namespace {

process::Failure isEmpty() {
  return process::Failure(process::sentence("cannot find", "", "the path is empty"),
                          "'/' stands for everything");
}

process::Failure namesNothing(const std::string& operand,
                              const char* holders = "the package has nothing") {
  return process::Failure(
      process::sentence("cannot find", operand, fmt::format("{} with that name", holders)));
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

template <typename Chooser>
void keepChosen(std::vector<Item>& items, Chooser& chooser) {
  std::erase_if(items, [&](const Item& item) {
    return !chooser.chooses(text::trimSlashes(item.path), item.isFolder());
  });
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
    throw namesNothing(*operand, "neither of the two has anything");
}

}  // namespace

std::vector<FileSystemEntry> findEntries(AddonPackage& package,
                                         const std::vector<std::string>& operands) {
  auto& tree = package.fileSystem();
  std::vector<FileSystemEntry> entries;
  for (const std::string& operand : operands) {
    if (operand.empty()) throw isEmpty();
    const auto entry = tree.find(text::trimSlashes(operand));
    if (entry == nullptr) throw namesNothing(operand);
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

}  // namespace tool::commands::detail
