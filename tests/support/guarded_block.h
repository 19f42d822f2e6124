// Memory that ends where the process may not read: one byte too many ends the test.
#ifndef QUILLONID_TESTS_SUPPORT_GUARDED_BLOCK_H
#define QUILLONID_TESTS_SUPPORT_GUARDED_BLOCK_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

class GuardedBlock {
 public:
  GuardedBlock() {
    memory_ = mmap(nullptr, 2 * page_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(MAP_FAILED, memory_);
    EXPECT_EQ(0, mprotect(static_cast<unsigned char*>(memory_) + page_, page_, PROT_NONE));
  }
  ~GuardedBlock() { munmap(memory_, 2 * page_); }
  GuardedBlock(const GuardedBlock&) = delete;
  GuardedBlock& operator=(const GuardedBlock&) = delete;

  // The last `count` bytes, at most a page.
  unsigned char* Last(std::size_t count) const {
    return static_cast<unsigned char*>(memory_) + page_ - count;
  }

 private:
  const std::size_t page_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  void* memory_;
};

#endif
