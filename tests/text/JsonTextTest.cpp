// SPDX-License-Identifier: MIT
#include "text/JsonText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using text::JsonError;
using text::parseJson;
using text::parseJsonIfAny;
using text::wholeNumber;

std::string errorOf(std::string_view text) {
  try {
    parseJson(text);
  } catch (const JsonError& error) {
    return error.what();
  }
  return "no error";
}

TEST(JsonText, MembersKeepTheirOrder) {
  EXPECT_EQ(parseJson(R"({"z": [1, {"y": null}], "a": true})").dump(),
            R"({"z":[1,{"y":null}],"a":true})");
}

TEST(JsonText, AMemberGivenTwiceIsRefused) {
  EXPECT_EQ(errorOf(R"({"a": {"b": 1}, "c": 2, "a": 3})"), ".a: it is given twice");
  EXPECT_EQ(errorOf(R"([0, {"x": [1, {"b": [], "b": 1}]}])"), "[1].x[1].b: it is given twice");
  EXPECT_EQ(errorOf(R"({"w": {}, "x": {"y": {"c": {}, "d": 0, "c": 1}}})"),
            ".x.y.c: it is given twice");
  EXPECT_EQ(errorOf(R"([{"a": 1}, {"a": 1}])"), "no error");
}

TEST(JsonText, TheDepthIsLimited) {
  const std::string most = std::string(256, '[') + std::string(256, ']');
  const std::string tooMany = std::string(100000, '[') + std::string(100000, ']');

  EXPECT_EQ(errorOf(most), "no error");
  EXPECT_EQ(errorOf(tooMany), "it is more than 256 levels deep");
}

TEST(JsonText, NumbersBeyondADoubleAreRefused) {
  EXPECT_NE(errorOf("1e999").find("1e999"), std::string::npos);
  EXPECT_EQ(parseJson("123456789012345678901234567890").get<double>(),
            123456789012345678901234567890.0);
}

TEST(JsonText, SyntaxErrorsNameThePlace) {
  EXPECT_NE(errorOf("{\"a\": 1,\n \"b\" 2}").find("line 2, column 6"), std::string::npos);
  EXPECT_NE(errorOf("1 2"), "no error");
  EXPECT_NE(errorOf(""), "no error");
  EXPECT_NE(errorOf("\"\xff\""), "no error");
  EXPECT_NE(errorOf("\"\\ud800\""), "no error");
}

TEST(JsonText, TextThatIsNotJsonGivesNoValue) {
  EXPECT_FALSE(parseJsonIfAny("wave.kraddon").has_value());
  EXPECT_FALSE(parseJsonIfAny("[1, 2").has_value());
  EXPECT_FALSE(parseJsonIfAny("").has_value());
  EXPECT_TRUE(parseJsonIfAny("12").has_value());
  EXPECT_THROW(parseJsonIfAny(R"({"a": 1, "a": 2})"), JsonError);
}

TEST(JsonText, HalfACharacterIsRefusedAndNotTakenForOtherText) {
  for (const char* text : {R"("\ud800")", R"("\udc00")", R"(["\ud800x"])", R"({"\udfff": 1})"}) {
    EXPECT_THROW(parseJsonIfAny(text), JsonError) << text;
  }
  EXPECT_EQ(parseJsonIfAny(R"("\ud83c\udf0a")")->get<std::string>(), "\xF0\x9F\x8C\x8A");
}

TEST(JsonText, ZeroKeepsItsSign) {
  EXPECT_TRUE(std::signbit(parseJson("-0").get<double>()));
  EXPECT_TRUE(std::signbit(parseJson("[-0]")[0].get<double>()));
  EXPECT_FALSE(std::signbit(parseJson("0").get<double>()));
  EXPECT_EQ(parseJson("-1").get<double>(), -1.0);
}

TEST(JsonText, OnlyWholeNumbersThatFitAreWholeNumbers) {
  EXPECT_EQ(wholeNumber(parseJson("7")), 7u);
  EXPECT_EQ(wholeNumber(parseJson("18446744073709551615")), 18446744073709551615u);
  for (const char* zero : {"0", "-0", "0.0"}) EXPECT_EQ(wholeNumber(parseJson(zero)), 0u) << zero;
  for (const char* other :
       {"-1", "0.5", "7.0", "1e30", "18446744073709551616", "\"7\"", "true", "null", "[7]", "{}"}) {
    EXPECT_FALSE(wholeNumber(parseJson(other)).has_value()) << other;
  }
}

TEST(JsonText, ManyMembersTakeLinearTime) {
  std::string text = "{";
  for (int i = 0; i < 200000; ++i) text += (i ? ",\"k" : "\"k") + std::to_string(i) + "\":1";
  text += "}";

  EXPECT_EQ(parseJson(text).size(), 200000u);
}

}  // namespace
