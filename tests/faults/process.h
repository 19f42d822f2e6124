// What a process may be in for: few descriptors or many, signals.
#ifndef QUILLONID_TESTS_FAULTS_PROCESS_H
#define QUILLONID_TESTS_FAULTS_PROCESS_H

#include <iosfwd>
#include <vector>

#include "tests/testing/signals.h"
#include "tests/testing/stand_in_clock.h"

namespace faults {

// Seconds of the library's clock since it was made.
class Taken {
 public:
  double operator()() const { return stand_in_clock::Seconds() - start_; }

 private:
  double start_ = stand_in_clock::Seconds();
};

int LowestFreeDescriptor();

// From this number on none can be had.
void LimitDescriptors(int count);

// While it lives, every new descriptor has a number above 1,024.
class ManyDescriptors {
 public:
  ManyDescriptors();
  ManyDescriptors(const ManyDescriptors&) = delete;
  ManyDescriptors& operator=(const ManyDescriptors&) = delete;
  ~ManyDescriptors();

 private:
  std::vector<int> taken_;
};

// A read with Signals.
struct SignalledRead {
  const char* fault;
  int result;
};

void PrintTo(const SignalledRead& row, std::ostream* out);

}  // namespace faults

#endif
