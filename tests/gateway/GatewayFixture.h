// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "hostarray/standin/testing.h"
#include "tests/support/GatewayCaller.h"
#include "tests/support/PackageInspector.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

/// A folder with the path of a package in it, and calls that check what holds for every call.
class GatewayTest : public testing::Test {
 protected:
  void TearDown() override {
    path_.reset();
    hostarray::standin::failCreation(0);
    EXPECT_EQ(hostarray::standin::liveArrays(), 0u);
  }

  static FieldTexts toolbox() {
    return {{"type", u"Korvan Toolbox"},
            {"name", u"Curves"},
            {"version", u"1.2"},
            {"KorvanRelease", u"R1999a"},
            {"summary", u"one line"},
            {"authorName", u"Ada"},
            {"authorContact", u"a@b.c"},
            {"authorOrganization", u"O"},
            {"GUID", u"g-1"},
            {"description", u"at \U0001F600 length"}};
  }

  /// A call that leaves no array but its output behind.
  static Outcome callCleanly(Slot slot, int outputs, const Inputs& inputs) {
    Outcome outcome = call(slot, outputs, inputs);
    EXPECT_EQ(outcome.leftBehind, 0u);
    return outcome;
  }

  /// A writer on the package, which must end without a host error.
  void write(Slot slot, const Inputs& more) const {
    Inputs inputs{path()};
    inputs.insert(inputs.end(), more.begin(), more.end());
    EXPECT_EQ(callCleanly(slot, 0, inputs).hostError, "");
  }
  /// A reader on the package, which must end without a host error; null without output.
  HostArray read(Slot slot) const {
    Outcome outcome = callCleanly(slot, 1, {path()});
    EXPECT_EQ(outcome.hostError, "");
    return std::move(outcome.output);
  }

  void createPackage(const FieldTexts& properties = toolbox()) const {
    write(kCreatePackage, {makeStruct(properties).get()});
  }
  void setLicense(const std::u16string& type, const std::u16string& text) const {
    write(kSetLicense, {makeStruct({{"type", type}, {"text", text}}).get()});
  }

  const std::filesystem::path& file() const { return file_; }
  const kxArray* path() const { return path_.get(); }
  std::string packageBytes() const { return readFile(file_); }
  PackageInspector inspector() const { return PackageInspector(file_); }
  std::filesystem::path operator/(const char* name) const { return folder_ / name; }
  /// The path of a new file on disk, as text.
  std::u16string diskFile(const char* name, const char* content) const {
    writeFile(folder_ / name, content);
    return (folder_ / name).u16string();
  }

 private:
  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_ / "a.kraddon";
  HostArray path_ = makeText(file_);
};

}  // namespace test
