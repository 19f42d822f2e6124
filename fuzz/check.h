// What a target knows to be true. A false condition ends the program, which the fuzzer keeps the
// input for.
#ifndef QUILLONID_FUZZ_CHECK_H
#define QUILLONID_FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>

[[noreturn]] inline void ReportFalse(const char* file, int line, const char* condition) {
  std::fprintf(stderr, "%s:%d: not true: %s\n", file, line, condition);
  std::abort();
}

#define FUZZ_CHECK(condition) \
  ((condition) ? static_cast<void>(0) : ReportFalse(__FILE__, __LINE__, #condition))

#endif
