// A serial port at kScriptedTty with a scripted reader behind it: the library's system calls on it
// are answered here (linked in by --wrap, see CMakeLists.txt). Other paths go to the system.
#ifndef QUILLONID_FUZZ_SCRIPTED_TTY_H
#define QUILLONID_FUZZ_SCRIPTED_TTY_H

#include <cstdint>

#include "fuzz/input.h"
#include "fuzz/scripted_card.h"

inline constexpr char kScriptedTty[] = "/dev/ttyScripted";

namespace scripted_tty {

// Takes from the script whether and how opening and writing fail.
void Plug(Input* script, ScriptedCard* card);
void Unplug();

int OpenDescriptors();
// Microseconds for which the line took no bytes.
std::int64_t Stalled();
bool Flawless();

}  // namespace scripted_tty

#endif
