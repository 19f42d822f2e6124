#include "tests/faults/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <ostream>

namespace faults {
namespace {

constexpr int kMany = 1100;

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

void PrintTo(const SignalledRead& row, std::ostream* out) { *out << row.fault; }

}  // namespace faults
