// SPDX-License-Identifier: MIT
#include "addon/checks/detail/CaselessTree.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "opc/Text.h"

namespace addon::checks::detail {

using opc::plservices::FileSystemManager;
using opc::plservices::FileTree;
using opc::plservices::NodeId;

std::string foldCase(std::string_view text) {
  if (opc::isAscii(text)) return opc::toLowerAscii(text);
  if (!opc::isUtf8(text)) return std::string(text);
  const auto original = icu::UnicodeString::fromUTF8(text);
  icu::UnicodeString folded;
  for (std::int32_t at = 0; at < original.length(); at = original.moveIndex32(at, 1)) {
    folded.append(u_foldCase(original.char32At(at), U_FOLD_CASE_DEFAULT));
  }
  std::string result;
  return folded.toUTF8String(result);
}

CaselessTree::CaselessTree(FileSystemManager& files, const Visit& visit) {
  const Entry root = files.getRoot();
  entries_.push_back(root);
  const auto addChildren = [&](const Entry& folder, NodeId node) {
    const std::vector<Entry> children = files.getChildren(folder);
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
      waiting_.push_back({*child, node});
    }
  };
  addChildren(root, FileTree::kRoot);
  while (!waiting_.empty()) {
    const Waiting next = waiting_.back();
    waiting_.pop_back();
    const NodeId node = add(next.entry, next.folder, visit);
    if (!next.entry.isFile()) addChildren(next.entry, node);
  }
}

NodeId CaselessTree::add(const Entry& entry, NodeId folder, const Visit& visit) {
  const std::string name = foldCase(entry.name());
  const NodeId same = nodes_.findChild(folder, name);
  if (visit) visit(entry, same == FileTree::kNone ? nullptr : &entries_[same]);
  if (same != FileTree::kNone) return same;
  entries_.push_back(entry);
  return nodes_.addFolder(folder, name);
}

std::optional<std::string> CaselessTree::find(std::string_view path) const {
  const NodeId node = nodes_.find(foldCase(path));
  if (node == FileTree::kNone || node == FileTree::kRoot) return std::nullopt;
  return entries_[node].path();
}

}  // namespace addon::checks::detail
