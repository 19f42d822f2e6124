#include "tools/qlid/terminal_keys.h"

#include <poll.h>
#include <unistd.h>

namespace qlid {

TerminalKeys::TerminalKeys() {
  // A program in the background would be stopped at the first change of the settings.
  if (tcgetattr(STDIN_FILENO, &before_) != 0 || tcgetpgrp(STDIN_FILENO) != getpgrp()) return;
  termios keys = before_;
  keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  keys.c_cc[VMIN] = 1;
  keys.c_cc[VTIME] = 0;
  keys.c_cc[VQUIT] = keys.c_cc[VSUSP] = _POSIX_VDISABLE;
  active_ = tcsetattr(STDIN_FILENO, TCSANOW, &keys) == 0;
}

TerminalKeys::~TerminalKeys() {
  if (active_) tcsetattr(STDIN_FILENO, TCSANOW, &before_);
}

int TerminalKeys::descriptor() const { return active_ ? STDIN_FILENO : -1; }

char TerminalKeys::Take() {
  pollfd waiting = {STDIN_FILENO, POLLIN, 0};
  char key = 0;
  if (!active_ || poll(&waiting, 1, 0) <= 0) return 0;
  if (read(STDIN_FILENO, &key, 1) == 1) return key;
  active_ = false;  // The terminal is gone.
  return 0;
}

}  // namespace qlid
