// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/FileTreeEditor.h"

#include <cerrno>
#include <utility>

#include "opc/ErrnoError.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/XercesHelper.h"
#include "opc/plservices/FileSystemEntryAlreadyExists.h"
#include "opc/plservices/TreePath.h"
#include "opc/plservices/detail/FileContentTypes.h"

namespace opc::plservices::detail {
namespace {

// Writes the table as it stands when the package is committed: writing it at every change would
// take time that grows with the square of the changes.
class TableSource final : public interfaces::IContentSource {
 public:
  explicit TableSource(std::shared_ptr<const LoadedFileTree> tree) : tree_(std::move(tree)) {}

  std::unique_ptr<InputStream> getInputStream() override {
    const std::uint64_t nodes = tree_->tableNodes();
    if (nodes > kMaxTableNodes) {
      throw Exception(ErrorCode::TooLarge,
                      "cannot write the table of the file tree: it makes " + std::to_string(nodes) +
                          " files and folders, more than " + std::to_string(kMaxTableNodes));
    }
    TextOutputStream stream;
    tree_->table().write(stream);
    if (stream.text.size() > model::XercesHelper::kMaxDocumentSize) {
      throw Exception(ErrorCode::TooLarge,
                      "cannot write the table of the file tree: it is too long to be read");
    }
    return std::make_unique<TextInputStream>(std::move(stream.text));
  }
  std::uint64_t size() const override { return tree_->tableSize; }
  // Readers take the size of the package for a limit of what the table may make.
  std::uint64_t leastPackedSize() const override {
    const std::uint64_t nodes = tree_->tableNodes();
    return nodes > kFreeTableNodes ? nodes - kFreeTableNodes : 0;
  }
  std::string description() const override { return "table of the file tree"; }

