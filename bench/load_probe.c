/* load-probe LIBRARY: nanoseconds of processor time that dlopen() and dlclose() of a library take,
   the first time in this process and then, on average, again. */
#include <dlfcn.h>
#include <stdio.h>
#include <time.h>

static double now(void) {
  struct timespec time;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return (double)time.tv_sec * 1e9 + (double)time.tv_nsec;
}

static double load(const char* path) {
  const double start = now();
  void* const library = dlopen(path, RTLD_NOW);
  if (library == NULL || dlclose(library) != 0) return -1;
  return now() - start;
}

int main(int argc, char** argv) {
  enum { kTimes = 10 };
  if (argc != 2) return 2;
  const double first = load(argv[1]);
  double again = 0;
  for (int i = 0; i < kTimes; ++i) again += load(argv[1]) / kTimes;
  printf("%.0f %.0f\n", first, again);
  return first < 0;
}
