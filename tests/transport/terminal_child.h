// A child process whose standard output the test chose: the terminal that the auxiliary port is
// reached through, or something else.
#ifndef QUILLONID_TESTS_TRANSPORT_TERMINAL_CHILD_H
#define QUILLONID_TESTS_TRANSPORT_TERMINAL_CHILD_H

#include <sys/types.h>

#include <functional>
#include <string>

#include "tests/testing/pty.h"

// Runs `program` with `standard_output` as standard output; closed when it is below 0.
class Child {
 public:
  Child(int standard_output, const std::function<std::string()>& program);
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child();

  // Waits for the end. Returns what `program` did.
  std::string Output();

 private:
  pid_t pid_;
  int results_;  // where its text comes from; -1 after the end
};

// A child on the terminal. This process keeps no descriptor on it, so that the end is seen.
Child ChildOn(const Pty& terminal, const std::function<std::string()>& program);

#endif
