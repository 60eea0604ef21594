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

/// A package file that draws no finding at all, until something about it is changed.
class AddonUnderTest {
 public:
  AddonUnderTest();

  /// Opens the package, lets `change` at it, and commits.
  void change(const std::function<void(addon::packaging::AddonPackage&)>& change);
  /// Replaces what is in a part, and nothing about it.
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

  /// Spoils what is stored of an item, whose checksum then is wrong.
  void damage(const std::string& itemName);

  /// What the three checks of add-ons find.
  opc::checks::Report check() const;

  std::filesystem::path diskFile(std::string_view content);

 private:
  TemporaryFolder folder_;
  std::filesystem::path package_ = folder_ / "wave.kraddon";
  unsigned diskFiles_ = 0;
};

/// The numbers of what was found.
std::set<std::uint16_t> numbersIn(const opc::checks::Report& report);
/// For failures: a line a finding.
std::string describe(const opc::checks::Report& report);

/// The XML of a document: a root of that name in the namespace of that name.
std::string documentXml(const std::string& root, const std::string& content);

/// One way to draw one finding.
struct FindingCase {
  std::uint16_t number;
  const char* name;  ///< of the test
  void (*change)(AddonUnderTest& addon);
  std::size_t count = 1;
};

}  // namespace test
