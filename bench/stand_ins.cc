#include "bench/stand_ins.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string_view>

#include "bench/files.h"

namespace {

std::atomic<bool> s_no_log_checks;
std::atomic<int> s_log_checks;

using Stat = int(const char*, struct stat*);

}  // namespace

namespace bench {

void TakeOutLogChecks(bool out) { s_no_log_checks = out; }

int LogChecks() { return s_log_checks; }

}  // namespace bench

extern "C" {

// Pauses take no time. The program itself never pauses.
unsigned sleep(unsigned) { return 0; }
int nanosleep(const timespec*, timespec*) { return 0; }

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the header names none.
int stat(const char* path, struct stat* status) noexcept {
  static Stat* const next = reinterpret_cast<Stat*>(dlsym(RTLD_NEXT, "stat"));
  if (std::string_view(path) == bench::kConfiguration) {
    s_log_checks.fetch_add(1, std::memory_order_relaxed);
    if (s_no_log_checks.load(std::memory_order_relaxed)) {
      errno = ENOENT;
      return -1;
    }
  }
  return next(path, status);
}

}  // extern "C"
