// Tests of the clock: splitting fixed instants under fixed time zones, and the
// live functions checked against the system clock and against each other.
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>

#include "kabase/clock.h"

namespace {

constexpr const char* kUtc = "UTC0";
constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";
constexpr const char* kKathmandu = "<+0545>-5:45";

// Sets TZ for one test and puts the process's own value back afterwards, so
// that no test depends on the zone of the machine or of an earlier test.
class ClockTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* tz = std::getenv("TZ")) saved_ = tz;
  }
  void TearDown() override {
    if (saved_) {
      setenv("TZ", saved_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }
  static void UseZone(const char* tz) { ASSERT_EQ(0, setenv("TZ", tz, 1)); }

 private:
  std::optional<std::string> saved_;
};

// Seconds since the epoch of split fields read as UTC (libc's inverse of the
// split); subtract the zone offset to place a local reading.
long long ToEpoch(const bdate& d, const btime& t) {
  tm parts{};
  parts.tm_year = d.year - 1900;
  parts.tm_mon = d.month - 1;
  parts.tm_mday = d.day;
  parts.tm_hour = t.hour;
  parts.tm_min = t.minute;
  parts.tm_sec = t.second;
  return static_cast<long long>(timegm(&parts));
}

struct SplitCase {
  const char* tz;
  long long seconds;
  bool local;
  int year, month, day, hour, minute, second, zone;
  const char* why;
};
constexpr SplitCase kSplitCases[] = {
    {kUtc, 0, true, 1970, 1, 1, 0, 0, 0, 0, "the epoch"},
    {kUtc, -1, true, 1969, 12, 31, 23, 59, 59, 0, "one second before the epoch"},
    {kUtc, -2208988800, false, 1900, 1, 1, 0, 0, 0, 0, "1900, far negative"},
    {kUtc, -2203891200, false, 1900, 3, 1, 0, 0, 0, 0, "1900 is not leap: Feb has 28 days"},
    {kUtc, 1709208000, true, 2024, 2, 29, 12, 0, 0, 0, "leap day"},
    {kNewYork, 1720110615, true, 2024, 7, 4, 12, 30, 15, -14400, "summer time"},
    {kNewYork, 1705288800, true, 2024, 1, 14, 22, 20, 0, -18000, "winter, local is a day behind"},
    {kNewYork, 1709258400, true, 2024, 2, 29, 21, 0, 0, -18000, "Mar 1 UTC is leap day locally"},
    {kNewYork, 1710053999, true, 2024, 3, 10, 1, 59, 59, -18000, "last second before spring"},
    {kNewYork, 1710054000, true, 2024, 3, 10, 3, 0, 0, -14400, "spring forward skips 02:xx"},
    {kNewYork, 1730613599, true, 2024, 11, 3, 1, 59, 59, -14400, "first 01:59:59 in autumn"},
    {kNewYork, 1730613600, true, 2024, 11, 3, 1, 0, 0, -18000, "fall back repeats 01:xx"},
    {kNewYork, 1720110615, false, 2024, 7, 4, 16, 30, 15, 0, "UTC split ignores TZ"},
    {kKathmandu, 1704047400, true, 2024, 1, 1, 0, 15, 0, 20700, "local is already next year"},
    {kKathmandu, 1704047400, false, 2023, 12, 31, 18, 30, 0, 0, "same instant in UTC"},
    {kUtc, 971890963199, false, 32767, 12, 31, 23, 59, 59, 0, "largest year that fits"},
    {kUtc, -1096225401600, false, -32768, 1, 1, 0, 0, 0, 0, "smallest year that fits"},
};

TEST_F(ClockTest, SplitsFixedInstantsUnderFixedZones) {
  for (const auto& c : kSplitCases) {
    SCOPED_TRACE(std::string(c.tz) + ": " + c.why);
    UseZone(c.tz);
    bdate d{};
    btime t{};
    ASSERT_TRUE(ka::detail::SplitClock(c.seconds, c.local, d, t));
    EXPECT_EQ(c.year, d.year);
    EXPECT_EQ(c.month, d.month);
    EXPECT_EQ(c.day, d.day);
    EXPECT_EQ(c.hour, t.hour);
    EXPECT_EQ(c.minute, t.minute);
    EXPECT_EQ(c.second, t.second);
    EXPECT_EQ(0, t.spare);
    EXPECT_EQ(c.zone, t.zone);
  }
}

struct OutOfRangeCase {
  const char* tz;
  long long seconds;
  bool local;
  const char* why;
};
constexpr OutOfRangeCase kOutOfRangeCases[] = {
    {kUtc, 971890963200, false, "first second of year 32768"},
    {kUtc, -1096225401601, false, "last second of year -32769"},
    {kKathmandu, 971890963199, true, "UTC fits, local time is already year 32768"},
    {kUtc, LLONG_MAX, false, "beyond any year"},
    {kUtc, LLONG_MIN, true, "before any year"},
};

TEST_F(ClockTest, YearOutsideInt16FailsWithZeroedRecords) {
  for (const auto& c : kOutOfRangeCases) {
    SCOPED_TRACE(c.why);
    UseZone(c.tz);
    bdate d;
    btime t;
    std::memset(&d, 0xA5, sizeof d);
    std::memset(&t, 0xA5, sizeof t);
    EXPECT_FALSE(ka::detail::SplitClock(c.seconds, c.local, d, t));
    const bdate zero_date{};
    const btime zero_time{};
    EXPECT_EQ(0, std::memcmp(&zero_date, &d, sizeof d));
    EXPECT_EQ(0, std::memcmp(&zero_time, &t, sizeof t));
  }
}

struct ZoneCase {
  const char* tz;
  int minutes;
  const char* why;
};
constexpr ZoneCase kZoneCases[] = {
    {kUtc, 0, "UTC"},
    {"EST5", -300, "whole hours west"},
    {kKathmandu, 345, "45 minutes past the hour, east"},
    {"<-0330>3:30", -210, "half hour, west"},
    {"<+14>-14", 840, "furthest east"},
    {"<-12>12", -720, "furthest west"},
};

// Runs the rows in sequence, so each also checks that a TZ change is seen by
// the next call.
TEST_F(ClockTest, TimeZoneIsTheOffsetInMinutes) {
  for (const auto& c : kZoneCases) {
    SCOPED_TRACE(c.why);
    UseZone(c.tz);
    EXPECT_EQ(c.minutes, bksgettimezone());
  }
}

void ExpectFieldsInRange(const bdate& d, const btime& t) {
  EXPECT_GE(d.year, 2020);
  EXPECT_GE(d.month, 1);
  EXPECT_LE(d.month, 12);
  EXPECT_GE(d.day, 1);
  EXPECT_LE(d.day, 31);
  EXPECT_LE(t.hour, 23);
  EXPECT_LE(t.minute, 59);
  EXPECT_LE(t.second, 60);
  EXPECT_EQ(0, t.spare);
}

// A reading taken between two reads of the system clock must fall between
// them: to the second, converted back through the zone offset, and to the
// nanosecond when both reads land in the same second (retried otherwise).
TEST_F(ClockTest, LiveHiresReadingsFallBetweenTwoClockReads) {
  UseZone(kKathmandu);
  for (const bool utc : {false, true}) {
    SCOPED_TRACE(utc ? "UTC" : "local");
    bool bracketed = false;
    for (int attempt = 0; attempt < 5 && !bracketed; ++attempt) {
      bdate d{};
      btime t{};
      int ns = -1;
      timespec before{}, after{};
      ASSERT_EQ(0, clock_gettime(CLOCK_REALTIME, &before));
      ASSERT_EQ(0, utc ? bksGetHiresTimeUTC(d, t, ns) : bksGetHiresTime(d, t, ns));
      ASSERT_EQ(0, clock_gettime(CLOCK_REALTIME, &after));
      ExpectFieldsInRange(d, t);
      EXPECT_EQ(utc ? 0 : 20700, t.zone);
      EXPECT_GE(ns, 0);
      EXPECT_LT(ns, 1000000000);
      const long long seconds = ToEpoch(d, t) - t.zone;
      EXPECT_LE(static_cast<long long>(before.tv_sec), seconds);
      EXPECT_LE(seconds, static_cast<long long>(after.tv_sec));
      if (before.tv_sec != after.tv_sec) continue;
      EXPECT_LE(before.tv_nsec, ns);
      EXPECT_LE(ns, after.tv_nsec);
      bracketed = true;
    }
    EXPECT_TRUE(bracketed);
  }
}

// The calls below read the clock separately, so they may straddle a second
// (or midnight).
TEST_F(ClockTest, LiveDateAndTimeMatchTheHiresReading) {
  UseZone(kNewYork);
  bdate date{}, hires_date{};
  btime time{}, hires_time{}, sys_time{};
  bdate sys_date{};
  int ns = 0;
  ASSERT_EQ(0, bksgetdate(&date));
  ASSERT_EQ(0, bksgettime(&time));
  ASSERT_EQ(0, bksGetHiresTime(hires_date, hires_time, ns));
  ASSERT_EQ(0, bksgetsystemtime(&sys_time, &sys_date));
  ExpectFieldsInRange(date, time);
  ExpectFieldsInRange(sys_date, sys_time);
  EXPECT_EQ(hires_time.zone, time.zone);
  EXPECT_TRUE(time.zone == -14400 || time.zone == -18000) << time.zone;
  EXPECT_EQ(0, sys_time.zone);
  // Read in that order, each call is at most a little later than the one
  // before: the date may have moved on by one day, the time by a second or two
  // (modulo a day, should midnight fall between).
  const long long midnight = ToEpoch(date, btime{});
  const long long days_on = (ToEpoch(hires_date, btime{}) - midnight) / 86400;
  EXPECT_TRUE(days_on == 0 || days_on == 1) << days_on;
  const int time_of_day = time.hour * 3600 + time.minute * 60 + time.second;
  const int hires_of_day = hires_time.hour * 3600 + hires_time.minute * 60 + hires_time.second;
  EXPECT_LE((hires_of_day - time_of_day + 86400) % 86400, 2);
  EXPECT_NEAR(ToEpoch(hires_date, hires_time) - hires_time.zone, ToEpoch(sys_date, sys_time), 2);
}

TEST_F(ClockTest, NullArguments) {
  EXPECT_EQ(-1, bksgetdate(nullptr));
  EXPECT_EQ(-1, bksgettime(nullptr));
  EXPECT_EQ(0, bksgetsystemtime(nullptr, nullptr));
  bdate d{};
  btime t{};
  ASSERT_EQ(0, bksgetsystemtime(nullptr, &d));
  EXPECT_GE(d.year, 2020);
  ASSERT_EQ(0, bksgetsystemtime(&t, nullptr));
  EXPECT_EQ(0, t.spare);
  EXPECT_LE(t.hour, 23);
}

}  // namespace
