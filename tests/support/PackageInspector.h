// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace test {

/// Looks into packages, and breaks them, with Python's own ZIP and XML modules: an independent
/// judge of what was written. Every call runs package_inspector.py and throws when that fails.
class PackageInspector {
 public:
  explicit PackageInspector(std::filesystem::path package) : package_(std::move(package)) {}

  /// The names of the items, sorted.
  std::vector<std::string> names() const;
  /// The ids and targets of the package's relationships of a type, "id target", in order.
  std::vector<std::string> relationships(const std::string& type) const;
  /// By override or extension; "" when there is none.
  std::string contentType(const std::string& item) const;
  std::string content(const std::string& item) const;
  /// The part's XML in canonical form, which is the same for all ways to write one document.
  std::string canonical(const std::string& item) const;

  void remove(const std::string& item) const;
  void replace(const std::string& item, const std::string& content) const;
  /// Adds another relationship with the type and target of the first one of `type`.
  void doubleRelationship(const std::string& type) const;

 private:
  std::filesystem::path package_;
};

/// The canonical form of an XML file on disk.
std::string canonicalXml(const std::filesystem::path& file);

}  // namespace test
