// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "opc/HashIndex.h"
#include "opc/Streams.h"
#include "opc/model/ContentType.h"
#include "opc/model/FaultSink.h"
#include "opc/model/detail/DocumentSize.h"

namespace opc::model {

/// The content types of a package: defaults by extension, and overrides by part name, which take
/// precedence. Parts are given by the names of their items, in any spelling.
class ContentTypes {
 public:
  struct Default {
    std::string extension;
    ContentType type;
  };
  struct Override {
    std::string itemName;  ///< canonical
    ContentType type;
  };

  /// Reads the content types stream.
  /// Throws InvalidXMLDocument; entries that break a rule go to `faults`.
  static ContentTypes read(InputStream& stream, FaultSink& faults = FaultSink::refusing());

  /// The type of a part, or null. Valid until the next change.
  const ContentType* find(std::string_view itemName) const;
  /// The two steps of find(). `hash` must be nameHash(itemName).
  const ContentType* findOverride(std::uint64_t hash, std::string_view itemName) const;
  const ContentType* findDefault(std::string_view extension) const;

  /// Both throw FormatError if the entry already exists; addDefault() also throws it if the
  /// extension is invalid.
  void addDefault(std::string_view extension, const ContentType& type);
  void addOverride(std::string_view itemName, const ContentType& type);

  /// Sets the type of a part: by an existing default that fits, by a new default, or else by an
  /// override. A default is added only if `mayAddDefault` is true, the extension has none and is
  /// not that of relationships, and the type is not particular (ContentType::isParticular()).
  /// Throws ErrorCode::TooLarge, and changes nothing, if the stream could not be read back: a type
  /// or a name is too long, or there would be too many entries.
  void assign(std::string_view itemName, const ContentType& type, bool mayAddDefault);
  /// Removes the part's override, if it has one.
  void removeOverride(std::string_view itemName);

  /// The stream's text. The same for the same entries, in whatever order they came.
  std::string toXml() const;

  const std::vector<Default>& defaults() const { return defaults_; }
  const std::vector<Override>& overrides() const { return overrides_; }

  /// Whether anything was changed since it was read, made, or setUnchanged was called.
  bool isChanged() const { return changed_; }
  void setUnchanged() { changed_ = false; }

 private:
  const std::uint32_t* overrideIndex(std::uint64_t hash, std::string_view itemName) const;

  bool mayBecomeDefault(std::string_view extension, const ContentType& type) const;
  void requireRoom(const detail::ElementSize& needed, std::string_view itemName);
  detail::DocumentSize& size();

  std::vector<Default> defaults_;
  std::vector<Override> overrides_;
  HashIndex<std::uint32_t> defaultByExtension_;
  HashIndex<std::uint32_t> overrideByName_;
  std::optional<detail::DocumentSize> size_;  // of the text, counted when it is first asked for
  bool changed_ = false;
};

}  // namespace opc::model
