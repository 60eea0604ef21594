// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "hostarray/kxarray.h"
#include "hostarray/standin/CallScope.h"
#include "hostarray/standin/testing.h"
#include "tests/hostarray/HostErrors.h"

using hostarray::standin::CallScope;
using hostarray::standin::liveArrays;
using test::hostErrorOf;

namespace {

/// A cell array and a struct share the rules of ownership.
struct Kind {
  const char* name;
  kxArray* (*create)(std::size_t count);
  void (*set)(kxArray* array, std::size_t index, kxArray* value);
  kxArray* (*get)(const kxArray* array, std::size_t index);
};

const Kind kCell{"Cell", [](std::size_t n) { return kxCreateCellArray(1, &n); }, kxSetCell,
                 kxGetCell};
const Kind kStruct{
    "Struct",
    [](std::size_t n) {
      const std::array<const char*, 2> names{"other", "value"};
      return kxCreateStructArray(1, &n, 2, names.data());
    },
    [](kxArray* array, std::size_t i, kxArray* v) { kxSetField(array, i, "value", v); },
    [](const kxArray* array, std::size_t i) { return kxGetField(array, i, "value"); }};

class Container : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override { ASSERT_EQ(liveArrays(), 0u); }
  void TearDown() override { EXPECT_EQ(liveArrays(), 0u); }

  const Kind& kind() const { return GetParam(); }
};

INSTANTIATE_TEST_SUITE_P(Kinds, Container, testing::Values(kCell, kStruct),
                         [](const auto& test) { return test.param.name; });

TEST_P(Container, StartsEmptyInEverySlot) {
  kxArray* array = kind().create(3);

  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(kind().get(array, i), nullptr);
  kxDestroyArray(array);
}

TEST_P(Container, GivesBackTheVeryArrayThatWasStored) {
  kxArray* array = kind().create(3);
  kxArray* value = kxCreateDoubleScalar(4);

  kind().set(array, 1, value);

  EXPECT_EQ(kind().get(array, 1), value);
  EXPECT_EQ(kind().get(array, 0), nullptr);
  kxDestroyArray(array);
}

TEST_P(Container, DestroyingItDestroysWhatItHolds) {
  kxArray* array = kind().create(2);
  kxArray* inner = kind().create(1);
  kind().set(inner, 0, kxCreateDoubleScalar(1));
  kind().set(array, 0, inner);
  kind().set(array, 1, kxCreateString_UTF16(u"x"));
  ASSERT_EQ(liveArrays(), 4u);

  kxDestroyArray(array);

  EXPECT_EQ(liveArrays(), 0u);
}

TEST_P(Container, AnotherValueDestroysTheOldOne) {
  kxArray* array = kind().create(1);
  kind().set(array, 0, kxCreateDoubleScalar(1));

  kind().set(array, 0, kxCreateDoubleScalar(2));

  EXPECT_EQ(liveArrays(), 2u);
  EXPECT_EQ(*kxGetDoubles(kind().get(array, 0)), 2.0);
  kxDestroyArray(array);
}

TEST_P(Container, TheSameValueAgainStaysAlive) {
  kxArray* array = kind().create(1);
  kxArray* value = kxCreateDoubleScalar(7);
  kind().set(array, 0, value);

  kind().set(array, 0, value);

  EXPECT_EQ(liveArrays(), 2u);
  EXPECT_EQ(*kxGetDoubles(kind().get(array, 0)), 7.0);
  kxDestroyArray(array);
}

TEST_P(Container, NullEmptiesASlot) {
  kxArray* array = kind().create(1);
  kind().set(array, 0, kxCreateDoubleScalar(7));

  kind().set(array, 0, nullptr);

  EXPECT_EQ(liveArrays(), 1u);
  EXPECT_EQ(kind().get(array, 0), nullptr);
  kxDestroyArray(array);
}

