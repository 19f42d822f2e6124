// Stand-in clock: in every test program the library's own calls of sleep, nanosleep and
// clock_gettime come here, so that no test waits. A sleep only moves the library's time on. Calls
// from outside the library (the simulated reader, the test framework) keep the real clock.
#ifndef QUILLONID_TESTS_TESTING_STAND_IN_CLOCK_H
#define QUILLONID_TESTS_TESTING_STAND_IN_CLOCK_H

#include <cstdint>

namespace stand_in_clock {

// The library's calls go to the system again, for tests of real time.
void UseSystemClock();

// The library's clocks run `factor` times as fast as the real ones (1 at the start).
void SetSpeed(double factor);

// Moves the library's monotonic and wall clock on.
void Advance(double seconds);

// Steps the library's wall clock alone, as an operator would.
void StepWallClock(double seconds);

// Holds the library's wall clock at this time; tests of time stamps.
void HoldWallClock(std::int64_t seconds, std::int64_t nanoseconds);

// The library's monotonic clock, in seconds.
double Seconds();

// Seconds that the library slept through sleep() and nanosleep() so far.
double SecondsSlept();

// Whether a sleep() is going on, with the system clock.
bool IsSleeping();

// Calls of sleep() by the library so far, and the argument of the last one.
int SleepCalls();
unsigned LastSleep();

}  // namespace stand_in_clock

#endif
