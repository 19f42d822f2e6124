// SIGINT, SIGTERM and SIGHUP: held by a command that has to end in order, and short steps that they
// must not break off.
#ifndef QUILLONID_TOOLS_QLID_SIGNALS_H
#define QUILLONID_TOOLS_QLID_SIGNALS_H

#include <csignal>

namespace qlid {

// The signals come to WaitForSignal() from here on. Call before any thread starts.
void HoldSignals();

// A signal that asks to stop ends the program at once again, also one that came meanwhile.
void ReleaseSignals();

// Waits at most `milliseconds` for a held signal, or until the descriptor `also` can be read; the
// signal's number, or 0.
int WaitForSignal(int milliseconds, int also = -1);

// Whether it asks to stop. A hang-up does where one of the standard streams is a terminal: the
// window was closed. A service has none, and there the signal is that of a reader pulled from its
// port.
bool AsksToStop(int signal);

// Puts the signals off for as long as it lives: a file is written whole, a terminal gets its
// settings back. For steps that end soon.
class SignalsPutOff {
 public:
  SignalsPutOff();
  SignalsPutOff(const SignalsPutOff&) = delete;
  SignalsPutOff& operator=(const SignalsPutOff&) = delete;
  ~SignalsPutOff();

 private:
  sigset_t before_;
};

}  // namespace qlid

#endif
