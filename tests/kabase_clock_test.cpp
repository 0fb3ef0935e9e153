// Tests of the clock: splitting fixed instants under fixed time zones, and the
// live functions checked against the system clock and against each other.
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <optional>
#include <string>
#include <utility>

#include "clock_split.h"
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
    (void)(saved_ ? setenv("TZ", saved_->c_str(), 1) : unsetenv("TZ"));
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

// Every field of both records, the spare byte after the seconds.
std::string Show(const bdate& d, const btime& t) {
  char text[64];
  std::snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d.%d %+d", d.year, d.month, d.day,
                t.hour, t.minute, t.second, t.spare, t.zone);
  return text;
}

constexpr const char* kZeroed = "0-00-00 00:00:00.0 +0";
struct SplitCase {
  const char* tz;
  long long seconds;
  bool local;
  const char* expected;  // kZeroed: the year does not fit, the call fails
  const char* why;
};
constexpr SplitCase kSplitCases[] = {
    {kUtc, -1, true, "1969-12-31 23:59:59.0 +0", "one second before the epoch"},
    {kUtc, -2203891200, false, "1900-03-01 00:00:00.0 +0", "1900 is not leap"},
    {kUtc, 1709208000, true, "2024-02-29 12:00:00.0 +0", "leap day"},
    {kNewYork, 1720110615, true, "2024-07-04 12:30:15.0 -14400", "summer time"},
    {kNewYork, 1705288800, true, "2024-01-14 22:20:00.0 -18000", "winter, a day behind"},
    {kNewYork, 1720110615, false, "2024-07-04 16:30:15.0 +0", "UTC split ignores TZ"},
    {kKathmandu, 1704047400, true, "2024-01-01 00:15:00.0 +20700", "local is next year"},
    {kUtc, 971890963199, false, "32767-12-31 23:59:59.0 +0", "largest year that fits"},
    {kUtc, -1096225401600, false, "-32768-01-01 00:00:00.0 +0", "smallest year that fits"},
    {kUtc, 971890963200, false, kZeroed, "year 32768"},
    {kUtc, -1096225401601, false, kZeroed, "year -32769"},
    {kKathmandu, 971890963199, true, kZeroed, "UTC fits, local does not"},
    {kUtc, LLONG_MAX, false, kZeroed, "beyond any year"},
    {kUtc, LLONG_MIN, true, kZeroed, "before any year"},
};

TEST_F(ClockTest, SplitsFixedInstantsUnderFixedZones) {
  for (const auto& c : kSplitCases) {
    SCOPED_TRACE(std::string(c.tz) + ": " + c.why);
    UseZone(c.tz);
    bdate d;
    btime t;
    std::memset(&d, 0xA5, sizeof d);
    std::memset(&t, 0xA5, sizeof t);
    EXPECT_EQ(c.expected != kZeroed, ka::detail::SplitClock(c.seconds, c.local, d, t));
    EXPECT_EQ(c.expected, Show(d, t));
  }
}

// In sequence, so each row also checks that a TZ change is seen by the next call.
TEST_F(ClockTest, TimeZoneIsTheOffsetInMinutes) {
  const std::pair<const char*, int> kZones[] = {
      {kUtc, 0}, {"EST5", -300}, {kKathmandu, 345}, {"<-0330>3:30", -210}};
  for (const auto& [tz, minutes] : kZones) {
    UseZone(tz);
    EXPECT_EQ(minutes, bksgettimezone()) << tz;
  }
}

void ExpectFieldsInRange(const bdate& d, const btime& t) {
  EXPECT_GE(d.year, 2020);
  EXPECT_TRUE(d.month >= 1 && d.month <= 12 && d.day >= 1 && d.day <= 31) << int{d.month};
  EXPECT_TRUE(t.hour <= 23 && t.minute <= 59 && t.second <= 60 && t.spare == 0) << int{t.hour};
}

// When two reads of the system clock land in the same second, every reading
// taken between them, converted back through its zone offset, is that second,
// and the nanoseconds fall between theirs. Retried when a second boundary falls
// between the reads.
TEST_F(ClockTest, LiveReadingsFallBetweenTwoClockReads) {
  UseZone(kKathmandu);
  EXPECT_EQ(-1, bksgetdate(nullptr));
  EXPECT_EQ(-1, bksgettime(nullptr));
  EXPECT_EQ(0, bksgetsystemtime(nullptr, nullptr)) << "either record may be null";
  for (int attempt = 0; attempt < 5; ++attempt) {
    bdate d[4]{};
    btime t[4]{};
    int ns[2] = {-1, -1};
    timespec before{}, after{};
    ASSERT_EQ(0, clock_gettime(CLOCK_REALTIME, &before));
    ASSERT_EQ(0, bksGetHiresTime(d[0], t[0], ns[0]));
    ASSERT_EQ(0, bksGetHiresTimeUTC(d[1], t[1], ns[1]));
    ASSERT_EQ(0, bksgetdate(&d[2]));
    ASSERT_EQ(0, bksgettime(&t[2]));
    ASSERT_EQ(0, bksgetsystemtime(&t[3], &d[3]));
    ASSERT_EQ(0, clock_gettime(CLOCK_REALTIME, &after));
    if (before.tv_sec != after.tv_sec) continue;
    for (int i = 0; i < 4; ++i) {
      SCOPED_TRACE(i);
      ExpectFieldsInRange(d[i], t[i]);
      EXPECT_EQ(i % 2 == 0 ? 20700 : 0, t[i].zone);
      EXPECT_EQ(static_cast<long long>(before.tv_sec), ToEpoch(d[i], t[i]) - t[i].zone);
    }
    EXPECT_TRUE(before.tv_nsec <= ns[0] && ns[0] <= ns[1] && ns[1] <= after.tv_nsec);
    return;
  }
  FAIL() << "no two clock reads fell in the same second";
}

}  // namespace