TEST_P(Container, RefusesAValueThatIsStoredElsewhere) {
  kxArray* first = kind().create(2);
  kxArray* second = kind().create(1);
  kxArray* value = kxCreateDoubleScalar(7);
  kind().set(first, 0, value);

  EXPECT_EQ(hostErrorOf([&] { kind().set(second, 0, value); }), "Korvan:badArgument");
  EXPECT_EQ(hostErrorOf([&] { kind().set(first, 1, value); }), "Korvan:badArgument");

  EXPECT_EQ(kind().get(second, 0), nullptr);
  EXPECT_EQ(kind().get(first, 0), value);
  kxDestroyArray(first);
  kxDestroyArray(second);
}

TEST_P(Container, RefusesItselfAndWhateverHoldsIt) {
  kxArray* outer = kind().create(1);
  kxArray* middle = kind().create(1);
  kxArray* inner = kind().create(1);
  kind().set(middle, 0, inner);
  kind().set(outer, 0, middle);

  EXPECT_EQ(hostErrorOf([&] { kind().set(inner, 0, outer); }), "Korvan:badArgument");
  EXPECT_EQ(hostErrorOf([&] { kind().set(outer, 0, outer); }), "Korvan:badArgument");

  EXPECT_EQ(kind().get(inner, 0), nullptr);
  kxDestroyArray(outer);
}

TEST_P(Container, AFreshOneRefusesItself) {
  kxArray* array = kind().create(1);

  EXPECT_EQ(hostErrorOf([&] { kind().set(array, 0, array); }), "Korvan:badArgument");

  kxDestroyArray(array);
}

TEST_P(Container, AStoredValueCannotBeDestroyed) {
  kxArray* array = kind().create(1);
  kxArray* value = kxCreateDoubleScalar(7);
  kind().set(array, 0, value);

  EXPECT_EQ(hostErrorOf([&] { kxDestroyArray(value); }), "Korvan:badArgument");

  EXPECT_EQ(*kxGetDoubles(kind().get(array, 0)), 7.0);
  kxDestroyArray(array);
}

TEST_P(Container, AnIndexPastTheEndIsRefused) {
  kxArray* array = kind().create(2);
  kxArray* value = kxCreateDoubleScalar(7);

  EXPECT_EQ(hostErrorOf([&] { kind().get(array, 2); }), "Korvan:indexOutOfRange");
  EXPECT_EQ(hostErrorOf([&] { kind().set(array, 2, value); }), "Korvan:indexOutOfRange");

  kxDestroyArray(value);
  kxDestroyArray(array);
}

TEST_P(Container, AMillionNestedArraysAreDestroyed) {
  kxArray* array = kind().create(1);
  for (int i = 0; i < 1'000'000; ++i) {
    kxArray* outer = kind().create(1);
    kind().set(outer, 0, array);
    array = outer;
  }

  kxDestroyArray(array);

  EXPECT_EQ(liveArrays(), 0u);
}

TEST_P(Container, FilledFromTheOutsideInToAHundredThousandIsDestroyed) {
  kxArray* outer = kind().create(1);
  kxArray* array = outer;
  for (int i = 0; i < 100'000; ++i) {
    kxArray* inner = kind().create(1);
    kind().set(array, 0, inner);
    array = inner;
  }

  kxDestroyArray(outer);

  EXPECT_EQ(liveArrays(), 0u);
}

TEST(StructArray, FieldsKeepTheirOrderAndBelongToEveryElement) {
  const std::array<const char*, 3> names{"z", "a", "m"};
  const std::size_t count = 2;

  kxArray* array = kxCreateStructArray(1, &count, names.size(), names.data());
  kxSetField(array, 1, "m", kxCreateDoubleScalar(5));

  ASSERT_EQ(kxGetNumberOfFields(array), 3u);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_STREQ(kxGetFieldName(array, i), names[i]);
  EXPECT_EQ(kxGetField(array, 0, "m"), nullptr);
  EXPECT_EQ(*kxGetDoubles(kxGetField(array, 1, "m")), 5.0);
  kxDestroyArray(array);
}

TEST(StructArray, WithoutElementsItStillHasItsFields) {
  const std::array<const char*, 2> names{"a", "b"};
  const std::size_t count = 0;

  kxArray* array = kxCreateStructArray(1, &count, names.size(), names.data());

  EXPECT_TRUE(kxIsEmpty(array));
  EXPECT_EQ(kxGetNumberOfFields(array), 2u);
  EXPECT_EQ(hostErrorOf([&] { kxGetField(array, 0, "a"); }), "Korvan:indexOutOfRange");
  kxDestroyArray(array);
}

