#include "tests/faults/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <ostream>

namespace faults {
namespace {

constexpr int kMany = 1100;
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
  sigprocmask(how, &alarm, nullptr);
}

}  // namespace

int LowestFreeDescriptor() {
  const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(fd);
  return fd;
}

void LimitDescriptors(int count) {
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = static_cast<rlim_t>(count);
  ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &limit));
}

ManyDescriptors::ManyDescriptors() {
  LimitDescriptors(kMany + 100);
  // Copies of one: the emulated bus has no room for as many files.
  while (taken_.size() < kMany) taken_.push_back(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0));
}

ManyDescriptors::~ManyDescriptors() {
  for (const int fd : taken_) close(fd);
}

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

void PrintTo(const SignalledRead& row, std::ostream* out) { *out << row.fault; }

}  // namespace faults
