// SPDX-License-Identifier: MIT
#include "opc/plservices/W3cDateTime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>

#include "opc/Exception.h"

namespace opc::plservices {
namespace {

using boost::gregorian::date;
using boost::posix_time::microseconds;
using boost::posix_time::ptime;
using testing::HasSubstr;

struct Written {
  const char16_t* text;
  const char16_t* utc;
  bool hasTime;
  bool hasZone;
};

class ReadDate : public testing::TestWithParam<Written> {};

TEST_P(ReadDate, IsThePointInTimeInUtc) {
  const W3cDateTime read = parseW3cDateTime(GetParam().text);

  EXPECT_EQ(formatW3cDateTime(read.time), GetParam().utc);
  EXPECT_EQ(read.hasTime, GetParam().hasTime);
  EXPECT_EQ(read.hasZone, GetParam().hasZone);
}

INSTANTIATE_TEST_SUITE_P(
    Dates, ReadDate,
    testing::Values(Written{u"2014", u"2014-01-01T00:00:00Z", false, false},
                    Written{u"2014-05", u"2014-05-01T00:00:00Z", false, false},
                    Written{u"2014-05-06", u"2014-05-06T00:00:00Z", false, false},
                    Written{u"2014-05-06T07:08Z", u"2014-05-06T07:08:00Z", true, true},
                    Written{u"2014-05-06T07:08:09Z", u"2014-05-06T07:08:09Z", true, true},
                    Written{u"2014-05-06T07:08:09", u"2014-05-06T07:08:09Z", true, false},
                    Written{u"2014-05-06T07:08", u"2014-05-06T07:08:00Z", true, false},
                    Written{u"2014-05-06T07:08:09.999999999999Z", u"2014-05-06T07:08:09Z", true,
                            true},
                    Written{u"2014-05-06T07:08:09.5", u"2014-05-06T07:08:09Z", true, false},
                    Written{u"2014-05-06T07:08:09+02:00", u"2014-05-06T05:08:09Z", true, true},
                    Written{u"2014-05-06T07:08-05:30", u"2014-05-06T12:38:00Z", true, true},
                    Written{u"2014-01-01T00:30:00.25+01:00", u"2013-12-31T23:30:00Z", true, true},
                    Written{u"2012-02-28T23:59:59-14:00", u"2012-02-29T13:59:59Z", true, true},
                    Written{u"2000-02-29", u"2000-02-29T00:00:00Z", false, false},
                    Written{u"1400-01-01T00:00:00Z", u"1400-01-01T00:00:00Z", true, true},
                    Written{u"9999-12-31T23:59:59Z", u"9999-12-31T23:59:59Z", true, true},
                    Written{u"1399-12-31T23:59:59-00:01", u"1400-01-01T00:00:59Z", true, true}));

class RefusedDate : public testing::TestWithParam<const char16_t*> {};

TEST_P(RefusedDate, IsAFormatErrorThatQuotesIt) {
  try {
    parseW3cDateTime(GetParam());
    FAIL() << "it was read";
  } catch (const FormatError& fault) {
    EXPECT_EQ(fault.rule(), "CP-12");
    EXPECT_THAT(fault.what(), HasSubstr("invalid date '"));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Dates, RefusedDate,
    testing::Values(u"", u"today", u"14", u"201", u"20145", u"2014-", u"2014-5", u"2014-05-",
                    u"2014-05-6", u"2014-05-06T", u"2014-05-06T07", u"2014-05-06T07Z",
                    u"2014-05-06T07:08:", u"2014-05-06T07:08:09.", u"2014-05-06T07:08:09.Z",
                    u"2014-05-06T07:08:09z", u"2014-05-06t07:08:09Z", u"2014-05-06 07:08:09Z",
                    u"2014-05-06T07:08:09ZZ", u"2014-05-06T07:08:09+02",
                    u"2014-05-06T07:08:09+0200", u"2014-05-06T07:08:09+15:00",
                    u"2014-05-06T07:08:09+14:01", u"2014-05-06T07:08:09+02:60", u"2014-05-06Z",
                    u"2014T07:08Z", u"2014-05T07:08Z", u"2014-13", u"2014-00", u"2014-05-00",
                    u"2014-05-32", u"2014-06-31", u"2014-02-29", u"1900-02-29",
                    u"2014-05-06T24:00:00Z", u"2014-05-06T07:60Z", u"2014-05-06T07:08:60Z",
                    u"-2014-05-06", u"+2014", u" 2014", u"2014 ", u"\uFF12\uFF10\uFF11\uFF14",
                    u"10000-01-01", u"0001-02-29"));

TEST(W3cDateTime, AYearOutsideTheCalendarIsReadButIsNotAPointInTime) {
  for (const auto* text : {u"0000", u"0001-01-01T00:00:00Z", u"1399", u"1200-02-29",
                           u"1400-01-01T00:00:00+00:01", u"9999-12-31T23:59:59-00:01"}) {
    EXPECT_TRUE(parseW3cDateTime(text).time.is_not_a_date_time());
  }
}

TEST(W3cDateTime, ALongTextIsCutInTheMessage) {
  try {
    parseW3cDateTime(std::u16string(100000, u'9'));
    FAIL() << "it was read";
  } catch (const FormatError& fault) {
    EXPECT_LT(std::string(fault.what()).size(), 200u);
  }
}

TEST(W3cDateTime, FractionsOfASecondAreDroppedAndNotRounded) {
  const ptime time(date(2014, 5, 6), microseconds(3'661'999'999));

  EXPECT_EQ(formatW3cDateTime(time), u"2014-05-06T01:01:01Z");
  EXPECT_EQ(inWholeSeconds(time), ptime(date(2014, 5, 6), microseconds(3'661'000'000)));
}

TEST(W3cDateTime, WhatIsNotAPointInTimeIsNotWritten) {
  EXPECT_THROW(formatW3cDateTime(ptime()), Exception);
  EXPECT_THROW(formatW3cDateTime(ptime(boost::posix_time::pos_infin)), Exception);
  EXPECT_TRUE(inWholeSeconds(ptime()).is_not_a_date_time());
}

}  // namespace
}  // namespace opc::plservices
