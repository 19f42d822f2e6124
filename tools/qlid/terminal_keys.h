// Single keys from the terminal on standard input, without Enter and without echo.
#ifndef QUILLONID_TOOLS_QLID_TERMINAL_KEYS_H
#define QUILLONID_TOOLS_QLID_TERMINAL_KEYS_H

#include <termios.h>

namespace qlid {

// Changes the terminal's settings while it lives. Ctrl-C stays a signal; the keys that would stop
// or kill the program on the spot are off, so that the settings are put back at every end.
class TerminalKeys {
 public:
  TerminalKeys();
  TerminalKeys(const TerminalKeys&) = delete;
  TerminalKeys& operator=(const TerminalKeys&) = delete;
  ~TerminalKeys();

  // False when standard input is no terminal, or another program's turn.
  bool Active() const { return active_; }
  int descriptor() const;  // to wait for a key; -1 when there are none

  // The next key, or 0 when none was struck.
  char Take();

 private:
  termios before_ = {};
  bool active_ = false;
};

}  // namespace qlid

#endif
