// SPDX-License-Identifier: MIT
#include "addon/catalogue/Record.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using addon::catalogue::parseRecord;
using addon::catalogue::Record;
using addon::catalogue::recordFields;
using addon::catalogue::toLine;

/// With nothing but what its paths are made of.
Record shortRecord() {
  Record record;
  record.guid = "ab-1";
  record.version = "1.2";
  record.sha256 = std::string(64, 'c');
  record.package = "packages/" + record.sha256 + ".kraddon";
  record.page = "pages/ab-1/1.2/index.html";
  return record;
}

Record fullRecord() {
  Record record = shortRecord();
  record.name = "Wave \"Tools\"\n</script>\x7F";
  record.requirements = {{"product", "Signal Kit", "9.1", "SK"}, {"supportPackage", "x", "", ""}};
  record.size = 18446744073709551615U;
  record.files = 3;
  record.signers = {"aa", "bb"};
  record.isYanked = true;
  record.screenshot = "pages/ab-1/1.2/" + std::string(64, 'd') + ".png";
  return record;
}

TEST(Record, ComesBackAsItWasWritten) {
  const std::string line = toLine(fullRecord());

  EXPECT_EQ(toLine(parseRecord(line)), line);
  EXPECT_EQ(parseRecord(line).size, fullRecord().size);
  EXPECT_EQ(parseRecord(line).requirements[0].identifier, "SK");
}

TEST(Record, IsOneLineWhateverItsTexts) {
  EXPECT_EQ(toLine(fullRecord()).find_first_of("\n\r\x7F"), std::string::npos);
}

TEST(Record, HasNullOnlyForAMissingScreenshot) {
  const std::string line = toLine(shortRecord());

  EXPECT_NE(line.find(R"("screenshot":null)"), std::string::npos);
  EXPECT_EQ(line.find("null"), line.rfind("null"));
  EXPECT_EQ(parseRecord(line).screenshot, "");
}

TEST(Record, NeedsEveryMember) {
  for (const auto& field : recordFields()) {
    std::string line = toLine(fullRecord());
    line.replace(line.find(std::string("\"") + field.name + "\":"), 2, "\"?");
    EXPECT_THROW(parseRecord(line), text::JsonError) << field.name;
  }
  EXPECT_THROW(parseRecord("[]"), text::JsonError);
  EXPECT_THROW(parseRecord("{"), text::JsonError);
}

TEST(Record, HasWholeNumbersOnly) {
  const std::string line = toLine(fullRecord());
  const std::string files = R"("files":3)";
  for (const char* number : {"-1", "0.5", "1e30", "18446744073709551616", "\"3\"", "true"}) {
    std::string broken = line;
    broken.replace(broken.find(files), files.size(), std::string(R"("files":)") + number);
    EXPECT_THROW(parseRecord(broken), text::JsonError) << number;
  }
}

TEST(Record, MembersThatAreNotKnownAreLeftOut) {
  std::string line = toLine(fullRecord());
  line.insert(1, R"("later":{"a":[1]},)");

  EXPECT_EQ(toLine(parseRecord(line)), toLine(fullRecord()));
}

TEST(Record, NamesOfFieldsAreUnique) {
  std::set<std::string> names;
  for (const auto& field : recordFields()) EXPECT_TRUE(names.insert(field.name).second);
}

}  // namespace
