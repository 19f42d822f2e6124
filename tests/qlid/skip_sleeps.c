/* Preloaded into qlid: a sleep moves its clocks on and takes no time, so that a test of thousands
   of reads is short. Waits for the reader keep their real length. */
#define _GNU_SOURCE
#include <stdatomic.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

static _Atomic long long s_skipped; /* nanoseconds */

int clock_gettime(clockid_t clock, struct timespec *time) {
  const long result = syscall(SYS_clock_gettime, clock, time);
  if (result != 0) return -1;
  const long long nanoseconds = time->tv_nsec + atomic_load(&s_skipped);
  time->tv_sec += (time_t)(nanoseconds / 1000000000);
  time->tv_nsec = (long)(nanoseconds % 1000000000);
  return 0;
}

int nanosleep(const struct timespec *wanted, struct timespec *left) {
  (void)left;
  atomic_fetch_add(&s_skipped, wanted->tv_sec * 1000000000LL + wanted->tv_nsec);
  return 0;
}

unsigned sleep(unsigned seconds) {
  atomic_fetch_add(&s_skipped, seconds * 1000000000LL);
  return 0;
}
