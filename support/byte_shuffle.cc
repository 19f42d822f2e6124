#include "support/byte_shuffle.h"

#if defined(__x86_64__)

#include <cpuid.h>

#include <atomic>

namespace {

enum Answer : int { kNotAsked, kNo, kYes };

// What the processor said: asking is slow, under a hypervisor above all. The compiler's own
// __builtin_cpu_supports() would ask whenever the library is loaded.
std::atomic<int> s_nAnswer{kNotAsked};

Answer Ask() {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  return __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (ecx & bit_SSSE3) != 0 ? kYes : kNo;
}

}  // namespace

bool HasByteShuffle() {
  int answer = s_nAnswer.load(std::memory_order_relaxed);
  if (answer == kNotAsked) s_nAnswer.store(answer = Ask(), std::memory_order_relaxed);
  return answer == kYes;
}

#else

bool HasByteShuffle() { return true; }

#endif
