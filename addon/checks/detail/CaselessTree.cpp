// SPDX-License-Identifier: MIT
#include "addon/checks/detail/CaselessTree.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>

#include "opc/KeyedHash.h"
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

CaselessTree::CaselessTree(FileSystemManager& files, const Visit& visit)
    : files_(files), tree_(files.nodes()), first_(tree_.size(), FileTree::kRoot) {
  index_.reserve(tree_.size());
  NodeId node = tree_.firstChild(FileTree::kRoot);
  while (node != FileTree::kNone) {
    add(node, visit);
    NodeId next = tree_.hasChildren(node) ? tree_.firstChild(node) : FileTree::kNone;
    while (next == FileTree::kNone && node != FileTree::kRoot) {
      next = tree_.nextSibling(node);
      node = tree_.parent(node);
    }
    node = next;
  }
}

void CaselessTree::add(NodeId node, const Visit& visit) {
  const NodeId folder = first_[tree_.parent(node)];
  const std::string name = foldCase(tree_.name(node));
  const NodeId same = findIn(folder, name);
  first_[node] = same == FileTree::kNone ? node : same;
  if (same == FileTree::kNone) index_.insert(opc::keyedHash(name, folder), node);
  if (!visit) return;
  const Entry entry = files_.entryOf(node);
  if (same == FileTree::kNone) return visit(entry, nullptr);
  const Entry other = files_.entryOf(same);
  visit(entry, &other);
}

NodeId CaselessTree::findIn(NodeId folder, std::string_view foldedName) const {
  const NodeId* found = index_.find(opc::keyedHash(foldedName, folder), [&](NodeId node) {
    return first_[tree_.parent(node)] == folder && foldCase(tree_.name(node)) == foldedName;
  });
  return found == nullptr ? FileTree::kNone : *found;
}

std::optional<std::string> CaselessTree::find(std::string_view path) const {
  const std::string folded = foldCase(path);
  std::string_view rest = folded;
  NodeId node = FileTree::kRoot;
  while (!rest.empty() && node != FileTree::kNone) {
    const std::size_t end = std::min(rest.find('/'), rest.size());
    node = findIn(node, rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  if (node == FileTree::kNone || node == FileTree::kRoot) return std::nullopt;
  return tree_.path(node);
}

}  // namespace addon::checks::detail
