// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace test {

/// Reads packages, and damages them, with Python's own ZIP and XML modules, which share no code
/// with ours. Every call runs package_inspector.py and throws if that fails.
class PackageInspector {
 public:
  explicit PackageInspector(std::filesystem::path package) : package_(std::move(package)) {}

  /// The names of the items, sorted.
  std::vector<std::string> names() const;
  /// The ids and targets of the package's relationships of a type, "id target", in order.
  std::vector<std::string> relationships(const std::string& type) const;
  /// By override or extension; "" if there is none.
  std::string contentType(const std::string& item) const;
  std::string content(const std::string& item) const;
  /// The part's XML in canonical form, which is the same for all spellings of a document.
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
