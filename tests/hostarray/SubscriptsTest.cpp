// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <limits>
#include <vector>

#include "hostarray/kxarray.h"
#include "hostarray/matrix.h"
#include "hostarray/standin/CallScope.h"
#include "hostarray/standin/testing.h"
#include "tests/hostarray/HostErrors.h"

using hostarray::standin::CallScope;
using hostarray::standin::failCreation;
using hostarray::standin::liveArrays;
using test::hostErrorOf;

namespace {

class Subscripts : public testing::Test {
 protected:
  ~Subscripts() override {
    failCreation(0);
    for (kxArray* array : owned_) kxDestroyArray(array);
    EXPECT_EQ(liveArrays(), 0u);
  }

  kxArray* own(kxArray* array) {
    owned_.push_back(array);
    return array;
  }

  /// array(values...), owned by the test.
  kxArray* at(const kxArray* array, const std::vector<double>& values) {
    std::vector<kxArray*> subscripts;
    for (const double value : values) subscripts.push_back(own(kxCreateDoubleScalar(value)));
    return own(kxSubscriptedReference(array, subscripts.size(), subscripts.data()));
  }

  /// 1, 2, 3, ... in linear order.
  kxArray* doubles(const std::vector<std::size_t>& sizes) {
    kxArray* array = own(kxCreateDoubleArray(sizes.size(), sizes.data()));
    for (std::size_t i = 0; i < kxGetNumberOfElements(array); ++i) {
      kxGetDoubles(array)[i] = static_cast<double>(i + 1);
    }
    return array;
  }

