// What stands between the library and the system while a call is made to fail: a clock that only
// moves when somebody waits, a reader that answers at once on a tty or on USB, a ledger of what the
// library holds, and the plan that says which call fails.
#ifndef QUILLONID_TESTS_FAILURES_WORLD_H
#define QUILLONID_TESTS_FAILURES_WORLD_H

#include <termios.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "simulator/card_module.h"
#include "tests/failures/imports.h"
#include "tests/testing/pty.h"

namespace failures {

// Fails the call at `position`, 1 for the first; 0: none. With `lasting`, every later call of the
// same function, too: for ever, or kStorm times when signals interrupt it.
struct Plan {
  std::size_t position = 0;
  Way way = kNone;
  bool lasting = false;
};
inline constexpr int kStorm = 100;

// A call that the library made.
struct Call {
  const Import* import;
  bool logging;   // for the log or its switch
  unsigned ways;  // in which it can fail
};

struct File {
  bool logging;
  bool tty;
  bool writing;
};

struct World {
  Pty tty;
  simulator::CardModule module;
  std::deque<std::uint8_t> arrived;  // at the host, not read yet
  std::size_t room = SIZE_MAX;       // bytes that the line takes at once
  std::size_t taken = 0;             // of them, since it last had room
  std::int64_t nanoseconds = 0;      // since the start of the run
  bool tty_was_open = false;
  termios first_settings = tty.Settings();
  bool restoring_refused = false;  // a change back to the first settings failed

  Plan plan;
  const Import* failing = nullptr;  // the function of the plan's call, once it was made
  int failed = 0;                   // calls
  bool failed_beyond_log = false;   // one of them was for more than the log
  std::vector<Call> calls;

  std::set<void*> blocks;  // malloc, calloc, cJSON
  std::set<void*> libraries;
  std::map<int, File> descriptors;
  std::vector<std::string> misuse;  // such as a free of what is not held
  std::string what;                 // is being tried, for a report of a run without end
};

World& TheWorld();

// Of a tty, but for the input speed, which nobody sets apart.
bool SameSettings(const termios& one, const termios& other);

// Puts the stand-ins into the library's import slots, and counts cJSON's blocks. Calls outside a
// run go through.
void InstallStandIns();

// Starts a run: nothing is held, no byte is on its way, the clock is at its start.
void BeginRun(const Plan& plan);
void EndRun();

// Of the stand-ins: how the call that is being made fails. A run without end stops the program.
Way NextWay(const Import& import, bool logging, unsigned possible = ~0U);

bool IsRunning();

// The clock moves on.
void Pass(double seconds);

}  // namespace failures

#endif
