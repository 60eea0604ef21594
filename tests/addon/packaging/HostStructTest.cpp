// SPDX-License-Identifier: MIT
#include "addon/packaging/HostStruct.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "addon/packaging/DocumentTable.h"
#include "hostarray/matrix.h"
#include "hostarray/standin/CallScope.h"
#include "hostarray/standin/testing.h"

using namespace addon::packaging;
using hostarray::standin::CallScope;
using hostarray::standin::failCreation;
using hostarray::standin::liveArrays;

namespace {

/// A record as the list documents have them: two texts and a flag.
struct Tool : TableRecord<Tool> {
  static const RecordTable kTable;

  std::u16string name;
  std::u16string path;
  bool isDefault = false;
};

constexpr Field kToolFields[] = {field<&Tool::name>("name", "@name", "Its name."),
                                 field<&Tool::path>("path", "@path", "Its path."),
                                 field<&Tool::isDefault>("isDefault", "@isDefault", "A flag.")};

/// A struct with a list of them, as documents have it.
struct Box : TableRecord<Box> {
  static const RecordTable kTable;

  std::vector<Tool> tools;
};

constexpr Field kBoxFields[] = {field<&Box::tools>("tools", "tool", "What is in it.")};

}  // namespace

constinit const RecordTable Tool::kTable{"tool", "A tool.", kToolFields};
constinit const RecordTable Box::kTable{"box", "A box.", kBoxFields};

namespace {

ArrayPointer toStructArray(const std::vector<Tool>& tools) {
  ArrayPointer array = createStruct(Tool::kTable, tools.size());
  for (std::size_t i = 0; i < tools.size(); ++i) writeStruct(ConstRecord(tools[i]), array.get(), i);
  return array;
}

/// A host struct with a field of tools.
ArrayPointer boxOf(ArrayPointer tools) {
  ArrayPointer s = createStruct(Box::kTable, 1);
  setField(s.get(), 0, "tools", std::move(tools));
  return s;
}

std::vector<Tool> readTools(const kxArray* array) {
  Box box;
  readStruct(Record(box), array, 0);
  return box.tools;
}

Tool makeTool(std::u16string name, std::u16string path, bool isDefault) {
  Tool tool;
  tool.name = std::move(name);
  tool.path = std::move(path);
  tool.isDefault = isDefault;
  return tool;
}

class HostStruct : public testing::Test {
 protected:
  void TearDown() override {
    failCreation(0);
    EXPECT_EQ(liveArrays(), 0u);
  }

  /// A 1-by-1 struct with the one field "f".
  static ArrayPointer structWith(ArrayPointer value) {
    const char* name = "f";
    const std::size_t size = 1;
    ArrayPointer s(kxCreateStructArray(1, &size, 1, &name));
    setField(s.get(), 0, "f", std::move(value));
    return s;
  }
};

TEST_F(HostStruct, WithoutRecordsIsEmptyButKeepsItsFields) {
  const ArrayPointer s = toStructArray(std::vector<Tool>());

  EXPECT_TRUE(kxIsStruct(s.get()));
  EXPECT_EQ(kxGetNumberOfElements(s.get()), 0u);
  ASSERT_EQ(kxGetNumberOfFields(s.get()), 3u);
  EXPECT_STREQ(kxGetFieldName(s.get(), 2), "isDefault");
}

TEST_F(HostStruct, HoldsOneElementARecord) {
  const std::vector<Tool> tools{makeTool(u"a", u"b", true), makeTool(u"", u"\U0001F600", false)};

  const ArrayPointer s = toStructArray(tools);

  ASSERT_EQ(kxGetNumberOfElements(s.get()), 2u);
  EXPECT_EQ(readText(s.get(), 0, "name"), u"a");
  EXPECT_EQ(readText(s.get(), 0, "isDefault"), u"true");
  EXPECT_EQ(readText(s.get(), 1, "name"), u"");
  EXPECT_EQ(readText(s.get(), 1, "path"), u"\U0001F600");
  EXPECT_EQ(readText(s.get(), 1, "isDefault"), u"false");
}

TEST_F(HostStruct, RecordsComeBackThroughTheHostsIndexing) {
  const CallScope call;
  const std::vector<Tool> tools{makeTool(u"a", u"b", true), makeTool(u"c", u"d", false)};
  const ArrayPointer s = boxOf(toStructArray(tools));

  const auto records = readTools(s.get());

  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].name, u"a");
  EXPECT_TRUE(records[0].isDefault);
  EXPECT_EQ(records[1].path, u"d");
  EXPECT_FALSE(records[1].isDefault);
  EXPECT_EQ(call.unowned(), 1u);  // `s`; the subscript is gone
}

TEST_F(HostStruct, RecordsOfAnyShapeComeInLinearOrder) {
  const CallScope call;
  const std::array<std::size_t, 2> sizes{2, 2};
  const std::array<const char*, 3> names{"name", "path", "isDefault"};
  ArrayPointer s(kxCreateStructArray(2, sizes.data(), names.size(), names.data()));
  for (std::size_t i = 0; i < 4; ++i) {
    makeTool(std::u16string(1, static_cast<char16_t>(u'a' + i)), u"", false).addRow(s.get(), i);
  }

  const ArrayPointer box = boxOf(std::move(s));
  const auto records = readTools(box.get());

  ASSERT_EQ(records.size(), 4u);
  EXPECT_EQ(records[1].name + records[2].name + records[3].name, u"bcd");
}

