// Time as the waiting loops use it. Limits are decided on the monotonic clock, which a step of the
// wall clock cannot stretch or cut; stamps and ticks are wall-clock.
#ifndef QUILLONID_SUPPORT_CLOCK_H
#define QUILLONID_SUPPORT_CLOCK_H

#include <cstdint>
#include <ctime>

std::int64_t MonotonicMilliseconds();

// Whole seconds of the monotonic clock, for limits that are compared in whole seconds.
std::int64_t MonotonicSeconds();

// Wall-clock time since the epoch.
timespec WallClock();
std::int64_t WallMilliseconds();

// Local time of a wall-clock second. A time zone that was set anew is seen in the next second.
tm LocalTime(std::time_t second);

// Sleep, signals or not. 0 and below return at once.
void Nap(std::int64_t milliseconds);
void NapMicroseconds(std::int64_t microseconds);

// Keeps a loop that makes no progress from burning a core: a pass that took less than `least`
// milliseconds since `started` (monotonic) naps for the rest of `slice` milliseconds.
void NapRestOfSlice(std::int64_t started, std::int64_t least, std::int64_t slice);

#endif