 private:
  std::shared_ptr<const LoadedFileTree> tree_;
};

/// The size of a table that gets one more entry. Throws Exception when that would not be read.
std::uint64_t sizeWith(std::uint64_t tableSize, std::string_view path, const char* verb) {
  const std::uint64_t size = FileTreeTable::entrySize(path);
  if (size != 0 && tableSize + size <= FileTreeTable::kMaxSize) return tableSize + size;
  throw Exception(ErrorCode::TooLarge,
                  std::string("cannot ") + verb + " '" + std::string(path) + "': " +
                      (size == 0 ? "the path is too long" : "the table of the file tree is full"));
}

bool haveSameExtension(std::string_view a, std::string_view b) {
  return toLowerAscii(extensionOf(a)) == toLowerAscii(extensionOf(b));
}

/// A free path beside `path`. It has the same extension, so that files keep their content types.
std::string freePathBeside(FileTree& nodes, std::string path) {
  const std::size_t name = path.size() - lastComponent(path).size();
  const std::size_t dot = path.rfind('.');
  const std::size_t end = dot == std::string::npos || dot <= name ? path.size() : dot;
  do {
    path.insert(end, 1, '~');
  } while (nodes.find(path) != FileTree::kNone);
  return path;
}

}  // namespace

FileTreeEditor::FileTreeEditor(model::Package& package, FileTreePart part,
                               std::shared_ptr<LoadedFileTree> tree)
    : package_(package), part_(std::move(part)), tree_(std::move(tree)) {}

FileTree::Reach FileTreeEditor::requireFree(std::string_view path) const {
  const FileTree::Reach reach = tree_->nodes.reach(path);
  if (reach.rest.empty()) throw FileSystemEntryAlreadyExists(path);
  if (!tree_->nodes.isFile(reach.node)) return reach;
  throw ErrnoError(
      ErrorCode::InvalidArgument,
      sentence("cannot add", path, "'" + tree_->nodes.path(reach.node) + "' is a file"), ENOTDIR);
}

FileTreeEditor::TableChange FileTreeEditor::changeOf(NodeId folder, std::string_view path,
                                                     bool isFolder, bool inTable) const {
  const bool wasEmpty = tree_->nodes.isEmptyFolder(folder);
  TableChange change;
  change.touches = wasEmpty || inTable;
  change.emptyFolders = tree_->emptyFolders - (wasEmpty ? 1 : 0) + (isFolder ? 1 : 0);
  change.needsTable = change.emptyFolders != 0 || !tree_->tableFiles.empty() || inTable;
  change.size = tree_->tableSize;
  if (wasEmpty) change.size -= FileTreeTable::entrySize(tree_->nodes.path(folder));
  if (inTable) change.size = sizeWith(change.size, path, "add");
  return change;
}

void FileTreeEditor::storeTable(const TableChange& change) {
  if (change.touches && !change.needsTable) part_.drop();
  if (change.touches && change.needsTable && !part_.isReplaced()) {
    part_.replace(std::make_unique<TableSource>(tree_));
  }
  tree_->emptyFolders = change.emptyFolders;
  tree_->tableSize = change.size;
}

// Makes all of what is left of the path but its last component, which stays in `reach`.
NodeId FileTreeEditor::insertFolders(FileTree::Reach& reach) {
  for (std::size_t slash = reach.rest.find('/'); slash != std::string_view::npos;
       slash = reach.rest.find('/')) {
    reach.node = tree_->nodes.addFolder(reach.node, reach.rest.substr(0, slash));
    reach.rest.remove_prefix(slash + 1);
  }
  return reach.node;
}

template <typename CreatePart>
NodeId FileTreeEditor::addFileWith(const CreatePart& createPart, std::string_view path) {
  path = requireTreePath(path);
  FileTree::Reach reach = requireFree(path);
  const TreePartNames::Choice choice = names_.choose(package_, path);
  const TableChange change = changeOf(reach.node, path, false, choice.madeUp);

  const auto type = model::ContentType::fromAscii(fileContentType(extensionOf(path)));
  const model::PartId part = createPart(choice.name, type);
  try {
    storeTable(change);
  } catch (const Exception&) {
    package_.deletePart(choice.name);
    throw;
  }
  const NodeId folder = insertFolders(reach);
  const NodeId node = tree_->nodes.addFile(folder, reach.rest, part);
  if (choice.madeUp) tree_->tableFiles.emplace(node, choice.name.canonical());
  return node;
}

NodeId FileTreeEditor::addFile(std::unique_ptr<interfaces::IContentSource> source,
                               const model::StandardPartInfo& info, std::string_view path) {
  const auto create = [&](const model::PartName& name, const model::ContentType& type) {
    return package_.createPart(name, type, info, std::move(source));
  };
  return addFileWith(create, path);
}

void FileTreeEditor::copyFile(NodeId file, std::string_view path) {
  const model::PartId old = tree_->nodes.part(file);
  const model::PartInfo known = package_.partInfo(old);
  model::StandardPartInfo info(interfaces::CompressionType::Normal, known.size);
  info.modified = known.modified;
  info.executable = known.executable;
  const bool keepsType = haveSameExtension(path, tree_->nodes.name(file));
  const auto create = [&](const model::PartName& name, const model::ContentType& type) {
    const auto part =
        package_.createPart(name, keepsType ? package_.contentTypeOf(old) : type, info);
    const std::unique_ptr<InputStream> from = package_.openPart(old);
    const std::unique_ptr<OutputStream> to = part->getOutputStream();
    std::vector<unsigned char> buffer(std::size_t{64} << 10);
    while (const std::size_t size = from->read(buffer.data(), buffer.size())) {
      to->write(buffer.data(), size);
    }
    return part->id();
  };
  addFileWith(create, path);
}

void FileTreeEditor::copyTo(NodeId top, const std::string& path) {
  const std::size_t prefix = tree_->nodes.path(top).size();
  std::vector<std::pair<NodeId, std::string>> copies;  // the tree changes below
  TreeWalk walk(tree_->nodes, top);
  while (walk.next())
    copies.emplace_back(walk.node(), path + std::string(walk.path().substr(prefix)));
  for (const auto& [node, to] : copies) {
    if (tree_->nodes.isFile(node)) {
      copyFile(node, to);
    } else {
      addFolder(to);
    }
  }
}

void FileTreeEditor::checkMove(NodeId node, std::string_view path) const {
  const std::string to(requireTreePath(path));
  const std::string from = tree_->nodes.path(node);
  if (to.starts_with(from + "/")) {
    throw Exception(ErrorCode::InvalidArgument,
                    "cannot move '" + from + "': '" + to + "' lies below it");
  }
  requireFree(to);
}

void FileTreeEditor::move(NodeId node, std::string_view path) {
  checkMove(node, path);
  const std::string to(requireTreePath(path));
  const std::string from = tree_->nodes.path(node);
  // Part names do not differ by case, so that the old ones must be gone before.
  if (toLowerAscii(to) == toLowerAscii(from)) {
    const std::string between = freePathBeside(tree_->nodes, to);
    move(node, between);
    node = tree_->nodes.find(between);
  }
  copyTo(node, to);
  remove(node);
}

NodeId FileTreeEditor::addFolder(std::string_view path) {
  path = requireTreePath(path);
  FileTree::Reach reach = requireFree(path);
  storeTable(changeOf(reach.node, path, true, true));
  const NodeId folder = insertFolders(reach);
  return tree_->nodes.addFolder(folder, reach.rest);
}

void FileTreeEditor::replaceFile(NodeId file, std::unique_ptr<interfaces::IContentSource> source,
                                 const model::StandardPartInfo& info) {
  const model::PartId old = tree_->nodes.part(file);
  const model::PartName name = model::PartName::fromItemName(package_.itemNameOf(old));
  const model::ContentType type = package_.contentTypeOf(old);
  package_.deletePart(name);
  tree_->nodes.setPart(file, package_.createPart(name, type, info, std::move(source)));
}

FileTreeEditor::TableChange FileTreeEditor::changeOfRemoval(
    NodeId node, const std::vector<NodeId>& subtree) const {
  const FileTree& nodes = tree_->nodes;
  TableChange change;
  // The package gets smaller: what its size allowed the table to make may be too much then.
  change.touches = tree_->nodesOfStoredTable > kFreeTableNodes;
  change.emptyFolders = tree_->emptyFolders;
  change.size = tree_->tableSize;
  std::size_t tableFiles = tree_->tableFiles.size();
  for (const NodeId gone : subtree) {
    const bool isTableFile = nodes.isFile(gone) && tree_->tableFiles.contains(gone);
    if (!isTableFile && !nodes.isEmptyFolder(gone)) continue;
    change.touches = true;
    change.size -= FileTreeTable::entrySize(nodes.path(gone));
    --(isTableFile ? tableFiles : change.emptyFolders);
  }
  const NodeId folder = nodes.parent(node);
  if (folder != FileTree::kRoot && nodes.childCount(folder) == 1) {
    change.touches = true;
    ++change.emptyFolders;
    change.size = sizeWith(change.size, nodes.path(folder), "keep the empty folder");
  }
  change.needsTable = change.emptyFolders != 0 || tableFiles != 0;
  return change;
}

void FileTreeEditor::remove(NodeId node) {
  const std::vector<NodeId> subtree = tree_->nodes.subtree(node);
  storeTable(changeOfRemoval(node, subtree));
  for (const NodeId gone : subtree) {
    if (!tree_->nodes.isFile(gone)) continue;
    const std::string_view itemName = package_.itemNameOf(tree_->nodes.part(gone));
    package_.deletePart(model::PartName::fromItemName(itemName));
    tree_->tableFiles.erase(gone);
  }
  tree_->nodes.remove(node);
}

}  // namespace opc::plservices::detail