TEST(StructArray, AnUnknownFieldReadsAsNullAndCannotBeSet) {
  const char* name = "a";
  const std::size_t count = 1;
  kxArray* array = kxCreateStructArray(1, &count, 1, &name);
  kxArray* value = kxCreateDoubleScalar(1);

  EXPECT_EQ(kxGetField(array, 0, "A"), nullptr);
  EXPECT_EQ(kxGetField(array, 0, ""), nullptr);
  EXPECT_EQ(hostErrorOf([&] { kxSetField(array, 0, "b", value); }), "Korvan:badArgument");
  EXPECT_EQ(hostErrorOf([&] { kxGetFieldName(array, 1); }), "Korvan:indexOutOfRange");
  EXPECT_EQ(hostErrorOf([&] { kxGetField(array, 0, nullptr); }), "Korvan:badArgument");

  kxDestroyArray(value);
  kxDestroyArray(array);
}

TEST(StructArray, FieldNamesMustBeThereAndDiffer) {
  const std::size_t count = 1;
  const std::array<const char*, 2> twice{"a", "a"};
  const std::array<const char*, 2> empty{"a", ""};
  const std::array<const char*, 2> missing{"a", nullptr};

  for (const auto& names : {twice, empty, missing}) {
    EXPECT_EQ(hostErrorOf([&] { kxCreateStructArray(1, &count, 2, names.data()); }),
              "Korvan:badArgument");
  }
  EXPECT_EQ(hostErrorOf([&] { kxCreateStructArray(1, &count, 2, nullptr); }), "Korvan:badArgument");
  EXPECT_EQ(liveArrays(), 0u);
}

TEST(StructArray, AHundredThousandFieldsAreFoundByName) {
  std::vector<std::string> names;
  std::vector<const char*> pointers;
  for (int i = 0; i < 100'000; ++i) names.push_back("field" + std::to_string(i));
  for (const std::string& name : names) pointers.push_back(name.c_str());
  const std::size_t count = 1;
  kxArray* array = kxCreateStructArray(1, &count, pointers.size(), pointers.data());

  for (std::size_t i = 0; i < names.size(); ++i) {
    kxSetField(array, 0, pointers[i], kxCreateDoubleScalar(static_cast<double>(i)));
  }

  EXPECT_EQ(*kxGetDoubles(kxGetField(array, 0, "field99999")), 99999.0);
  kxDestroyArray(array);
}

TEST(StructArray, AFieldOfSomethingElseIsRefused) {
  const std::size_t count = 1;
  kxArray* cell = kxCreateCellArray(1, &count);
  kxArray* structure = kxCreateStructArray(1, &count, 0, nullptr);

  EXPECT_EQ(hostErrorOf([&] { kxGetField(cell, 0, "a"); }), "Korvan:notStruct");
  EXPECT_EQ(hostErrorOf([&] { kxSetField(cell, 0, "a", nullptr); }), "Korvan:notStruct");
  EXPECT_EQ(hostErrorOf([&] { kxGetNumberOfFields(cell); }), "Korvan:notStruct");
  EXPECT_EQ(hostErrorOf([&] { kxGetCell(structure, 0); }), "Korvan:notCell");
  EXPECT_EQ(hostErrorOf([&] { kxSetCell(structure, 0, nullptr); }), "Korvan:notCell");

  kxDestroyArray(cell);
  kxDestroyArray(structure);
}

TEST(StructArray, AStoredValueOutlivesTheCallThatMadeIt) {
  const std::size_t count = 1;
  kxArray* cell = kxCreateCellArray(1, &count);
  {
    CallScope call;
    kxSetCell(cell, 0, kxCreateDoubleScalar(3));
  }

  EXPECT_EQ(*kxGetDoubles(kxGetCell(cell, 0)), 3.0);
  kxDestroyArray(cell);
}

}  // namespace
