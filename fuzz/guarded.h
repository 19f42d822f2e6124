// An output buffer between canaries, for builds without the address sanitizer, and for overruns
// that land in another live object. Every byte starts as 0xEE, or as said.
#ifndef QUILLONID_FUZZ_GUARDED_H
#define QUILLONID_FUZZ_GUARDED_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/check.h"

inline constexpr std::uint8_t kUntouched = 0xEE;

class Guarded {
 public:
  explicit Guarded(std::size_t size, std::uint8_t fill = kUntouched)
      : block_(size + 2 * kCanary, kCanaryByte), size_(size) {
    std::fill_n(block_.begin() + kCanary, size, fill);
  }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;
  ~Guarded() { CheckCanaries(); }

  std::uint8_t* bytes() { return block_.data() + kCanary; }
  char* text() { return reinterpret_cast<char*>(bytes()); }
  std::size_t size() const { return size_; }

  std::vector<std::uint8_t> First(std::size_t count) {
    FUZZ_CHECK(count <= size_);
    return {bytes(), bytes() + count};
  }
  std::string FirstAsText(std::size_t count) {
    FUZZ_CHECK(count <= size_);
    return {text(), count};
  }
  // The text up to its zero, which has to be there.
  std::string Text() {
    const std::size_t length = strnlen(text(), size_);
    FUZZ_CHECK(length < size_);
    return {text(), length};
  }
  // True when the bytes from `from` on are as they were.
  bool UntouchedFrom(std::size_t from, std::uint8_t fill = kUntouched) {
    return std::all_of(bytes() + std::min(from, size_), bytes() + size_,
                       [fill](std::uint8_t byte) { return byte == fill; });
  }

  void CheckCanaries() const {
    const auto whole = [](std::uint8_t byte) { return byte == kCanaryByte; };
    FUZZ_CHECK(std::all_of(block_.begin(), block_.begin() + kCanary, whole));
    FUZZ_CHECK(std::all_of(block_.end() - kCanary, block_.end(), whole));
  }

 private:
  static constexpr std::ptrdiff_t kCanary = 64;
  static constexpr std::uint8_t kCanaryByte = 0xC5;
  std::vector<std::uint8_t> block_;
  std::size_t size_;
};

// A record between canaries.
template <typename Record>
class GuardedRecord {
 public:
  explicit GuardedRecord(std::uint8_t fill = kUntouched) : bytes_(sizeof(Record), fill) {}

  Record* get() { return reinterpret_cast<Record*>(bytes_.bytes()); }
  Record* operator->() { return get(); }
  Guarded& bytes() { return bytes_; }

 private:
  Guarded bytes_;
};

#endif
