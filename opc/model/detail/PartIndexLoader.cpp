// SPDX-License-Identifier: MIT
// How a PartIndex takes in a directory.
#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/NameKey.h"
#include "opc/model/PartIndex.h"
#include "opc/model/detail/FolderSet.h"

namespace opc::model {

using interfaces::ItemIndex;
using interfaces::ItemKind;

namespace {

std::string quoted(std::string_view itemName) {
  return "'/" + std::string(itemName) + "'";
}

// "" for a name without a slash.
std::string_view folderOf(std::string_view name) {
  const void* slash = ::memrchr(name.data(), '/', name.size());
  if (slash == nullptr) return {};
  return name.substr(0, static_cast<std::size_t>(static_cast<const char*>(slash) - name.data()));
}

}  // namespace

// Fills a PartIndex from a directory, in one pass that costs a name little more than hashing it.
class PartIndex::Loader {
 public:
  Loader(PartIndex& index, const ContentTypes& types, FaultSink& faults)
      : index_(index), types_(types), faults_(faults) {}

  void load() {
    const std::size_t count = index_.physical_.itemCount();
    if (count >= PartIndex::kFirstSequence) {
      throw Exception(ErrorCode::TooLarge, "the directory: too many items");
    }
    index_.roles_.assign(count, ItemRole::Hidden);
    index_.parts_.reserve(count);
    folderHash_ = rootHash();
    folderIsName_ = true;
    std::array<interfaces::ListedItem, 64> items;
    for (ItemIndex first = 0; first < count; first += items.size()) {
      const auto listed = std::span(items).first(std::min(items.size(), count - first));
      index_.physical_.listItems(first, listed);
      for (std::size_t i = 0; i < listed.size(); ++i) addItem(listed[i], first + i);
    }
    leaveFolder();
    addSequences();
    checkDerivedNames();
    checkSources();
  }

 private:
  struct Name {
    std::string_view name;
    std::uint64_t hash = 0;
    PartId part = 0;
  };

  void addItem(const interfaces::ListedItem& listed, ItemIndex item) {
    if (listed.isRemoved) return;
    if (listed.kind != ItemKind::File) return index_.setRole(item, ItemRole::Stray);
    if (folderIsName_ && liesInFolder(listed.name) && isPlainSegment(segmentOf(listed.name))) {
      addName(listed.name, item);
    } else {
      addFile(listed.name, item);
    }
  }

  // Whether a name begins as those in the folder do.
  bool liesInFolder(std::string_view name) const {
    if (folder_.empty()) return true;
    return name.size() > folder_.size() && name[folder_.size()] == '/' &&
           std::memcmp(name.data(), folder_.data(), folder_.size()) == 0;
  }

  std::string_view segmentOf(std::string_view name) const {
    return name.substr(folder_.size() + !folder_.empty());
  }

  void addFile(std::string_view name, ItemIndex item) {
    const std::string_view folder = folderOf(name);
    if (folder != folder_) enterFolder(folder);
    // The folder has been looked at; what is left is the last segment. "/a" has the folder "" too.
    const bool isPartName =
        folderIsName_ && !name.starts_with('/') && findNameFault(segmentOf(name)) == nullptr;
    if (isPartName) {
      addName(name, item);
    } else {
      addOther(name, item);
    }
  }

  void enterFolder(std::string_view folder) {
    leaveFolder();
    folder_ = folder;
    folderHash_ = folder.empty() ? rootHash() : nameHash(folder);
    folderIsKnown_ = index_.folders_.find(folderHash_, folder) != nullptr;
    folderIsName_ = folder.empty() || folderIsKnown_ || findNameFault(folder) == nullptr;
  }

  // Items are counted here, and added to the set of folders when the folder changes.
  void countInFolder(std::string_view name) {
    if (folder_.empty()) return;
    if (folderIsKnown_) {
      ++folderCount_;
      return;
    }
    index_.folders_.add(name);
    folderIsKnown_ = true;
  }

  void leaveFolder() {
    settleNames();
    if (folderCount_ != 0) index_.folders_.addTo(folderHash_, folder_, folderCount_);
    folderCount_ = 0;
  }

  // What takes time in a large table is the way to memory: names wait a little for theirs.
  void addName(std::string_view name, PartId part) {
    const std::uint64_t hash = extendHash(folderHash_, segmentOf(name));
    index_.parts_.prefetch(hash);
    waiting_[waitingCount_] = {name, hash, part};
    if (++waitingCount_ == waiting_.size()) settleNames();
  }

  void settleNames() {
    const std::size_t count = std::exchange(waitingCount_, 0);
    for (std::size_t i = 0; i < count; ++i) settleName(waiting_[i]);
  }

  void settleName(const Name& added) {
    const auto& [name, hash, part] = added;
    const auto isSame = [&, &wanted = name](std::uint32_t other) {
      return equalKeys(index_.name(other), wanted);
    };
    const auto* other = index_.parts_.findOrInsert(hash, static_cast<std::uint32_t>(part), isSame);
    if (other != nullptr) {
      const bool inPieces = index_.isInPieces(part) || index_.isInPieces(*other);
      return faults_.add(FormatError(inPieces ? "IL-3" : "PN-8",
                                     "part name " + quoted(name) + ": " +
                                         quoted(index_.name(*other)) + " is the same name"),
                         name);
    }
    const ItemRole role = roleOf(name, hash);
    index_.setRole(part, role);
    if (role == ItemRole::Relationships) relationships_.push_back(part);
    if (role == ItemRole::Untyped) return index_.noteUntypedExtension(name);
    countInFolder(name);
  }

