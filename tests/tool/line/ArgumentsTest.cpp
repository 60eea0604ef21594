// SPDX-License-Identifier: MIT
#include "tool/line/Arguments.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "tool/process/Errors.h"

namespace {

using tool::line::CommandSpec;
using tool::line::Invocation;
using tool::line::OperandSpec;
using tool::line::OptionSpec;
using tool::process::UsageError;
using Words = std::vector<std::string>;

constexpr std::array kOperands{
    OperandSpec{.name = "FIRST", .help = "the first"},
    OperandSpec{.name = "REST", .help = "the others", .isRequired = false, .isRepeatable = true}};
constexpr std::array kOptions{
    OptionSpec{.longName = "name", .shortName = 'n', .valueName = "TEXT", .help = "a name"},
    OptionSpec{
        .longName = "exclude", .valueName = "GLOB", .help = "a pattern", .isRepeatable = true},
    OptionSpec{.longName = "long", .shortName = 'l', .help = "a flag"},
    OptionSpec{.longName = "null", .shortName = '0', .help = "a flag that is a digit"}};
constexpr CommandSpec kCommand{
    .name = "test", .summary = "tests", .operands = kOperands, .options = kOptions};

Invocation parse(const Words& words) {
  bool wantsHelp = false;
  return tool::line::parseArguments(kCommand, {}, words, wantsHelp);
}

std::string errorOf(const Words& words) {
  try {
    parse(words);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "no error";
}

TEST(Arguments, OptionsStandAnywhereAmongOperands) {
  const Invocation invocation = parse({"a", "-l", "b", "--name", "x", "c"});

  EXPECT_EQ(invocation.operands(), (Words{"a", "b", "c"}));
  EXPECT_TRUE(invocation.has("long"));
  EXPECT_EQ(invocation.value("name"), "x");
}

TEST(Arguments, ARepeatableOptionTakesOneValueEachTime) {
  const Invocation invocation = parse({"--exclude", "x", "a", "--exclude=y", "b"});

  EXPECT_EQ(invocation.values("exclude"), (Words{"x", "y"}));
  EXPECT_EQ(invocation.operands(), (Words{"a", "b"}));
}

TEST(Arguments, WordsThatLookLikeListsStayWhole) {
  const Words words{"[1,2]", "[]", "{}", "++", "%%", "[a]", "", "a b", "\x01x", "\x01[q]", "-"};

  EXPECT_EQ(parse(words).operands(), words);
}

TEST(Arguments, ValuesThatLookLikeListsStayWhole) {
  EXPECT_EQ(parse({"a", "--name", "[x]"}).value("name"), "[x]");
  EXPECT_EQ(parse({"a", "--name=[x]"}).value("name"), "[x]");
  EXPECT_EQ(parse({"a", "-n[x]"}).value("name"), "[x]");
  EXPECT_EQ(parse({"a", "-ln[x]"}).value("name"), "[x]");
  EXPECT_EQ(parse({"a", "-ln", "[x]"}).value("name"), "[x]");
  EXPECT_EQ(parse({"a", "--name={}"}).value("name"), "{}");
  EXPECT_EQ(parse({"a", "--name="}).value("name"), "");
  EXPECT_EQ(parse({"a", "--name", ""}).value("name"), "");
  EXPECT_EQ(parse({"a", "--name", "-l"}).value("name"), "-l");
  EXPECT_EQ(parse({"a", "--name=a=b"}).value("name"), "a=b");
  EXPECT_EQ(parse({"a", "--name", "--name=x"}).value("name"), "--name=x");
  EXPECT_EQ(parse({"a", "--name", "-nx"}).value("name"), "-nx");
}

TEST(Arguments, NegativeNumbersAreOperandsUnlessTheyAreOptions) {
  const Invocation invocation = parse({"-5", "-.5", "-1e3", "-0"});

  EXPECT_EQ(invocation.operands(), (Words{"-5", "-.5", "-1e3"}));
  EXPECT_TRUE(invocation.has("null"));
}

TEST(Arguments, ANumberThatBeginsWithAnOptionsDigitIsStillOne) {
  const Invocation invocation = parse({"-0.5", "-05", "-0l", "-5n", "-0.n"});

  EXPECT_EQ(invocation.operands(), (Words{"-0.5", "-05", "-5n", "-0.n"}));
  EXPECT_TRUE(invocation.has("null"));
  EXPECT_TRUE(invocation.has("long"));
}

TEST(Arguments, AfterTwoDashesNothingIsAnOption) {
  const Invocation invocation = parse({"a", "--", "--name", "-l", "--", "[x]"});

  EXPECT_EQ(invocation.operands(), (Words{"a", "--name", "-l", "--", "[x]"}));
  EXPECT_FALSE(invocation.has("long"));
}

TEST(Arguments, ShortFlagsMayBeJoined) {
  const Invocation invocation = parse({"a", "-l0nx"});

  EXPECT_TRUE(invocation.has("long"));
  EXPECT_TRUE(invocation.has("null"));
  EXPECT_EQ(invocation.value("name"), "x");
}

TEST(Arguments, MistakesAreNamed) {
  EXPECT_EQ(errorOf({"a", "--nmae", "x"}), "unknown option '--nmae': did you mean '--name'?");
  EXPECT_EQ(errorOf({"a", "--zzzzzzzz=1"}), "unknown option '--zzzzzzzz': no option has that name");
  EXPECT_EQ(errorOf({"a", "-x"}), "unknown option '-x': no option has that letter");
  EXPECT_EQ(errorOf({"a", "--name"}), "bad option '--name': its value is missing");
  EXPECT_EQ(errorOf({"a", "--name", "--"}), "bad option '--name': its value is missing");
  EXPECT_EQ(errorOf({"a", "--name", "x", "-n", "y"}), "bad option '--name': it is given twice");
  EXPECT_EQ(errorOf({"a", "--long=yes"}), "bad option '--long': it takes no value");
  EXPECT_EQ(errorOf({"a", "--long=true"}), "bad option '--long': it takes no value");
  EXPECT_EQ(errorOf({"a", "--long", "--long="}), "bad option '--long': it takes no value");
  EXPECT_EQ(errorOf({"a", "-lx=1"}), "unknown option '-x': no option has that letter");
  EXPECT_EQ(errorOf({"a", "-ln"}), "bad option '-ln': its value is missing");
  EXPECT_EQ(errorOf({}), "missing operand 'FIRST': the first");
  EXPECT_EQ(errorOf({"a", "--color", "red"}),
            "bad value of --color 'red': expected auto, always or never");
}

TEST(Arguments, AMissingOptionIsNamed) {
  static constexpr std::array kRequired{
      OptionSpec{.longName = "key", .valueName = "TEXT", .help = "a key", .isRequired = true}};
  static constexpr CommandSpec kStrict{
      .name = "test", .summary = "tests", .operands = kOperands, .options = kRequired};
  bool wantsHelp = false;

  try {
    tool::line::parseArguments(kStrict, {}, {"a"}, wantsHelp);
    FAIL() << "no error";
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "missing option '--key': a key");
  }
}

TEST(Arguments, TwoOptionsCanBeRefusedTogether) {
  const Invocation invocation = parse({"a", "--long", "--name", "x"});

  EXPECT_NO_THROW(invocation.refuseTogether("long", "null"));
  EXPECT_NO_THROW(invocation.refuseTogether("null", "long"));
  try {
    invocation.refuseTogether("name", "long");
    FAIL() << "no error";
  } catch (const UsageError& error) {
    EXPECT_STREQ(error.what(), "bad option '--name': it cannot be combined with --long");
  }
}

TEST(Arguments, HelpIsShownEvenIfWordsAreMissing) {
  bool wantsHelp = false;

  tool::line::parseArguments(kCommand, {}, {"--help"}, wantsHelp);

  EXPECT_TRUE(wantsHelp);
}

TEST(Arguments, NumbersMustBeWhole) {
  EXPECT_EQ(parse({"a", "--name", "12"}).number("name", 0, 99), 12);
  EXPECT_EQ(parse({"a"}).number("name", 0, 99), std::nullopt);
  for (const char* text : {"", "x", "1x", " 1", "100", "-1", "99999999999999999999", "1.5", "+1"}) {
    const Invocation invocation = parse({"a", "--name", text});
    EXPECT_THROW(invocation.number("name", 0, 99), UsageError) << text;
  }
}

TEST(Arguments, TheWordsBeforeTheCommandAreTheirOwn) {
  const tool::line::LeadingArguments leading = tool::line::parseLeadingArguments(
      {"-C", "[dir]", "-q", "--color=never", "list", "-l", "[x]"});

  EXPECT_EQ(leading.directory, "[dir]");
  EXPECT_TRUE(leading.settings.isQuiet);
  EXPECT_EQ(leading.settings.color, tool::line::ColorMode::Never);
  EXPECT_EQ(leading.rest, (Words{"list", "-l", "[x]"}));
}

TEST(Arguments, TwoDashesBeforeTheCommandAreIgnored) {
  EXPECT_EQ(tool::line::parseLeadingArguments({"-q", "--", "list", "--", "-x"}).rest,
            (Words{"list", "--", "-x"}));
}

}  // namespace
