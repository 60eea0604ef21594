// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "opc/model/PartIndex.h"

namespace opc::model::detail {

/// Fills a PartIndex from a directory, in one pass that costs a name little more than hashing it.
class PartIndexLoader {
 public:
  PartIndexLoader(PartIndex& index, const ContentTypes& types, FaultSink& faults)
      : index_(index), types_(types), faults_(faults) {}

  void load();

 private:
  struct Name {
    std::string_view name;
    std::uint64_t hash = 0;
    PartId part = 0;
  };

  void addItem(interfaces::ItemIndex item);
  void addFile(std::string_view name, interfaces::ItemIndex item);
  void addOther(std::string_view name, interfaces::ItemIndex item);
  void addSequences();
  void addName(std::string_view name, PartId part);
  void settleNames();
  void settleName(const Name& added);
  void enterFolder(std::string_view folder);
  void countInFolder(std::string_view name);
  void leaveFolder();
  ItemRole roleOf(std::string_view name, std::uint64_t hash);
  const ContentType* defaultFor(std::string_view name);
  void checkRelationshipsType(std::string_view name, std::uint64_t hash);

  void checkDerivedNames() const;
  void checkSources();
  void checkSource(PartId part);

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

  // The default type of the extension before.
  std::string_view extension_;
  const ContentType* default_ = nullptr;
  bool hasExtension_ = false;

  std::size_t contentTypesItems_ = 0;
};

}  // namespace opc::model::detail