  ItemRole roleOf(std::string_view name, std::uint64_t hash) {
    const ContentType* type = defaultFor(name);
    if (extensionIsOfRelationships_ && isRelationshipsItemName(name)) {
      checkRelationshipsType(name, hash);
      return ItemRole::Relationships;
    }
    if (type != nullptr) return ItemRole::Part;
    return types_.findOverride(hash, name) != nullptr ? ItemRole::Part : ItemRole::Untyped;
  }

  const ContentType* defaultFor(std::string_view name) {
    const std::string_view segment = segmentOf(name);
    const std::size_t dot = segment.rfind('.');
    const std::string_view extension =
        dot == std::string_view::npos ? std::string_view() : segment.substr(dot + 1);
    if (extension == extension_) return default_;
    extension_ = extension;
    extensionIsOfRelationships_ = toLowerAscii(extension) == kRelationshipsExtension;
    default_ = types_.findDefault(extension);
    return default_;
  }

  // A relationships part may go without a type, but not with another one.
  void checkRelationshipsType(std::string_view name, std::uint64_t hash) {
    static const ContentType kType = ContentType::fromAscii(kRelationshipsType);
    const ContentType* type = types_.findOverride(hash, name);
    if (type == nullptr) type = defaultFor(name);
    if (type == nullptr || *type == kType) return;
    faults_.add(FormatError("CT-12", "relationships part " + quoted(name) +
                                         ": its content type is '" + type->ascii() + "'"),
                name);
  }

  void addOther(std::string_view name, ItemIndex item) {
    if (isContentTypesName(name)) {
      if (++contentTypesItems_ == 1) return;
      return faults_.add(
          FormatError("CT-1", "content types stream " + quoted(name) + ": there are two"), name);
    }
    const auto piece = parsePieceName(name);
    if (piece && (isContentTypesName(piece->whole) || findNameFault(piece->whole) == nullptr)) {
      pieces_.add(*piece, item);
    } else {
      index_.setRole(item, ItemRole::Stray);
    }
  }

  void addSequences() {
    PieceSequences::Result result = pieces_.finish(faults_);
    for (const ItemIndex item : result.strays) index_.setRole(item, ItemRole::Stray);
    for (PieceSequences::Sequence& sequence : result.complete) {
      if (isContentTypesName(sequence.name)) {
        if (contentTypesItems_ == 0) continue;
        faults_.add(FormatError("IL-3", "content types stream " + quoted(sequence.name) +
                                            ": it is there whole and in pieces"),
                    sequence.name);
        continue;
      }
      enterFolder(folderOf(sequence.name));
      const PartId part = PartIndex::kFirstSequence + index_.sequences_.size();
      index_.sequences_.push_back({sequence.name, std::move(sequence.items), ItemRole::Hidden});
      addName(index_.sequences_.back().name, part);
    }
    leaveFolder();
  }

  // The set of folders has an order of its own in every process.
  void checkDerivedNames() const {
    std::vector<std::pair<std::string_view, std::string_view>> derived;
    index_.folders_.forEach(
        [this, &derived](std::uint64_t hash, const detail::FolderSet::Folder& folder) {
          const std::uint32_t* part = index_.lookUp(hash, folder.path());
          if (part == nullptr || index_.role(*part) == ItemRole::Untyped) return;
          derived.emplace_back(folder.item(), index_.name(*part));
        });
    std::sort(derived.begin(), derived.end());
    for (const auto& [name, extended] : derived) {
      faults_.add(FormatError("PN-9", "part name " + quoted(name) + ": it extends the name " +
                                          quoted(extended) + " of another part"),
                  name);
    }
  }

  void checkSources() {
    for (const PartId part : relationships_) checkSource(part);
  }

  void checkSource(PartId part) {
    const std::string_view name = index_.name(part);
    const std::string source = sourceOfRelationships(name);
    if (source.empty()) return;
    if (isRelationshipsItemName(source)) {
      return faults_.add(FormatError("RL-9", "relationships part " + quoted(name) +
                                                 ": its source is a relationships part"),
                         name);
    }
    const auto found = index_.find(source);
    if (!found) {
      index_.orphans_.push_back(part);
    } else if (index_.role(*found) == ItemRole::Untyped) {
      faults_.add(FormatError("CT-10", "item " + quoted(source) +
                                           ": it has relationships and no content type"),
                  index_.name(*found));
    }
  }

  PartIndex& index_;
  const ContentTypes& types_;
  FaultSink& faults_;
  PieceSequences pieces_;
  std::array<Name, 16> waiting_;  // of one folder, on their way into the index
  std::size_t waitingCount_ = 0;
  std::vector<PartId> relationships_;

  // The folder of the item before: most items lie in the same.
  std::string_view folder_;
  std::uint64_t folderHash_ = 0;
  bool folderIsName_ = false;      // whether it is fit for part names
  bool folderIsKnown_ = false;     // whether the set of folders has it
  std::uint64_t folderCount_ = 0;  // of items that the set does not know yet

  // The default type of the extension before. No default is for an empty one.
  std::string_view extension_;
  const ContentType* default_ = nullptr;
  bool extensionIsOfRelationships_ = false;

  std::size_t contentTypesItems_ = 0;
};

void PartIndex::load(const ContentTypes& types, FaultSink& faults) {
  Loader(*this, types, faults).load();
}

}  // namespace opc::model
