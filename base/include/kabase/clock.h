// The clock: the current date and time, local and UTC, from the system clock
// (clock_gettime(CLOCK_REALTIME)) and the system time zone; the TZ environment
// variable is honoured, and a change of it takes effect at the next call.
//
// Each call reads the clock once, so the date and time of one call always
// belong to the same instant. Functions answer 0 on success and -1 when the
// clock or the time zone cannot be read or the year does not fit the record;
// the records are zero then.
#ifndef KABASE_CLOCK_H_
#define KABASE_CLOCK_H_

#include <cstdint>

#include "kabase/export.h"

struct bdate {
  int16_t year;   // Gregorian year, e.g. 2026
  uint8_t month;  // 1..12
  uint8_t day;    // 1..31
};
static_assert(sizeof(bdate) == 4);

struct btime {
  uint8_t hour;    // 0..23
  uint8_t minute;  // 0..59
  uint8_t second;  // 0..60 (a leap second, where the system reports one)
  uint8_t spare;   // always 0
  int32_t zone;    // offset of the time from UTC in seconds, east positive (local - UTC)
};
static_assert(sizeof(btime) == 8);

// Minutes of the local time zone east of UTC when it cannot be determined.
inline constexpr int kKaUnknownTimeZone = -2171;

// Local date.
KABASE_API int bksgetdate(bdate* date);
// Local time with the local zone offset (seconds) in `zone`.
KABASE_API int bksgettime(btime* time);
// UTC time and date (zone 0). Either pointer may be null.
KABASE_API int bksgetsystemtime(btime* time, bdate* date);
// The local zone's current offset from UTC in minutes (local = UTC + offset),
// or kKaUnknownTimeZone.
KABASE_API int bksgettimezone();
// Local date and time and the nanoseconds within the current second.
KABASE_API int bksGetHiresTime(bdate& date, btime& time, int& nanoseconds);
// The same in UTC.
KABASE_API int bksGetHiresTimeUTC(bdate& date, btime& time, int& nanoseconds);

#endif  // KABASE_CLOCK_H_
