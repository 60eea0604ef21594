// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/ZipBuilder.h"

namespace test::conformance {

/// A small package by all the rules, of which one line makes one that breaks a rule: content types,
/// the package's relationships with one to "a.xml", that part, and "b.m".
struct PackageSpec {
  PackageSpec();

  std::string types;                          ///< more children of the content types
  std::optional<std::string> wholeTypes;      ///< instead of the stream
  std::string relationships;                  ///< more of the package's relationships
  std::optional<std::string> wholeRelations;  ///< instead of their part
  std::optional<std::string> core;            ///< children of a core properties part
  std::optional<std::string> wholeCore;       ///< instead of that part

  ZipItem typesItem;      ///< its content comes from the fields above
  ZipItem relationsItem;  ///< the same
  std::vector<ZipItem> items;
  ZipBuilder zip;  ///< the container's own fields; its items are the last ones of the file

  ZipItem& add(std::string name, std::string content = "data");
  /// Adds the relationships part of another source than the package.
  ZipItem& addRelations(std::string name, std::string_view children);
  ZipItem& last() { return items.back(); }

  std::string bytes() const;
};

std::string defaultXml(std::string_view extension, std::string_view type);
std::string overrideXml(std::string_view name, std::string_view type);
/// Of type "urn:t".
std::string relationXml(std::string_view id, std::string_view target, std::string_view more = {});
std::string typesDocument(std::string_view children);
std::string relationsDocument(std::string_view children);
std::string coreDocument(std::string_view children, std::string_view attributes = {});

inline constexpr std::string_view kRelationsType =
    "application/vnd.openxmlformats-package.relationships+xml";
inline constexpr std::string_view kCoreType =
    "application/vnd.openxmlformats-package.core-properties+xml";
inline constexpr std::string_view kCoreRelation =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties";
inline constexpr std::string_view kThumbnailRelation =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail";
inline constexpr std::string_view kOriginRelation =
    "http://schemas.openxmlformats.org/package/2006/relationships/digital-signature/origin";
inline constexpr std::string_view kOriginType =
    "application/vnd.openxmlformats-package.digital-signature-origin";
/// The defaults for rels, xml and m that a sound package has.
extern const std::string kUsualDefaults;

}  // namespace test::conformance
