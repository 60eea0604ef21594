// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "opc/Exception.h"
#include "opc/Streams.h"
#include "opc/model/FaultSink.h"
#include "opc/model/Relationship.h"
#include "opc/model/detail/DocumentSize.h"

namespace opc::model {

namespace detail {
class RelationshipsReader;
}

/// The relationships of one source, in the order in which they are stored.
class RelationshipSet {
 public:
  struct Entry {
    Relationship relationship;
    std::u16string fragment;  ///< of an internal target, with its '#'; kept in storing
    bool corrected = false;   ///< whether the stored target had to be put right to be resolved
  };

  /// An empty set. `sourceItemName` is the item name of a part, "" for the package.
  explicit RelationshipSet(std::string sourceItemName);
  RelationshipSet(RelationshipSet&&) = default;
  RelationshipSet(const RelationshipSet&) = delete;
  RelationshipSet& operator=(const RelationshipSet&) = delete;

  /// Reads a relationships part.
  /// Throws InvalidXMLDocument; relationships that break a rule go to `faults`.
  static RelationshipSet read(std::string sourceItemName, InputStream& stream,
                              FaultSink& faults = FaultSink::refusing());

  const std::list<Entry>& entries() const { return entries_; }
  /// Those of a type, in the same order.
  std::vector<Relationship> ofType(std::u16string_view type);
  const Relationship* find(std::u16string_view id) const;
  /// Throws ErrorCode::NotFound for an unknown id, as remove does.
  const Relationship& get(std::u16string_view id) const;

  /// See RelationshipSource. Both throw ErrorCode::TooLarge for what could not be read back: an
  /// id, a type or a target that is too long, or one relationship too many. Nothing is changed
  /// then.
  const Relationship& addInternal(std::u16string_view type, const URI& target,
                                  std::u16string_view id);
  const Relationship& addExternal(std::u16string_view type, const URI& target,
                                  std::u16string_view id);
  void remove(std::u16string_view id);

  /// The text of the relationships part.
  std::string toXml() const;

  /// Whether anything was changed since it was read, made, or setUnchanged was called.
  bool isChanged() const { return changed_; }
  void setUnchanged() { changed_ = false; }

 private:
  friend class detail::RelationshipsReader;

  void indexTypes();
  void addStored(Entry entry);
  const Relationship& add(std::u16string_view type, URI target, TargetMode mode,
                          std::u16string_view id, std::u16string fragment);
  void checkNew(std::u16string_view id, std::u16string_view type, TargetMode mode) const;
  void checkLengths(const Entry& entry) const;
  std::u16string freshId(std::uint64_t& lastGenerated) const;
  detail::DocumentSize& size();
  std::string describe(std::u16string_view id) const;
  Exception unknownId(std::u16string_view id) const;

  std::string source_;
  std::list<Entry> entries_;
  std::map<std::u16string_view, std::list<Entry>::iterator, std::less<>> byId_;
  struct Typed {
    std::uint64_t hash;
    const Relationship* relationship;
  };
  std::vector<Typed> byType_;  // by the hash of the type; empty until it is needed
  std::uint64_t lastGenerated_ = 0;
  std::size_t coreProperties_ = 0;            // how many relationships of that type
  std::optional<detail::DocumentSize> size_;  // of the text, counted when it is first asked for
  bool changed_ = false;
};

}  // namespace opc::model
