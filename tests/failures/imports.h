// What the library takes from outside: every undefined symbol, and what a failure of it is tried
// with. A call that is not in this table fails imports_test.cc.
#ifndef QUILLONID_TESTS_FAILURES_IMPORTS_H
#define QUILLONID_TESTS_FAILURES_IMPORTS_H

#include <span>
#include <string_view>

namespace failures {

// Ways in which a call fails; a row of the table holds a sum of them.
enum Way : unsigned {
  kNone = 0,
  kError = 1,        // nothing done, the error of the row
  kShort = 2,        // half of what was asked for
  kInterrupted = 4,  // a signal came first
  kBusy = 8,         // EAGAIN: the line takes no more
};

struct Import {
  std::string_view name;
  void* stand_in;      // called instead of it; null: the library calls the real one
  unsigned ways;       // in which the stand-in can fail
  const char* remark;  // the error, or why nothing has to fail
};

std::span<const Import> Imports();

// The row of an undefined symbol; null when there is none. A checked twin ("__read_chk") is found
// under the plain name: its arguments begin like the plain ones.
const Import* FindImport(std::string_view symbol);

// Symbols that sanitizers and checked standard headers bring along.
bool IsInstrumentation(std::string_view symbol);

}  // namespace failures

#endif
