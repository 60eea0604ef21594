// SPDX-License-Identifier: MIT
#include "opc/Exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

namespace opc {
namespace {

using std::string_literals::operator""s;

TEST(Exception, PutsEachContextInFront) {
  Exception fault(ErrorCode::NotFound, "it is not there");
  fault.addContext("part '/a.xml'");
  fault.addContext("package 'x.kraddon'");

  EXPECT_STREQ(fault.what(), "package 'x.kraddon': part '/a.xml': it is not there");
  EXPECT_EQ(fault.code(), ErrorCode::NotFound);
}

TEST(Exception, IsOneLineWithoutControlCharacters) {
  Exception fault(ErrorCode::InvalidName, "name 'a\nb\x1b[31m\0c'"s);
  fault.addContext("file '\r\x7f\xC2\x9B'");

  EXPECT_STREQ(fault.what(), "file '\\r\\x7f\\x9b': name 'a\\nb\\x1b[31m\\x00c'");
}

TEST(Exception, BytesThatAreNotUtf8BecomeEscapes) {
  const Exception fault(ErrorCode::InvalidName, "name '\xE9\xE2\x82'");

  EXPECT_STREQ(fault.what(), "name '\\xe9\\xe2\\x82'");
}

TEST(Exception, TextIsCopiedWithIt) {
  std::string kept;
  try {
    throw FormatError("CT-6", "twice");
  } catch (const Exception& fault) {
    const Exception copy = fault;
    kept = copy.what();
  }

  EXPECT_EQ(kept, "twice");
}

TEST(FormatError, CarriesItsRuleOutsideTheText) {
  const FormatError fault("PN-6", "segment 'a.' ends in a dot", ErrorCode::InvalidName);

  EXPECT_EQ(fault.rule(), "PN-6");
  EXPECT_STREQ(fault.what(), "segment 'a.' ends in a dot");
  EXPECT_EQ(fault.code(), ErrorCode::InvalidName);
  EXPECT_EQ(FormatError("X", "y").code(), ErrorCode::InvalidPackage);
}

TEST(SystemError, EndsWithTheWordsOfTheSystem) {
  const SystemError fault("cannot open 'a/b'", ENOENT);

  EXPECT_STREQ(fault.what(), "cannot open 'a/b': No such file or directory");
  EXPECT_EQ(fault.number(), ENOENT);
  EXPECT_EQ(fault.code(), ErrorCode::FileSystem);
}

}  // namespace
}  // namespace opc
