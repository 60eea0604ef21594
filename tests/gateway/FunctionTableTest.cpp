// SPDX-License-Identifier: MIT
#include "gateway/FunctionTable.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "tests/gateway/DocumentSlots.h"
#include "tests/gateway/GatewayFixture.h"
#include "tests/support/Paths.h"

namespace {

using test::GatewayTest;
using test::HostArray;
using test::Inputs;
using test::Outcome;
using test::Slot;

struct SlotCase {
  Slot slot;
  const char* name;
  int inputs;
  int outputs;
};

constexpr SlotCase kSlots[] = {
    {test::kCreatePackage, "addonCreatePackage", 2, 0},
    {test::kSetProperties, "addonSetProperties", 2, 0},
    {test::kGetProperties, "addonGetProperties", 1, 1},
    {test::kAddFiles, "addonAddFiles", 3, 0},
    {test::kAddFolders, "addonAddFolders", 2, 0},
    {test::kExtractAllFiles, "addonExtractAllFiles", 2, 0},
    {test::kGetFileList, "addonGetFileList", 1, 1},
    {test::kSetLicense, "addonSetLicense", 2, 0},
    {test::kGetLicense, "addonGetLicense", 1, 1},
    {test::kSetRevisionHistory, "addonSetRevisionHistory", 2, 0},
    {test::kGetRevisionHistory, "addonGetRevisionHistory", 1, 1},
    {test::kSetConfiguration, "addonSetConfiguration", 2, 0},
    {test::kGetConfiguration, "addonGetConfiguration", 1, 1},
    {test::kSetScreenshot, "addonSetScreenshot", 2, 0},
    {test::kSetAppInstallList, "addonSetAppInstallList", 2, 0},
    {test::kGetAppInstallList, "addonGetAppInstallList", 1, 1},
    {test::kSetExamples, "addonSetExamples", 2, 0},
    {test::kGetExamples, "addonGetExamples", 1, 1},
    {test::kSetSystemRequirements, "addonSetSystemRequirements", 2, 0},
    {test::kGetSystemRequirements, "addonGetSystemRequirements", 1, 1},
};

class EverySlot : public GatewayTest, public testing::WithParamInterface<SlotCase> {
 protected:
  /// The host error of a call with these counts. Every input is the package's path.
  std::string errorOf(int outputs, int inputs) const {
    const Inputs given(static_cast<std::size_t>(inputs), path());
    const Outcome outcome = callCleanly(GetParam().slot, outputs, given);
    EXPECT_EQ(outcome.output, nullptr);
    return outcome.hostError;
  }
};
INSTANTIATE_TEST_SUITE_P(Slots, EverySlot, testing::ValuesIn(kSlots),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(EverySlot, RefusesWrongCountsBeforeAnythingElse) {
  test::writeFile(file(), "untouched");
  const int inputs = GetParam().inputs;
  const int outputs = GetParam().outputs;

  EXPECT_EQ(errorOf(outputs + 1, inputs), "Korvan:tooManyOutputs");
  EXPECT_EQ(errorOf(outputs, inputs + 1), "Korvan:tooManyInputs");
  for (int fewer = 0; fewer < inputs; ++fewer) {
    EXPECT_EQ(errorOf(outputs, fewer), "Korvan:notEnoughInputs") << fewer;
  }
  EXPECT_EQ(errorOf(outputs + 1, inputs + 1), "Korvan:tooManyOutputs");
  EXPECT_EQ(errorOf(outputs + 1, 0), "Korvan:tooManyOutputs");
  EXPECT_EQ(packageBytes(), "untouched");
}

/// The slots that `wanted` holds for.
template <typename Predicate>
auto slotsThat(Predicate wanted) {
  std::vector<SlotCase> slots;
  for (const SlotCase& slot : kSlots) {
    if (wanted(slot.slot)) slots.push_back(slot);
  }
  return testing::ValuesIn(slots);
}

std::string nameOf(const testing::TestParamInfo<SlotCase>& test) {
  return test.param.name;
}

class EveryWorkingSlot : public EverySlot {
 protected:
  /// The inputs of a call that would do something.
  Inputs goodInputs() const {
    if (GetParam().outputs == 1) return {path()};
    if (GetParam().slot == test::kAddFiles) return {path(), text_.get(), text_.get()};
    if (GetParam().slot <= test::kSetProperties) return {path(), properties_.get()};
    return {path(), document_ ? document_.get() : text_.get()};
  }
  void SetUp() override {
    for (const test::DocumentSlots& document : test::kDocumentSlots) {
      if (document.set == GetParam().slot) document_ = document.sample();
    }
  }
  void TearDown() override {
    text_.reset();
    document_.reset();
    properties_.reset();
    GatewayTest::TearDown();
  }

  /// A package in which every reader finds something.
  void createFullPackage() const {
    createPackage();
    write(test::kAddFolders, {test::makeCell({u"a", u"b/c"}).get()});
    for (const auto& document : test::kDocumentSlots)
      write(document.set, {document.sample().get()});
  }

  HostArray text_ = test::makeText(std::filesystem::path("/etc/passwd"));
  HostArray document_;
  HostArray properties_ = test::makeStruct(toolbox());
};

INSTANTIATE_TEST_SUITE_P(Slots, EveryWorkingSlot, testing::ValuesIn(kSlots), nameOf);

/// All but the one that makes packages.
class EveryOpeningSlot : public EveryWorkingSlot {};
INSTANTIATE_TEST_SUITE_P(Slots, EveryOpeningSlot,
                         slotsThat([](Slot slot) { return slot != test::kCreatePackage; }), nameOf);

TEST_P(EveryOpeningSlot, OnAFileThatIsNotAPackageIsSilentAndGivesNothing) {
  test::writeFile(file(), "this is not a package");

  const Outcome outcome = callCleanly(GetParam().slot, GetParam().outputs, goodInputs());

  EXPECT_EQ(outcome.hostError, "");
  EXPECT_EQ(outcome.output, nullptr);
  EXPECT_EQ(packageBytes(), "this is not a package");
}

TEST_P(EveryWorkingSlot, OnAPathInAFolderThatIsNotThereIsSilentAndMakesNothing) {
  const HostArray nowhere = test::makeText((*this / "missing").u16string() + u"/a.kraddon");
  Inputs inputs = goodInputs();
  inputs[0] = nowhere.get();

  const Outcome outcome = callCleanly(GetParam().slot, GetParam().outputs, inputs);

  EXPECT_EQ(outcome.hostError, "");
  EXPECT_EQ(outcome.output, nullptr);
  EXPECT_FALSE(std::filesystem::exists(*this / "missing"));
}

TEST_P(EveryWorkingSlot, RefusesAPathThatIsNotText) {
  const HostArray number = test::makeNumber(1);
  Inputs inputs = goodInputs();
  inputs[0] = number.get();

  const Outcome outcome = callCleanly(GetParam().slot, GetParam().outputs, inputs);

  EXPECT_EQ(outcome.hostError, "Korvan:notText");
}

TEST_P(EveryWorkingSlot, LeavesNoArrayBehindWhicheverCreationFails) {
  createFullPackage();
  const std::string before = packageBytes();
  const Inputs inputs = goodInputs();
  const std::size_t live = hostarray::standin::liveArrays();

  std::size_t n = 1;
  for (;; ++n) {
    ASSERT_LT(n, 100u);
    hostarray::standin::failCreation(n);
    const Outcome outcome = callCleanly(GetParam().slot, GetParam().outputs, inputs);
    hostarray::standin::failCreation(0);
    if (outcome.hostError.empty()) break;
    EXPECT_EQ(outcome.hostError, "Korvan:outOfMemory");
    EXPECT_EQ(outcome.output, nullptr);
    EXPECT_EQ(hostarray::standin::liveArrays(), live);
    EXPECT_EQ(packageBytes(), before);
  }
  // Readers make arrays of their own; so do the writers that index nested lists.
  const bool indexes =
      GetParam().slot == test::kSetExamples || GetParam().slot == test::kSetSystemRequirements;
  EXPECT_EQ(n > 1, GetParam().outputs == 1 || indexes);
}

TEST(FunctionTable, IsTheSameRecordOnEveryCall) {
  void* library = ::dlopen(test::buildPath("lib/libkraddon_packaging.so").c_str(), RTLD_NOW);
  ASSERT_NE(library, nullptr) << ::dlerror();
  void* symbol = ::dlsym(library, "QueryKRFcnTable_kraddon_packaging");
  ASSERT_NE(symbol, nullptr) << ::dlerror();
  const auto query = reinterpret_cast<const HostFunctionTable* (*)()>(symbol);

  const HostFunctionTable* table = query();

  EXPECT_EQ(query(), table);
  EXPECT_EQ(table, &test::functionTable());
  EXPECT_EQ(table->interfaceConstant, 1445668297u);
  EXPECT_EQ(table->buildTimeStamp, 1438293441u);
  EXPECT_EQ(table->entryPointCount, 20u);
}

TEST(FunctionTable, HasTwentyDifferentGateways) {
  const HostFunctionTable& table = test::functionTable();

  const std::set<GatewayFunction> gateways(table.entryPoints, table.entryPoints + 20);

  EXPECT_EQ(gateways.size(), 20u);
  EXPECT_FALSE(gateways.contains(nullptr));
}

TEST(FunctionTable, ItsFieldsLieWhereTheHostReadsThem) {
  EXPECT_EQ(sizeof(HostFunctionTable), 32u);
  EXPECT_EQ(offsetof(HostFunctionTable, interfaceConstant), 8u);
  EXPECT_EQ(offsetof(HostFunctionTable, buildTimeStamp), 16u);
  EXPECT_EQ(offsetof(HostFunctionTable, entryPointCount), 24u);
}

/// What nm prints of the symbols that a library defines for others, without addresses.
std::string exportsOf(const std::string& library) {
  const std::string command = "nm -D --defined-only --format=posix '" +
                              test::buildPath("lib/" + library) + "' | cut -d' ' -f1";
  std::string output;
  FILE* pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return output;
  for (int c = 0; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
  ::pclose(pipe);
  return output;
}

TEST(SharedLibrary, ExportsTheQueryFunctionAndNothingElse) {
  EXPECT_EQ(exportsOf("libkraddon_packaging.so"), "QueryKRFcnTable_kraddon_packaging\n");
}

TEST(SharedLibrary, OfTheHostsArraysExportsOnlyTheInterface) {
  const std::string symbols = exportsOf("libkxarray.so");

  EXPECT_NE(symbols.find("kxCreateStructArray\n"), std::string::npos);
  EXPECT_NE(symbols.find("_ZTIN6matrix9HostErrorE\n"), std::string::npos);
  for (const char* standard : {"_ZNSt", "_ZNKSt", "_ZTISt", "_ZTVSt", "_ZSt"}) {
    EXPECT_EQ(symbols.find(standard), std::string::npos) << symbols;
  }
  EXPECT_EQ(symbols.find("Registry"), std::string::npos) << symbols;
}

}  // namespace
