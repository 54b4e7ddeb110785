#include "numeric/DateTime.h"

#include <gtest/gtest.h>

namespace tellurix {
namespace {

// As ISO text, "" for nothing.
std::string Read(const char* text, const char* dateForm = "yyyy-mm-dd") {
  const auto moment = ReadMoment(text, {.dateForm = dateForm});
  if (!moment) return "";
  const auto seconds = moment->milliseconds / 1000 % 86400;
  std::string iso = moment->hasDate ? DateText(*moment, {}) : "";
  if (seconds != 0) iso += "T" + std::to_string(seconds);
  return iso;
}

TEST(DateTime, ReadsDatesInTheRegionsOrder) {
  EXPECT_EQ(Read("2001-03-12", "dd.mm.yyyy"), "2001-03-12");
  EXPECT_EQ(Read(" 2001/3/12 "), "2001-03-12");
  EXPECT_EQ(Read("12.03.2001", "dd.mm.yyyy"), "2001-03-12");
  EXPECT_EQ(Read("3/12/2001", "mm/dd/yyyy"), "2001-03-12");
  EXPECT_EQ(Read("12-3-2001", "dd/mm/yyyy"), "2001-03-12");
  EXPECT_EQ(Read("12/3/29", "dd/mm/yyyy"), "2029-03-12");
  EXPECT_EQ(Read("12/3/30", "dd/mm/yyyy"), "1930-03-12");
  EXPECT_EQ(Read("12 Mar 2001"), "2001-03-12");
  EXPECT_EQ(Read("12-mar-01"), "2001-03-12");
  EXPECT_EQ(Read("March 12, 2001", "dd.mm.yyyy"), "2001-03-12");
  EXPECT_EQ(Read("29.02.2000", "dd.mm.yyyy"), "2000-02-29");
}

TEST(DateTime, ReadsTimesOfDay) {
  EXPECT_EQ(Read("2001-03-12T13:45:10.5"), "2001-03-12T49510");
  EXPECT_EQ(Read("2001-03-12 13:45Z"), "2001-03-12T49500");
  EXPECT_EQ(Read("12 Mar 2001 1:45 pm"), "2001-03-12T49500");
  EXPECT_EQ(Read("12:30 AM"), "T1800");
  EXPECT_EQ(Read("October 5, 2001 00:00:01"), "2001-10-05T1");
}

TEST(DateTime, RefusesTheRest) {
  // The ISO order does not say which of the two is the month.
  for (const char* text : {"12/03/2001",
                           "",
                           "x",
                           "2001-02-29",
                           "2001-13-01",
                           "2001-03",
                           "2001-03-12-1",
                           "2001--12",
                           "20010312",
                           "12",
                           "0000-01-01",
                           "2001-03-12 24:00",
                           "2001-03-12 13:60",
                           "13:45 pm",
                           "0:10 am",
                           "1:5",
                           "1:05.5",
                           "12 Ma 2001",
                           "12 Marx 2001",
                           "12,03,2001",
                           "2001-03-12 x",
                           "2001-03-12T",
                           "+2001-03-12",
                           "-1-2-2001",
                           "2001-03-12 10:00+01:00"}) {
    EXPECT_EQ(Read(text), "") << text;
  }
  EXPECT_EQ(Read("31.02.2001", "dd.mm.yyyy"), "");
  EXPECT_EQ(Read("12.03.201", "dd.mm.yyyy"), "");
}

TEST(DateTime, SerialNumbersKeepTheirTime) {
  EXPECT_EQ(MomentOfSerial(36963.5)->milliseconds, ReadMoment("2001-03-13 12:00", {})->milliseconds);
  // The fraction of a serial number is not exact: a third of a day is 8 o'clock all the same.
  EXPECT_EQ(IntervalBetween(*MomentOfSerial(45000), *MomentOfSerial(45000 + 1.0 / 3), IntervalUnit::Hours), 8);
  EXPECT_EQ(MomentOfSerial(-693594), std::nullopt);
  EXPECT_EQ(MomentOfSerial(2958466), std::nullopt);
  EXPECT_EQ(MomentOfSerial(2958465.9999999995), std::nullopt) << "the year 10000 to the millisecond";
  EXPECT_EQ(DateText(*MomentOfSerial(-0.5), {.dateForm = "dd.mm.yyyy"}), "29.12.1899");
  EXPECT_EQ(SerialOf(*ReadMoment("2001-03-13 12:00", {})), 36963.5);
  const Moment late = *ReadMoment("1899-12-29 23:59:59.25", {});
  EXPECT_EQ(SerialOf(late), -0.75 / 86400);
  EXPECT_EQ(TimeFormOf(late), TimeForm::Milliseconds);
  EXPECT_EQ(TimeText(late, TimeForm::Minutes, {}), "23:59");
  EXPECT_EQ(TimeText(late, TimeForm::Milliseconds, {.decimalSymbol = ","}), "23:59:59,250");
}

}  // namespace
}  // namespace tellurix
