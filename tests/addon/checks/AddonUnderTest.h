// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "addon/packaging/AddonPackage.h"
#include "opc/checks/Report.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

/// A package file without findings, for tests to break.
class AddonUnderTest {
 public:
  AddonUnderTest();

  /// Opens the package, runs `change`, and commits.
  void change(const std::function<void(addon::packaging::AddonPackage&)>& change);
  /// Replaces only the content of a part.
  void replace(const std::u16string& part, const std::string& content);
  void replaceType(const std::u16string& part, const std::u16string& contentType);
  /// Deletes the part and the relationships that lead to it.
  void drop(const std::u16string& part);
  void dropRelationships(const std::u16string& target);
  /// Adds another relationship like the one that leads to the part.
  void doubleRelationship(const std::u16string& target);
  void addFile(const std::u16string& path, std::string_view content = "x");
  void changeProperty(std::u16string addon::packaging::AddonProperties::*field,
                      const std::u16string& text);
  void setScreenshot(const std::string& fileName, std::string_view content);

  /// Corrupts the stored data of an item, so that its checksum is wrong.
  void damage(const std::string& itemName);

  /// What checkAddon() finds.
  opc::checks::Report check() const;

  std::filesystem::path diskFile(std::string_view content);

 private:
  TemporaryFolder folder_;
  std::filesystem::path package_ = folder_ / "wave.kraddon";
  unsigned diskFiles_ = 0;
};

/// The numbers of the findings.
std::set<std::uint16_t> numbersIn(const opc::checks::Report& report);
/// For failure messages: one line for each finding.
std::string describe(const opc::checks::Report& report);

/// The XML of a document with a root of that name, in the namespace of that name.
std::string documentXml(const std::string& root, const std::string& content);

/// One way to cause one finding.
struct FindingCase {
  std::uint16_t number;
  const char* name;  ///< of the test
  void (*change)(AddonUnderTest& addon);
  std::size_t count = 1;
};

}  // namespace test
