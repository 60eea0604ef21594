// SPDX-License-Identifier: MIT
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <string>
#include <string_view>

namespace opc::plservices {

/// A point in time in the W3C's profile of ISO 8601: a year, a month, a day, or a day with a time.
struct W3cDateTime {
  /// UTC, whole seconds; what is not given is the earliest. not_a_date_time for a year before 1400
  /// or after 9999, which boost's calendar does not hold.
  boost::posix_time::ptime time;
  bool hasTime = false;
  bool hasSeconds = false;
  bool hasZone = false;  ///< a time without zone is taken for UTC
};

/// Reads "2014", "2014-05", "2014-05-06", "2014-05-06T07:08Z", "2014-05-06T07:08:09.5+02:00"; no
/// white space around. Fractions of a second are dropped. Throws FormatError with rule CP-12 for
/// anything else and for days that no calendar has.
W3cDateTime parseW3cDateTime(std::u16string_view text);

/// "2014-05-06T07:08:09Z". Throws Exception (ErrorCode::InvalidArgument) for a special value such
/// as not_a_date_time.
std::string formatTime(const boost::posix_time::ptime& time);
std::u16string formatW3cDateTime(const boost::posix_time::ptime& time);

/// The time without fractions of a second; special values stay as they are.
boost::posix_time::ptime inWholeSeconds(const boost::posix_time::ptime& time);

}  // namespace opc::plservices
