// Dates and times of day as worksheets hold and show them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "numeric/Regional.h"

namespace tellurix {

// A moment of the Gregorian calendar (also before its time), years 1 to 9999, without time zone and leap seconds.
struct Moment {
  std::int64_t milliseconds = 0;  // since 1899-12-30 00:00
  bool hasDate = true;            // false: a time of day alone, on the first day

  bool operator==(const Moment&) const = default;
};

// Of a serial number of days since 1899-12-30, the time of day as its fraction, to the nearest millisecond; nothing
// outside the years.
std::optional<Moment> MomentOfSerial(double serial);
double SerialOf(const Moment& moment);

// Reads a date, a date and a time of day, or a time of day. Dates: ISO "2001-03-12" (also with "/" or "."); with the
// year last in the order of the regional short date ("12.03.2001", "3/12/01"; a year of two figures lies from 1930 to
// 2029); with an English month, "12 Mar 2001", "March 12, 2001". Times: "13:45", "13:45:10.5", "1:45 pm"; after a date
// behind blanks or "T", perhaps with "Z". Anything else, impossible dates and dates whose order the region does not
// tell, is nothing.
std::optional<Moment> ReadMoment(std::string_view text, const Regional& regional);

// The date in the form of the region's short date ("dd.mm.yyyy").
std::string DateText(const Moment& moment, const Regional& regional);

enum class TimeForm { Minutes, Seconds, Milliseconds };
// The time of day, "13:45", "13:45:10" or "13:45:10.500" with the region's decimal symbol; what is finer is cut off.
std::string TimeText(const Moment& moment, TimeForm form, const Regional& regional);
// The coarsest form that says all of the time of day.
TimeForm TimeFormOf(const Moment& moment);

enum class IntervalUnit { Years, Months, Weeks, Days, Hours, Minutes, Seconds };

// The whole number of unit boundaries between two moments, below 0 when `to` comes first: from 23:59 to 00:01 is one
// day, from December to January one year. Weeks are the whole periods of seven days between the two dates.
std::int64_t IntervalBetween(const Moment& from, const Moment& to, IntervalUnit unit);

}  // namespace tellurix