  std::vector<kxArray*> owned_;
};

TEST_F(Subscripts, OneSubscriptTakesTheElementInLinearOrder) {
  kxArray* array = doubles({2, 3});

  EXPECT_EQ(*kxGetDoubles(at(array, {1})), 1.0);
  EXPECT_EQ(*kxGetDoubles(at(array, {4})), 4.0);
  EXPECT_EQ(*kxGetDoubles(at(array, {6})), 6.0);
  EXPECT_EQ(kxGetNumberOfElements(at(array, {4})), 1u);
}

TEST_F(Subscripts, SeveralSubscriptsCountColumnsFirst) {
  kxArray* array = doubles({2, 3, 4});

  EXPECT_EQ(*kxGetDoubles(at(array, {2, 1, 1})), 2.0);
  EXPECT_EQ(*kxGetDoubles(at(array, {1, 2, 1})), 3.0);
  EXPECT_EQ(*kxGetDoubles(at(array, {1, 1, 2})), 7.0);
  EXPECT_EQ(*kxGetDoubles(at(array, {2, 3, 4})), 24.0);
}

TEST_F(Subscripts, TheLastSubscriptRunsOverTheDimensionsThatAreLeft) {
  kxArray* array = doubles({2, 3, 4});

  EXPECT_EQ(*kxGetDoubles(at(array, {2, 12})), 24.0);
  EXPECT_EQ(hostErrorOf([&] { at(array, {2, 13}); }), "Korvan:indexOutOfRange");
}

TEST_F(Subscripts, SubscriptsBeyondTheDimensionsCanOnlyBeOne) {
  kxArray* array = doubles({2, 3});

  EXPECT_EQ(*kxGetDoubles(at(array, {2, 3, 1, 1})), 6.0);
  EXPECT_EQ(hostErrorOf([&] { at(array, {2, 3, 2}); }), "Korvan:indexOutOfRange");
}

TEST_F(Subscripts, OnlyWholeNumbersFromOneToTheExtentAreElements) {
  kxArray* array = doubles({3});
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();

  for (const double k : {0.0, -1.0, 1.5, 4.0, 1e300, nan, infinity, -infinity}) {
    EXPECT_EQ(hostErrorOf([&] { at(array, {k}); }), "Korvan:indexOutOfRange") << k;
  }
}

TEST_F(Subscripts, AnEmptyArrayHasNoElement) {
  kxArray* array = doubles({0, 3});

  EXPECT_EQ(hostErrorOf([&] { at(array, {1}); }), "Korvan:indexOutOfRange");
  EXPECT_EQ(hostErrorOf([&] { at(array, {1, 1}); }), "Korvan:indexOutOfRange");
}

TEST_F(Subscripts, SubscriptsMustBeSingleNumbers) {
  kxArray* array = doubles({3});
  kxArray* text = own(kxCreateString_UTF16(u"1"));
  kxArray* two = doubles({2});
  kxArray* missing = nullptr;

  EXPECT_EQ(hostErrorOf([&] { kxSubscriptedReference(array, 1, &text); }), "Korvan:notDouble");
  EXPECT_EQ(hostErrorOf([&] { kxSubscriptedReference(array, 1, &two); }), "Korvan:badArgument");
  EXPECT_EQ(hostErrorOf([&] { kxSubscriptedReference(array, 1, &missing); }),
            "Korvan:missingValue");
  EXPECT_EQ(hostErrorOf([&] { kxSubscriptedReference(array, 0, &two); }), "Korvan:badArgument");
  EXPECT_EQ(hostErrorOf([&] { kxSubscriptedReference(array, 1, nullptr); }), "Korvan:badArgument");
}

TEST_F(Subscripts, AStructElementIsADeepCopyInWhichNullStaysNull) {
  const std::array<const char*, 3> names{"text", "list", "unset"};
  const std::size_t count = 2;
  kxArray* array = own(kxCreateStructArray(1, &count, names.size(), names.data()));
  kxArray* list = kxCreateCellArray(1, &count);
  kxSetCell(list, 1, kxCreateString_UTF16(u"inner"));
  kxSetField(array, 1, "text", kxCreateString_UTF16(u"old"));
  kxSetField(array, 1, "list", list);

  kxArray* copy = at(array, {2});
  kxSetField(array, 1, "text", kxCreateString_UTF16(u"new"));
  kxSetCell(list, 1, nullptr);

  EXPECT_TRUE(kxIsStruct(copy));
  EXPECT_EQ(kxGetNumberOfElements(copy), 1u);
  ASSERT_EQ(kxGetNumberOfFields(copy), 3u);
  EXPECT_STREQ(kxGetFieldName(copy, 1), "list");
  EXPECT_EQ(matrix::get_ustring(kxGetField(copy, 0, "text")), u"old");
  EXPECT_EQ(kxGetField(copy, 0, "unset"), nullptr);
  const kxArray* copiedList = kxGetField(copy, 0, "list");
  EXPECT_EQ(kxGetCell(copiedList, 0), nullptr);
  EXPECT_EQ(matrix::get_ustring(kxGetCell(copiedList, 1)), u"inner");
}

TEST_F(Subscripts, ACellElementIsACellOfOne) {
  const std::size_t count = 2;
  kxArray* array = own(kxCreateCellArray(1, &count));
  kxSetCell(array, 1, kxCreateString_UTF16(u"x"));

  kxArray* copy = at(array, {2});

  ASSERT_TRUE(kxIsCell(copy));
  EXPECT_EQ(kxGetNumberOfElements(copy), 1u);
  EXPECT_EQ(matrix::get_ustring(kxGetCell(copy, 0)), u"x");
}

TEST_F(Subscripts, ATextElementIsOneCodeUnit) {
  kxArray* text = own(kxCreateString_UTF16(u"abc"));

  EXPECT_EQ(matrix::get_ustring(at(text, {2})), u"b");
}

TEST_F(Subscripts, AnElementOfAnyDepthIsCopied) {
  const std::size_t one = 1;
  kxArray* array = kxCreateCellArray(1, &one);
  for (int i = 0; i < 200'000; ++i) {
    kxArray* outer = kxCreateCellArray(1, &one);
    kxSetCell(outer, 0, array);
    array = outer;
  }
  own(array);
  const std::size_t before = liveArrays();

  at(array, {1});

  EXPECT_EQ(liveArrays(), 2 * before + 1);  // the copy, and the subscript
}

TEST_F(Subscripts, TheResultBelongsToTheCurrentCall) {
  kxArray* array = doubles({3});
  kxArray* k = own(kxCreateDoubleScalar(2));
  const std::size_t before = liveArrays();
  {
    CallScope call;
    kxSubscriptedReference(array, 1, &k);
    EXPECT_EQ(liveArrays(), before + 1);
    EXPECT_EQ(call.unowned(), 0u);
  }

  EXPECT_EQ(liveArrays(), before);
}

TEST_F(Subscripts, TheCopyCanFailLikeAnyCreation) {
  kxArray* array = doubles({3});
  kxArray* k = own(kxCreateDoubleScalar(2));
  const std::size_t before = liveArrays();
  failCreation(1);

  EXPECT_EQ(hostErrorOf([&] { kxSubscriptedReference(array, 1, &k); }), "Korvan:outOfMemory");

  EXPECT_EQ(liveArrays(), before);
}

}  // namespace
