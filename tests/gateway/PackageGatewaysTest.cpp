// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/gateway/GatewayFixture.h"

namespace {

using test::FieldTexts;
using test::HostArray;
using test::Outcome;

class PackageGateways : public test::GatewayTest {
 protected:
  FieldTexts properties() const {
    const HostArray output = read(test::kGetProperties);
    return output ? test::fieldTexts(output.get()) : FieldTexts();
  }
  /// toolbox() as it reads from a package.
  static FieldTexts stored() { return with(toolbox(), "KorvanRelease", u"R2047b"); }
  static FieldTexts with(FieldTexts fields, const std::string& name, const std::u16string& text) {
    for (auto& field : fields) {
      if (field.first == name) field.second = text;
    }
    return fields;
  }
};

TEST_F(PackageGateways, CreatedPropertiesReadBackWithTheLibrarysRelease) {
  createPackage();

  EXPECT_EQ(properties(), stored());
}

TEST_F(PackageGateways, PropertiesAreAOneByOneStruct) {
  createPackage();

  const HostArray output = read(test::kGetProperties);

  ASSERT_TRUE(output);
  EXPECT_TRUE(kxIsStruct(output.get()));
  EXPECT_EQ(kxGetNumberOfElements(output.get()), 1u);
}

TEST_F(PackageGateways, AReaderWithNoOutputAskedForStillGivesIt) {
  createPackage();

  const Outcome outcome = callCleanly(test::kGetProperties, 0, {path()});

  EXPECT_NE(outcome.output, nullptr);
}

TEST_F(PackageGateways, CreatingOverAPackageReplacesIt) {
  createPackage();
  setLicense(u"MIT", u"terms");

  createPackage(with(toolbox(), "name", u"Other"));

  EXPECT_EQ(properties(), with(stored(), "name", u"Other"));
  EXPECT_EQ(test::fieldText(read(test::kGetLicense).get(), "text"), u"");
}

TEST_F(PackageGateways, CreatingOverAFileThatIsNotAPackageReplacesIt) {
  test::writeFile(file(), "no package");

  createPackage();

  EXPECT_EQ(properties(), stored());
}

TEST_F(PackageGateways, CreatingOverAFolderIsSilentAndLeavesIt) {
  std::filesystem::create_directories(file() / "inside");

  createPackage();

  EXPECT_TRUE(std::filesystem::is_directory(file() / "inside"));
}

TEST_F(PackageGateways, AnUnknownTypeMakesNoFileAndNoError) {
  for (const char16_t* type : {u"", u"korvan toolbox", u"Korvan Toolbox "}) {
    createPackage(with(toolbox(), "type", type));

    EXPECT_FALSE(std::filesystem::exists(file()));
  }
}

TEST_F(PackageGateways, SettingPropertiesReplacesAllButTypeAndRelease) {
  createPackage();
  FieldTexts changed = toolbox();
  for (auto& [name, text] : changed) text = u"new " + text;

  write(test::kSetProperties, {test::makeStruct(changed).get()});

  FieldTexts expected = with(changed, "type", u"Korvan Toolbox");
  EXPECT_EQ(properties(), with(expected, "KorvanRelease", u"R2047b"));
}

TEST_F(PackageGateways, WhatWasReadCanBeStoredAgain) {
  createPackage();

  write(test::kSetProperties, {read(test::kGetProperties).get()});

  EXPECT_EQ(properties(), stored());
}

TEST_F(PackageGateways, SettingPropertiesOfAMissingPackageDoesNotCreateIt) {
  write(test::kSetProperties, {test::makeStruct(toolbox()).get()});

  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(PackageGateways, EmptyTextsReadBackEmpty) {
  FieldTexts empty = toolbox();
  for (auto& [name, text] : empty) {
    if (name != "type") text.clear();
  }

  createPackage(empty);

  EXPECT_EQ(properties(), with(empty, "KorvanRelease", u"R2047b"));
}

TEST_F(PackageGateways, AFieldThatIsMissingOrNotTextIsTheHostsErrorAndNothingIsMade) {
  FieldTexts without = toolbox();
  without.pop_back();
  const HostArray missing = test::makeStruct(without);
  const HostArray number = test::makeStruct(toolbox());
  kxSetField(number.get(), 0, "GUID", kxCreateDoubleScalar(1));
  const HostArray text = test::makeText(std::u16string(u"no struct"));

  for (const test::Slot slot : {test::kCreatePackage, test::kSetProperties}) {
    EXPECT_EQ(callCleanly(slot, 0, {path(), missing.get()}).hostError, "Korvan:missingValue");
    EXPECT_EQ(callCleanly(slot, 0, {path(), number.get()}).hostError, "Korvan:notText");
    EXPECT_EQ(callCleanly(slot, 0, {path(), text.get()}).hostError, "Korvan:notStruct");
  }
  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(PackageGateways, OfAStructArrayTheFirstElementCounts) {
  const std::size_t two = 2;
  std::vector<const char*> names;
  const FieldTexts fields = toolbox();
  for (const auto& field : fields) names.push_back(field.first.c_str());
  const HostArray array(kxCreateStructArray(1, &two, names.size(), names.data()));
  for (const auto& [name, text] : fields) {
    kxSetField(array.get(), 0, name.c_str(), test::makeText(text).release());
  }

  write(test::kCreatePackage, {array.get()});

  EXPECT_EQ(properties(), stored());
}

TEST_F(PackageGateways, TextThatXmlCannotCarryMakesNoPackage) {
  createPackage(with(toolbox(), "description", u"bell \u0007"));

  EXPECT_FALSE(std::filesystem::exists(file()));
}

TEST_F(PackageGateways, NothingIsLeftBesideThePackage) {
  createPackage();
  write(test::kSetProperties, {test::makeStruct(toolbox()).get()});

  std::size_t entries = 0;
  for (const auto& entry : std::filesystem::directory_iterator(file().parent_path())) {
    EXPECT_EQ(entry.path(), file());
    ++entries;
  }
  EXPECT_EQ(entries, 1u);
}

}  // namespace
