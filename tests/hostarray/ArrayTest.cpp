// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "hostarray/kxarray.h"
#include "hostarray/standin/testing.h"
#include "tests/hostarray/HostErrors.h"

using hostarray::standin::failCreation;
using hostarray::standin::liveArrays;
using test::hostErrorOf;

namespace {

std::vector<std::size_t> sizesOf(const kxArray* array) {
  const std::size_t* sizes = kxGetDimensions(array);
  return {sizes, sizes + kxGetNumberOfDimensions(array)};
}

kxArray* makeDoubles(const std::vector<std::size_t>& sizes) {
  return kxCreateDoubleArray(sizes.size(), sizes.data());
}

TEST(Array, TextBecomesOneRowOfItsCodeUnits) {
  const std::u16string text = u"a\u00e4\U0001F600";

  kxArray* array = kxCreateString_UTF16(text.c_str());

  EXPECT_TRUE(kxIsChar(array));
  EXPECT_EQ(sizesOf(array), (std::vector<std::size_t>{1, 4}));
  EXPECT_EQ(std::u16string(kxGetConstChars(array), 4), text);
  kxDestroyArray(array);
}

TEST(Array, EmptyTextIsAnArrayWithoutElements) {
  kxArray* array = kxCreateString_UTF16(u"");

  EXPECT_TRUE(kxIsChar(array));
  EXPECT_TRUE(kxIsEmpty(array));
  EXPECT_EQ(sizesOf(array), (std::vector<std::size_t>{1, 0}));
  kxDestroyArray(array);
}

TEST(Array, CharArrayOfAnyShapeStartsAsZerosAndIsWrittenInPlace) {
  const std::array<std::size_t, 2> sizes{2, 3};
  kxArray* array = kxCreateCharArray(2, sizes.data());
  EXPECT_EQ(std::u16string(kxGetConstChars(array), 6), std::u16string(6, u'\0'));

  kxGetChars(array)[5] = u'x';

  EXPECT_EQ(kxGetConstChars(array)[5], u'x');
  EXPECT_EQ(kxGetNumberOfElements(array), 6u);
  kxDestroyArray(array);
}

TEST(Array, DoubleScalarIsWrittenInPlace) {
  kxArray* array = kxCreateDoubleScalar(0.0);

  *kxGetDoubles(array) = 2.5;

  EXPECT_TRUE(kxIsDouble(array));
  EXPECT_EQ(*kxGetConstDoubles(array), 2.5);
  EXPECT_EQ(sizesOf(array), (std::vector<std::size_t>{1, 1}));
  kxDestroyArray(array);
}

TEST(Array, OneDimensionMakesARow) {
  const std::size_t size = 7;

  kxArray* doubles = kxCreateDoubleArray(1, &size);
  kxArray* cells = kxCreateCellArray(1, &size);
  kxArray* structs = kxCreateStructArray(1, &size, 0, nullptr);

  const std::vector<std::size_t> row{1, 7};
  EXPECT_EQ(sizesOf(doubles), row);
  EXPECT_EQ(sizesOf(cells), row);
  EXPECT_EQ(sizesOf(structs), row);
  for (kxArray* array : {doubles, cells, structs}) kxDestroyArray(array);
}

TEST(Array, AZeroAmongTheSizesMakesItEmptyHoweverLargeTheOthersAre) {
  const std::size_t huge = std::numeric_limits<std::size_t>::max();

  kxArray* array = makeDoubles({huge, huge, 0});

  EXPECT_EQ(kxGetNumberOfElements(array), 0u);
  EXPECT_TRUE(kxIsEmpty(array));
  kxDestroyArray(array);
}

TEST(Array, SizesWhoseProductOverflowsAreOutOfMemory) {
  const std::size_t half = std::size_t{1} << 32;

  EXPECT_EQ(hostErrorOf([&] { makeDoubles({half, half}); }), "Korvan:outOfMemory");
  EXPECT_EQ(hostErrorOf([&] { makeDoubles({half, half, 2}); }), "Korvan:outOfMemory");
  EXPECT_EQ(liveArrays(), 0u);
}

TEST(Array, SizesThatNoMachineHasMemoryForAreOutOfMemory) {
  const std::size_t most = std::numeric_limits<std::size_t>::max();

  EXPECT_EQ(hostErrorOf([&] { makeDoubles({most}); }), "Korvan:outOfMemory");
  EXPECT_EQ(hostErrorOf([&] { makeDoubles({most - 1}); }), "Korvan:outOfMemory");
  EXPECT_EQ(hostErrorOf([&] { kxCreateCharArray(1, &most); }), "Korvan:outOfMemory");
  EXPECT_EQ(hostErrorOf([&] { kxCreateCellArray(1, &most); }), "Korvan:outOfMemory");
  const std::array<const char*, 2> names{"a", "b"};
  EXPECT_EQ(hostErrorOf([&] { kxCreateStructArray(1, &most, 2, names.data()); }),
            "Korvan:outOfMemory");
  EXPECT_EQ(liveArrays(), 0u);
}

TEST(Array, AnArrayNeedsADimension) {
  const std::size_t size = 1;

  EXPECT_EQ(hostErrorOf([&] { kxCreateCellArray(0, &size); }), "Korvan:badArgument");
  EXPECT_EQ(hostErrorOf([&] { kxCreateCellArray(1, nullptr); }), "Korvan:badArgument");
  EXPECT_EQ(hostErrorOf([&] { kxCreateString_UTF16(nullptr); }), "Korvan:badArgument");
}

TEST(Array, QueryingNullIsAMissingValueError) {
  EXPECT_EQ(hostErrorOf([] { kxGetClass(nullptr); }), "Korvan:missingValue");
  EXPECT_EQ(hostErrorOf([] { kxIsCell(nullptr); }), "Korvan:missingValue");
  EXPECT_EQ(hostErrorOf([] { kxIsEmpty(nullptr); }), "Korvan:missingValue");
  EXPECT_EQ(hostErrorOf([] { kxGetNumberOfElements(nullptr); }), "Korvan:missingValue");
  EXPECT_EQ(hostErrorOf([] { kxGetField(nullptr, 0, "a"); }), "Korvan:missingValue");
}

TEST(Array, ValuesOfAnotherClassAreRefused) {
  kxArray* text = kxCreateString_UTF16(u"x");
  kxArray* number = kxCreateDoubleScalar(1);

  EXPECT_EQ(hostErrorOf([&] { kxGetDoubles(text); }), "Korvan:notDouble");
  EXPECT_EQ(hostErrorOf([&] { kxGetConstDoubles(text); }), "Korvan:notDouble");
  EXPECT_EQ(hostErrorOf([&] { kxGetChars(number); }), "Korvan:notText");
  EXPECT_EQ(hostErrorOf([&] { kxGetConstChars(number); }), "Korvan:notText");
  kxDestroyArray(text);
  kxDestroyArray(number);
}

TEST(Array, TheCreationThatIsToFailDoesAndTheNextSucceeds) {
  failCreation(2);

  kxArray* first = kxCreateDoubleScalar(1);
  EXPECT_EQ(hostErrorOf([] { kxCreateString_UTF16(u"x"); }), "Korvan:outOfMemory");
  kxArray* third = kxCreateDoubleScalar(3);

  EXPECT_EQ(liveArrays(), 2u);
  kxDestroyArray(first);
  kxDestroyArray(third);
}

TEST(Array, FailingCanBeSwitchedOff) {
  failCreation(1);
  failCreation(0);

  kxArray* array = kxCreateDoubleScalar(1);

  EXPECT_EQ(liveArrays(), 1u);
  kxDestroyArray(array);
  EXPECT_EQ(liveArrays(), 0u);
}

TEST(Array, DestroyingNullDoesNothing) {
  kxDestroyArray(nullptr);

  EXPECT_EQ(liveArrays(), 0u);
}

}  // namespace
