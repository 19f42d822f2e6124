// The clock of a scripted session. While it runs, the time calls of this thread see it: sleeping
// moves it on, and every look at it takes a microsecond. Linked in by --wrap, see CMakeLists.txt.
#ifndef QUILLONID_FUZZ_VIRTUAL_CLOCK_H
#define QUILLONID_FUZZ_VIRTUAL_CLOCK_H

#include <cstdint>
#include <functional>

namespace virtual_clock {

// `at_wait` is called at every wait: a sleep here, reads and polls of the scripted devices.
void Start(std::function<void()> at_wait);
void Stop();
bool Runs();

std::int64_t Microseconds();
void Pass(std::int64_t microseconds);
// A wait of a scripted device.
void Wait(std::int64_t microseconds);
// A call that the library made: one that spins makes more of them than time goes by.
void CountCall();
std::int64_t Calls();

}  // namespace virtual_clock

#endif
