// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace opc::model {

/// The name of a part (ISO/IEC 29500-2, 6.2.2): a value that has been checked when it exists.
///
/// Three forms: as it was given; canonical (what is not ASCII percent-encoded as UTF-8, nothing
/// else changed); and the key (the canonical form with A-Z folded), by which names are equal.
class PartName {
 public:
  /// From "/a/b.xml", with or without characters outside ASCII.
  /// Throws FormatError (ErrorCode::InvalidName) with the rule that it breaks.
  explicit PartName(std::u16string_view name);

  /// From the name of a container's item: UTF-8, no leading slash.
  static PartName fromItemName(std::string_view itemName);

  std::u16string toString() const;                             ///< as given
  const std::string& canonical() const { return canonical_; }  ///< "/a/b.xml"
  const std::string& key() const { return key_; }              ///< "/a/b.xml", folded
  std::string_view itemName() const;                           ///< canonical, without the slash
  std::string_view getExtension() const;  ///< of the last segment, no dot; may be empty

  /// Whether it is kept for relationships: a last segment in ".rels" inside a segment "_rels".
  bool isRelationshipsPartName() const;
  /// "/x/_rels/y.z.rels" for "/x/y.z".
  PartName relationshipsPartName() const;

  friend bool operator==(const PartName& a, const PartName& b) { return a.key_ == b.key_; }

 private:
  PartName(std::string given, std::string canonical);

  std::string given_;  // UTF-8; empty when it equals canonical_
  std::string canonical_;
  std::string key_;
};

/// The rule that a name breaks, such as "PN-6", and why.
struct NameFault {
  const char* rule;
  const char* why;
};
/// What is wrong with `itemName` (UTF-8, no leading slash) as a part name; null if it is valid.
/// Allocates nothing for ASCII names.
const NameFault* findNameFault(std::string_view itemName);

/// Whether a segment is fit for a part name and has neither escapes nor characters outside ASCII.
bool isPlainSegment(std::string_view segment) noexcept;

/// What follows the last dot of the last segment; empty when there is none.
std::string_view extensionOf(std::string_view itemName);

/// The same questions about relationships parts as PartName answers, on names of items. The package
/// itself stands as "". `sourceOfRelationships` expects a name that is kept for relationships.
bool isRelationshipsItemName(std::string_view itemName);
std::string relationshipsItemName(std::string_view itemName);
std::string sourceOfRelationships(std::string_view itemName);

/// `itemName` with every byte outside ASCII percent-encoded.
std::string canonicalItemName(std::string_view itemName);

/// A path of files ("a b/c%.m", UTF-8) as segments of a part name ("a%20b/c%25.m"): pure ASCII,
/// '/' kept, every other character that may not stand by itself percent-encoded.
std::string percentEncodePath(std::string_view path);

/// The way back, decoded exactly once. Throws FormatError when the result is not UTF-8.
std::string percentDecodePath(std::string_view encoded);

}  // namespace opc::model
