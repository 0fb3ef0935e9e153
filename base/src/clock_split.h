// The step of the clock functions that turns an instant into the records;
// private to the base services (and their test).
#ifndef KABASE_SRC_CLOCK_SPLIT_H_
#define KABASE_SRC_CLOCK_SPLIT_H_

#include "kabase/clock.h"

namespace ka::detail {

// Splits `seconds` since 1970-01-01 00:00:00 UTC into the records, as local
// time (`local`) or UTC. False, and zeroed records, when the system cannot
// convert the instant or its year does not fit in 16 bits.
bool SplitClock(long long seconds, bool local, bdate& date, btime& time);

}  // namespace ka::detail

#endif  // KABASE_SRC_CLOCK_SPLIT_H_
