// The clock functions: system clock and time zone into bdate/btime records.
#include "kabase/clock.h"

#include <climits>
#include <ctime>

#include "clock_split.h"

namespace {

bool ReadClock(timespec& now) { return clock_gettime(CLOCK_REALTIME, &now) == 0; }

int FillFromClock(bool local, bdate* date, btime* time, int* nanoseconds) {
  bdate d{};
  btime t{};
  timespec now{};
  const bool ok = ReadClock(now) && ka::detail::SplitClock(now.tv_sec, local, d, t);
  if (date != nullptr) *date = d;
  if (time != nullptr) *time = t;
  if (nanoseconds != nullptr) *nanoseconds = ok ? static_cast<int>(now.tv_nsec) : 0;
  return ok ? 0 : -1;
}

}  // namespace

bool ka::detail::SplitClock(long long seconds, bool local, bdate& date, btime& time) {
  date = bdate{};
  time = btime{};
  if (seconds < LLONG_MIN / 2 || seconds > LLONG_MAX / 2) return false;
  const time_t instant = static_cast<time_t>(seconds);
  tm parts{};
  if (local) {
    tzset();  // picks up a changed TZ; localtime_r alone need not
    if (localtime_r(&instant, &parts) == nullptr) return false;
  } else if (gmtime_r(&instant, &parts) == nullptr) {
    return false;
  }
  const long long year = static_cast<long long>(parts.tm_year) + 1900;
  if (year < INT16_MIN || year > INT16_MAX) return false;
  date.year = static_cast<int16_t>(year);
  date.month = static_cast<uint8_t>(parts.tm_mon + 1);
  date.day = static_cast<uint8_t>(parts.tm_mday);
  time.hour = static_cast<uint8_t>(parts.tm_hour);
  time.minute = static_cast<uint8_t>(parts.tm_min);
  time.second = static_cast<uint8_t>(parts.tm_sec);
  time.zone = local ? static_cast<int32_t>(parts.tm_gmtoff) : 0;
  return true;
}

int bksgetdate(bdate* date) {
  if (date == nullptr) return -1;
  return FillFromClock(true, date, nullptr, nullptr);
}

int bksgettime(btime* time) {
  if (time == nullptr) return -1;
  return FillFromClock(true, nullptr, time, nullptr);
}

int bksgetsystemtime(btime* time, bdate* date) { return FillFromClock(false, date, time, nullptr); }

int bksgettimezone() {
  bdate d{};
  btime t{};
  timespec now{};
  if (!ReadClock(now) || !ka::detail::SplitClock(now.tv_sec, true, d, t)) return kKaUnknownTimeZone;
  return t.zone / 60;
}

int bksGetHiresTime(bdate& date, btime& time, int& nanoseconds) {
  return FillFromClock(true, &date, &time, &nanoseconds);
}

int bksGetHiresTimeUTC(bdate& date, btime& time, int& nanoseconds) {
  return FillFromClock(false, &date, &time, &nanoseconds);
}
