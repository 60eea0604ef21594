// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "hostarray/matrix.h"
#include "hostarray/standin/CallScope.h"
#include "tests/hostarray/HostErrors.h"

using hostarray::standin::CallScope;
using test::hostErrorOf;

namespace {

kxArray* makeChars(const std::vector<std::size_t>& sizes) {
  return kxCreateCharArray(sizes.size(), sizes.data());
}

TEST(GetUstring, TextComesBackUnitByUnit) {
  const CallScope call;
  const std::u16string text = u"\u00fcber \U0001F600\U00010000";

  EXPECT_EQ(matrix::get_ustring(kxCreateString_UTF16(text.c_str())), text);
}

TEST(GetUstring, ALoneSurrogateComesBackUnchanged) {
  const CallScope call;
  const std::u16string text{u'a', static_cast<char16_t>(0xD800), u'b'};

  EXPECT_EQ(matrix::get_ustring(kxCreateString_UTF16(text.c_str())), text);
}

TEST(GetUstring, AZeroInsideTheRowBelongsToTheText) {
  const CallScope call;
  kxArray* array = makeChars({1, 3});
  kxGetChars(array)[0] = u'a';
  kxGetChars(array)[2] = u'b';

  EXPECT_EQ(matrix::get_ustring(array), std::u16string(u"a\0b", 3));
}

TEST(GetUstring, AnEmptyCharArrayOfAnyShapeIsTheEmptyText) {
  const CallScope call;

  for (const auto& sizes :
       std::vector<std::vector<std::size_t>>{{0, 0}, {1, 0}, {0, 5}, {3, 0, 2}}) {
    EXPECT_EQ(matrix::get_ustring(makeChars(sizes)), u"");
  }
}

TEST(GetUstring, MoreThanOneRowIsNotText) {
  const CallScope call;

  for (const auto& sizes : std::vector<std::vector<std::size_t>>{{2, 1}, {2, 3}, {1, 2, 2}}) {
    EXPECT_EQ(hostErrorOf([&] { matrix::get_ustring(makeChars(sizes)); }), "Korvan:notText");
  }
}

TEST(GetUstring, NullIsAMissingValue) {
  EXPECT_EQ(hostErrorOf([] { matrix::get_ustring(nullptr); }), "Korvan:missingValue");
}

TEST(GetUstring, OtherClassesAreNotText) {
  const CallScope call;
  const std::size_t one = 1;

  EXPECT_EQ(hostErrorOf([] { matrix::get_ustring(kxCreateDoubleScalar(1)); }), "Korvan:notText");
  EXPECT_EQ(hostErrorOf([&] { matrix::get_ustring(kxCreateCellArray(1, &one)); }),
            "Korvan:notText");
  EXPECT_EQ(hostErrorOf([&] { matrix::get_ustring(kxCreateStructArray(1, &one, 0, nullptr)); }),
            "Korvan:notText");
}

TEST(HostError, TheCountErrorsHaveTheirIdentifiersAndASentence) {
  EXPECT_EQ(hostErrorOf([] { matrix::detail::error_maxlhs(); }), "Korvan:tooManyOutputs");
  EXPECT_EQ(hostErrorOf([] { matrix::detail::error_maxrhs(); }), "Korvan:tooManyInputs");
  EXPECT_EQ(hostErrorOf([] { matrix::detail::error_minrhs(); }), "Korvan:notEnoughInputs");
  try {
    matrix::detail::error_minrhs();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "Not enough input arguments.");
  }
}

}  // namespace
