// SPDX-License-Identifier: MIT
#include "tool/json/HostJson.h"

#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>
#include <string>

#include "hostarray/matrix.h"
#include "hostarray/standin/testing.h"

namespace {

using text::JsonError;
using tool::json::HostArrayPointer;

HostArrayPointer read(std::string_view json) {
  return tool::json::toHostArray(text::parseJson(json));
}

std::string write(const HostArrayPointer& array) {
  std::string text;
  text::JsonWriter writer(text, text::JsonWriter::Layout::Compact);
  tool::json::writeHostArray(array.get(), writer);
  return text;
}

std::string errorOf(std::string_view json) {
  try {
    read(json);
  } catch (const JsonError& error) {
    return error.what();
  }
  return "no error";
}

std::u16string fieldText(const kxArray* array, std::size_t index, const char* name) {
  return matrix::get_ustring(kxGetField(array, index, name));
}

TEST(HostJson, ATextBecomesACharRow) {
  const HostArrayPointer array = read(R"("wave 🌊")");

  EXPECT_TRUE(kxIsChar(array.get()));
  EXPECT_EQ(matrix::get_ustring(array.get()), u"wave 🌊");
  EXPECT_EQ(kxGetDimensions(array.get())[0], 1u);
}

TEST(HostJson, ANulInATextDoesNotEndIt) {
  const HostArrayPointer array = read("\"a\\u0000b\"");

  EXPECT_EQ(matrix::get_ustring(array.get()), std::u16string(u"a\0b", 3));
}

TEST(HostJson, TrueAndFalseBecomeTheirWords) {
  EXPECT_EQ(matrix::get_ustring(read("true").get()), u"true");
  EXPECT_EQ(matrix::get_ustring(read("false").get()), u"false");
}

TEST(HostJson, ANumberBecomesADouble) {
  const HostArrayPointer array = read("-2.5e3");

  ASSERT_TRUE(kxIsDouble(array.get()));
  EXPECT_EQ(kxGetConstDoubles(array.get())[0], -2500.0);
}

TEST(HostJson, AnObjectBecomesAStructWithFieldsInOrderAndNullsUnset) {
  const HostArrayPointer array = read(R"({"zeta": "1", "alpha": null, "mid": {"x": "2"}})");

  ASSERT_TRUE(kxIsStruct(array.get()));
  ASSERT_EQ(kxGetNumberOfFields(array.get()), 3u);
  EXPECT_STREQ(kxGetFieldName(array.get(), 0), "zeta");
  EXPECT_STREQ(kxGetFieldName(array.get(), 1), "alpha");
  EXPECT_EQ(kxGetField(array.get(), 0, "alpha"), nullptr);
  EXPECT_EQ(fieldText(kxGetField(array.get(), 0, "mid"), 0, "x"), u"2");
}

TEST(HostJson, AnArrayOfObjectsBecomesARowOfStructs) {
  const HostArrayPointer array = read(R"([{"a": "1", "b": "2"}, {"b": "4", "a": "3"}])");

  ASSERT_TRUE(kxIsStruct(array.get()));
  EXPECT_EQ(kxGetDimensions(array.get())[0], 1u);
  EXPECT_EQ(kxGetNumberOfElements(array.get()), 2u);
  EXPECT_EQ(fieldText(array.get(), 1, "a"), u"3");
}

TEST(HostJson, AnArrayOfAnythingElseBecomesACell) {
  EXPECT_TRUE(kxIsCell(read(R"(["a", 1])").get()));
  EXPECT_TRUE(kxIsCell(read(R"([{"a": "1"}, "x"])").get()));
  EXPECT_TRUE(kxIsCell(read("[]").get()));
  EXPECT_EQ(kxGetNumberOfElements(read("[]").get()), 0u);
  EXPECT_EQ(kxGetDimensions(read("[]").get())[0], 1u);
}

TEST(HostJson, AnObjectWithAClassAmongOthersMakesACell) {
  const HostArrayPointer array = read(R"([{"$class": "double", "size": [0, 0]}])");

  ASSERT_TRUE(kxIsCell(array.get()));
  EXPECT_TRUE(kxIsDouble(kxGetCell(array.get(), 0)));
}

struct RoundTrip {
  const char* name;
  const char* json;
};

class HostJsonForms : public testing::TestWithParam<RoundTrip> {};

TEST_P(HostJsonForms, ComeBackAsTheyWere) {
  const std::size_t before = hostarray::standin::liveArrays();
  {
    const HostArrayPointer array = read(GetParam().json);

    const std::string text = write(array);

    EXPECT_EQ(text, GetParam().json);
  }
  EXPECT_EQ(hostarray::standin::liveArrays(), before);
}

INSTANTIATE_TEST_SUITE_P(
    All, HostJsonForms,
    testing::Values(
        RoundTrip{"Text", R"("a\"\\\n\u0001/é")"}, RoundTrip{"EmptyText", R"("")"},
        RoundTrip{"Number", "0.1"}, RoundTrip{"WholeNumber", "3"},
        RoundTrip{"LargeNumber", "1e+300"}, RoundTrip{"NegativeZero", "-0.0"},
        RoundTrip{"Struct", R"({"b":"1","a":null})"}, RoundTrip{"StructWithoutFields", "{}"},
        RoundTrip{"StructRow", R"([{"a":"1"},{"a":null}])"},
        RoundTrip{"Cell", R"(["a",1,["b"],[]])"}, RoundTrip{"EmptyCell", "[]"},
        RoundTrip{"MixedCell", R"([{"a":"1"},"x"])"},
        RoundTrip{"EmptyStruct",
                  R"({"$class":"struct","size":[1,0],"fields":["a","b"],"elements":[]})"},
        RoundTrip{"StructColumn", R"({"$class":"struct","size":[2,1],"fields":["a"],)"
                                  R"("elements":[{"a":"1"},{"a":null}]})"},
        RoundTrip{"StructWithClassField", R"({"$class":"struct","size":[1,1],"fields":["$class"],)"
                                          R"("elements":[{"$class":"x"}]})"},
        RoundTrip{"CellOfStructs", R"({"$class":"cell","size":[1,1],"elements":[{"a":"1"}]})"},
        RoundTrip{"CellWithHole", R"({"$class":"cell","size":[1,2],"elements":["a",null]})"},
        RoundTrip{"CellSquare", R"({"$class":"cell","size":[2,2],"elements":["a","b",1,2]})"},
        RoundTrip{"EmptyChar", R"({"$class":"char","size":[0,0],"elements":[]})"},
        RoundTrip{"CharBlock", R"({"$class":"char","size":[2,2],"elements":["a","é","🌊"]})"},
        RoundTrip{"EmptyDouble", R"({"$class":"double","size":[0,0],"elements":[]})"},
        RoundTrip{"DoubleRow", R"({"$class":"double","size":[1,2],"elements":[1,2.5]})"},
        RoundTrip{"NotANumber", R"({"$class":"double","size":[1,1],"elements":["NaN"]})"},
        RoundTrip{"Infinities",
                  R"({"$class":"double","size":[2,1],"elements":["Infinity","-Infinity"]})"},
        RoundTrip{"ThreeDimensions", R"({"$class":"cell","size":[1,1,2],"elements":["a","b"]})"}),
    [](const auto& test) { return std::string(test.param.name); });

struct Refusal {
  const char* name;
  const char* json;
  const char* why;
};

class HostJsonRefusals : public testing::TestWithParam<Refusal> {};

TEST_P(HostJsonRefusals, NameThePlaceAndTheReason) {
  const std::size_t before = hostarray::standin::liveArrays();

  EXPECT_EQ(errorOf(GetParam().json), GetParam().why);

  EXPECT_EQ(hostarray::standin::liveArrays(), before);
}

INSTANTIATE_TEST_SUITE_P(
    All, HostJsonRefusals,
    testing::Values(
        Refusal{"Null", "null", "null is allowed only as a field of a struct"},
        Refusal{"NullInCell", R"(["a", null])", "[1]: null is allowed only as a field of a struct"},
        Refusal{"DeepNull", R"({"a": [{"b": ["x", null]}]})",
                ".a[0].b[1]: null is allowed only as a field of a struct"},
        Refusal{"OtherField", R"([{"a": "1"}, {"b": "1"}])",
                "[1]: the field 'b' is not one of the first element"},
        Refusal{"FewerFields", R"([{"a": "1", "b": "2"}, {"a": "1"}])",
                "[1]: it has fewer fields than the first element"},
        Refusal{"UnnamedField", R"({"": "1"})", "a field has no name"},
        Refusal{"NulInName", "{\"a\\u0000b\": \"1\"}", "the name of a field contains NUL"},
        Refusal{"UnknownClass", R"({"$class": "logical", "size": [1, 1]})",
                R"(.$class: expected "struct", "cell", "char" or "double")"},
        Refusal{"NoSize", R"({"$class": "cell"})", "the member 'size' is missing"},
        Refusal{"NegativeSize", R"({"$class": "cell", "size": [1, -1]})",
                ".size: expected an array of whole numbers"},
        Refusal{"WrongCount", R"({"$class": "cell", "size": [2, 2], "elements": ["a"]})",
                "the size requires 4 elements, and there are 1"},
        Refusal{"HugeSize", R"({"$class": "double", "size": [4294967296, 4294967296]})",
                "the size requires 18446744073709551615 elements, and there are 0"},
        Refusal{"HugeEmptySize", R"({"$class": "cell", "size": [1], "other": 1})",
                ".other: no member has that name"},
        Refusal{"NoFields", R"({"$class": "struct", "size": [1, 0]})",
                "the member 'fields' is missing"},
        Refusal{"FieldsOfCell", R"({"$class": "cell", "size": [1, 0], "fields": []})",
                "only a struct has 'fields'"},
        Refusal{"FieldTwice", R"({"$class": "struct", "size": [1, 0], "fields": ["a", "a"]})",
                ".fields: the field 'a' is given twice"},
        Refusal{"UnknownField",
                R"({"$class": "struct", "size": [1], "fields": ["a"], "elements": [{"b": "1"}]})",
                ".elements[0]: the field 'b' is not among 'fields'"},
        Refusal{"TextAmongDoubles", R"({"$class": "double", "size": [1], "elements": ["1"]})",
                ".elements[0]: expected a number, or \"NaN\", \"Infinity\" or \"-Infinity\""}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(HostJson, LoneSurrogatesArePrintedAsEscapes) {
  const HostArrayPointer array = tool::json::toHostText(u"a\xD83C!");

  EXPECT_EQ(write(array), R"("a\ud83c!")");
}

TEST(HostJson, ArraysNestedTooDeeplyAreRefused) {
  HostArrayPointer outer = tool::json::toHostText(u"x");
  const std::array<std::size_t, 2> sizes{1, 1};
  for (int i = 0; i < 300; ++i) {
    HostArrayPointer cell(kxCreateCellArray(sizes.size(), sizes.data()));
    kxSetCell(cell.get(), 0, outer.release());
    outer = std::move(cell);
  }

  EXPECT_THROW(write(outer), JsonError);
}

}  // namespace
