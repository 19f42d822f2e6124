#include "tests/testing/signals.h"

#include <sys/time.h>

#include <csignal>

namespace {

constexpr int kEvery = 10'000;  // microseconds

volatile std::sig_atomic_t s_signals;

void SetTimer(int microseconds) {
  const itimerval every = {
      {0, microseconds},
      {0, microseconds}
  };
  setitimer(ITIMER_REAL, &every, nullptr);
}

void MaskSignals(int how) {
  sigset_t alarm;
  sigemptyset(&alarm);
  sigaddset(&alarm, SIGALRM);
  pthread_sigmask(how, &alarm, nullptr);
}

}  // namespace

Signals::Signals() {
  s_signals = 0;
  struct sigaction action = {};
  action.sa_handler = [](int) { s_signals = s_signals + 1; };
  sigaction(SIGALRM, &action, nullptr);
  SetTimer(kEvery);
}

Signals::~Signals() { SetTimer(0); }

int Signals::count() const { return s_signals; }

void BlockSignals() { MaskSignals(SIG_BLOCK); }

void UnblockSignals() { MaskSignals(SIG_UNBLOCK); }
