// What this process holds, by the kernel's count.
#ifndef QUILLONID_TESTS_TESTING_HELD_H
#define QUILLONID_TESTS_TESTING_HELD_H

#include <cstddef>
#include <filesystem>
#include <iterator>

inline std::ptrdiff_t Entries(const char* folder) {
  using Iterator = std::filesystem::directory_iterator;
  return std::distance(Iterator(folder), Iterator());
}

// Without the one that lists them.
inline std::ptrdiff_t OpenDescriptors() { return Entries("/proc/self/fd") - 1; }

inline std::ptrdiff_t Threads() { return Entries("/proc/self/task"); }

#endif