TEST_F(HostStruct, NullAndAnEmptyArrayHaveNoRecords) {
  const CallScope call;
  const ArrayPointer unset = boxOf(nullptr);
  const ArrayPointer empty = boxOf(ArrayPointer(Tool::createStructArray(0)));

  EXPECT_TRUE(readTools(unset.get()).empty());
  EXPECT_TRUE(readTools(empty.get()).empty());
}

TEST_F(HostStruct, ARecordWithoutARequiredFieldLeavesNoSubscriptBehind) {
  const ArrayPointer s = boxOf(ArrayPointer(Tool::createStructArray(2)));
  {
    const CallScope call;
    EXPECT_THROW(readTools(s.get()), matrix::HostError);
    EXPECT_EQ(call.unowned(), 0u);
  }

  EXPECT_EQ(liveArrays(), 2u);  // the struct and its field
}

TEST_F(HostStruct, TextsBecomeACellRow) {
  const ArrayPointer cell = toTextCell({u"x", u"", u"x"});

  ASSERT_TRUE(kxIsCell(cell.get()));
  EXPECT_EQ(kxGetDimensions(cell.get())[0], 1u);
  EXPECT_EQ(kxGetDimensions(cell.get())[1], 3u);
  EXPECT_EQ(readTextCell(cell.get()), (std::vector<std::u16string>{u"x", u"", u"x"}));
}

TEST_F(HostStruct, NoTextsBecomeAOneByZeroCell) {
  const ArrayPointer cell = toTextCell({});

  ASSERT_EQ(kxGetNumberOfDimensions(cell.get()), 2u);
  EXPECT_EQ(kxGetDimensions(cell.get())[0], 1u);
  EXPECT_EQ(kxGetDimensions(cell.get())[1], 0u);
}

TEST_F(HostStruct, OptionalTextsThatAreAbsentUnsetOrEmptyAreNone) {
  const ArrayPointer unset = structWith(nullptr);
  const ArrayPointer emptyCell = structWith(toTextCell({}));
  const ArrayPointer emptyText = structWith(toText(u""));

  EXPECT_TRUE(readOptionalTexts(unset.get(), 0, "absent").empty());
  EXPECT_TRUE(readOptionalTexts(unset.get(), 0, "f").empty());
  EXPECT_TRUE(readOptionalTexts(emptyCell.get(), 0, "f").empty());
  EXPECT_TRUE(readOptionalTexts(emptyText.get(), 0, "f").empty());
}

TEST_F(HostStruct, OptionalTextsThatAreThereAreRead) {
  const ArrayPointer s = structWith(toTextCell({u"b", u"a"}));

  EXPECT_EQ(readOptionalTexts(s.get(), 0, "f"), (std::vector<std::u16string>{u"b", u"a"}));
}

TEST_F(HostStruct, ARequiredTextMustBeThereAndBeText) {
  const ArrayPointer unset = structWith(nullptr);
  const ArrayPointer number = structWith(ArrayPointer(kxCreateDoubleScalar(1)));

  EXPECT_THROW(readText(unset.get(), 0, "f"), matrix::HostError);
  EXPECT_THROW(readText(unset.get(), 0, "absent"), matrix::HostError);
  EXPECT_THROW(readText(number.get(), 0, "f"), matrix::HostError);
}

TEST_F(HostStruct, ACellWithAnythingButTextsIsRefused) {
  ArrayPointer cell = toTextCell({u"x", u"y"});
  kxSetCell(cell.get(), 1, kxCreateDoubleScalar(1));

  EXPECT_THROW(readTextCell(cell.get()), matrix::HostError);
}

TEST_F(HostStruct, AFlagFromTheHostIsClearedByExactlyFalse) {
  EXPECT_FALSE(isNotFalse(u"false"));
  for (const char16_t* text : {u"true", u"", u"False", u"FALSE", u"no", u"0", u"false "}) {
    EXPECT_TRUE(isNotFalse(text));
  }
}

TEST_F(HostStruct, AFlagFromXmlIsSetByExactlyTrue) {
  EXPECT_TRUE(isTrue(u"true"));
  for (const char16_t* text : {u"false", u"", u"True", u"TRUE", u"yes", u"1", u"true "}) {
    EXPECT_FALSE(isTrue(text));
  }
}

TEST_F(HostStruct, AFailingCreationAnywhereLeavesNothingBehind) {
  const std::vector<Tool> tools{makeTool(u"a", u"b", true), makeTool(u"c", u"d", false)};
  std::size_t failures = 0;
  for (std::size_t n = 1;; ++n) {
    failCreation(n);
    try {
      toStructArray(tools);
      break;
    } catch (const matrix::HostError& error) {
      EXPECT_EQ(error.identifier(), "Korvan:outOfMemory");
    }
    EXPECT_EQ(liveArrays(), 0u);
    ++failures;
  }

  EXPECT_EQ(failures, 7u);  // the struct, and three values in each of two elements
}

TEST_F(HostStruct, AFailingCreationWhileACellIsFilledLeavesNothingBehind) {
  for (std::size_t n = 1; n <= 3; ++n) {
    failCreation(n);
    EXPECT_THROW(toTextCell({u"a", u"b"}), matrix::HostError);
    EXPECT_EQ(liveArrays(), 0u);
  }
}

}  // namespace
