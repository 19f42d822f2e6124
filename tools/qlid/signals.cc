#include "tools/qlid/signals.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <initializer_list>

#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

// Both set by HoldSignals.
int s_signals = -1;          // signalfd of the held signals
bool s_at_terminal = false;  // a standard stream is a terminal

sigset_t SetOf(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) sigaddset(&set, signal);
  return set;
}

}  // namespace

void HoldSignals() {
  // A service that leads its session without a terminal gets an opened serial port as its
  // controlling terminal, and SIGHUP when the reader is pulled.
  const sigset_t held = SetOf({SIGINT, SIGTERM, SIGHUP});
  pthread_sigmask(SIG_BLOCK, &held, nullptr);
  // Asked now: a terminal that has hung up no longer says that it is one.
  s_at_terminal =
      IsTerminal(STDIN_FILENO) || IsTerminal(STDOUT_FILENO) || IsTerminal(STDERR_FILENO);
  s_signals = signalfd(-1, &held, SFD_CLOEXEC | SFD_NONBLOCK);
}

void ReleaseSignals() {
  sigset_t released = SetOf({SIGINT, SIGTERM});
  if (s_at_terminal) sigaddset(&released, SIGHUP);
  pthread_sigmask(SIG_UNBLOCK, &released, nullptr);
}

int WaitForSignal(int milliseconds, int also) {
  pollfd waiting[] = {
      {s_signals, POLLIN, 0},
      {also,      POLLIN, 0}
  };
  if (poll(waiting, 2, milliseconds) <= 0 || waiting[0].revents == 0) return 0;
  signalfd_siginfo info = {};
  if (read(s_signals, &info, sizeof info) != sizeof info) return 0;
  return static_cast<int>(info.ssi_signo);
}

bool AsksToStop(int signal) {
  return signal == SIGINT || signal == SIGTERM || (signal == SIGHUP && s_at_terminal);
}

SignalsPutOff::SignalsPutOff() {
  const sigset_t put_off = SetOf({SIGINT, SIGTERM, SIGHUP});
  pthread_sigmask(SIG_BLOCK, &put_off, &before_);
}

SignalsPutOff::~SignalsPutOff() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

}  // namespace qlid
