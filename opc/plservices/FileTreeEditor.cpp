// SPDX-License-Identifier: MIT
#include "opc/plservices/FileTreeEditor.h"

#include <utility>

#include "opc/Exception.h"
#include "opc/plservices/FileContentTypes.h"
#include "opc/plservices/FileSystemManager.h"
#include "opc/plservices/TreePath.h"

namespace opc::plservices {
namespace {

class TextOutputStream final : public OutputStream {
 public:
  void write(const unsigned char* data, std::size_t size) override {
    text.append(reinterpret_cast<const char*>(data), size);
  }
  std::string text;
};

class TextInputStream final : public InputStream {
 public:
  explicit TextInputStream(std::string text)
      : text_(std::move(text)),
        stream_(reinterpret_cast<const unsigned char*>(text_.data()), text_.size()) {}
  std::size_t read(unsigned char* buffer, std::size_t size) override {
    return stream_.read(buffer, size);
  }
  bool isEnd() override { return stream_.isEnd(); }

 private:
  std::string text_;
  MemoryInputStream stream_;
};

// Writes the table as it stands when the package is committed: writing it at every change would
// take time that grows with the square of the changes.
class TableSource final : public interfaces::IContentSource {
 public:
  explicit TableSource(std::shared_ptr<const LoadedFileTree> tree) : tree_(std::move(tree)) {}

  std::unique_ptr<InputStream> getInputStream() override {
    TextOutputStream stream;
    tree_->table().write(stream);
    return std::make_unique<TextInputStream>(std::move(stream.text));
  }
  std::uint64_t size() const override { return tree_->tableSize; }
  std::string description() const override { return "table of the file tree"; }

 private:
  std::shared_ptr<const LoadedFileTree> tree_;
};

model::StandardPartInfo partInfoOf(const FileContentSource& source) {
  model::StandardPartInfo info(interfaces::CompressionType::Normal, source.size());
  info.modified = source.modified();
  info.executable = source.executable();
  return info;
}

}  // namespace

FileTreeEditor::FileTreeEditor(model::Package& package, FileTreePart part,
                               std::shared_ptr<LoadedFileTree> tree)
    : package_(package), part_(std::move(part)), tree_(std::move(tree)) {}

FileTree::Reach FileTreeEditor::requireFree(std::string_view path) const {
  const FileTree::Reach reach = tree_->nodes.reach(path);
  if (reach.rest.empty()) throw FileSystemEntryAlreadyExists(path);
  if (!tree_->nodes.isFile(reach.node)) return reach;
  throw Exception(ErrorCode::InvalidArgument, "cannot add '" + std::string(path) + "': '" +
                                                  tree_->nodes.path(reach.node) + "' is a file");
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
  if (!inTable) return change;
  const std::uint64_t size = FileTreeTable::entrySize(path);
  if (size == 0 || change.size + size > FileTreeTable::kMaxSize) {
    throw Exception(
        ErrorCode::TooLarge,
        "cannot add '" + std::string(path) +
            "': " + (size == 0 ? "the path is too long" : "the table of the file tree is full"));
  }
  change.size += size;
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

NodeId FileTreeEditor::addFile(std::unique_ptr<FileContentSource> source, std::string_view path) {
  path = requireTreePath(path);
  FileTree::Reach reach = requireFree(path);
  const TreePartNames::Choice choice = names_.choose(package_, path);
  const TableChange change = changeOf(reach.node, path, false, choice.madeUp);

  const model::StandardPartInfo info = partInfoOf(*source);
  const auto type = model::ContentType::fromAscii(fileContentType(extensionOf(path)));
  const model::PartId part = package_.createPart(choice.name, type, info, std::move(source));
  try {
    storeTable(change);
  } catch (const Exception&) {
    package_.deletePart(choice.name);
    throw;
  }
  const NodeId folder = insertFolders(reach);
  const NodeId node = tree_->nodes.addFile(folder, reach.rest, part);
  if (choice.madeUp) tree_->tableFiles.push_back({node, choice.name.canonical()});
  return node;
}

NodeId FileTreeEditor::addFolder(std::string_view path) {
  path = requireTreePath(path);
  FileTree::Reach reach = requireFree(path);
  storeTable(changeOf(reach.node, path, true, true));
  const NodeId folder = insertFolders(reach);
  return tree_->nodes.addFolder(folder, reach.rest);
}

}  // namespace opc::plservices
