// The fuzzer's input, taken from the front; at its end everything is zero and empty.
#ifndef QUILLONID_FUZZ_INPUT_H
#define QUILLONID_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : at_(data), left_(size) {}

  bool Empty() const { return left_ == 0; }

  std::uint8_t Byte() {
    if (left_ == 0) return 0;
    --left_;
    return *at_++;
  }

  bool Flag() { return (Byte() & 1) != 0; }

  std::uint32_t Word() {
    std::uint32_t word = 0;
    for (int i = 0; i < 4; ++i) word = word << 8 | Byte();
    return word;
  }

  // A number from `least` to `most`, from one byte or, for wide ranges, four.
  int Between(int least, int most) {
    const std::int64_t range = std::int64_t{most} - least + 1;
    const std::int64_t value = range <= 256 ? Byte() : Word();
    return static_cast<int>(least + value % range);
  }

  Bytes Take(std::size_t most) {
    const std::size_t count = std::min(most, left_);
    Bytes taken(at_, at_ + count);
    at_ += count;
    left_ -= count;
    return taken;
  }

  // A length of one byte, and that many bytes up to a zero.
  std::string Text(std::size_t most = 255) {
    const Bytes taken = Take(std::min<std::size_t>(Byte(), most));
    return {taken.begin(), std::find(taken.begin(), taken.end(), 0)};
  }

  Bytes Rest() { return Take(left_); }

  std::string RestAsText() {
    const Bytes rest = Rest();
    return {rest.begin(), std::find(rest.begin(), rest.end(), 0)};
  }

 private:
  const std::uint8_t* at_;
  std::size_t left_;
};

// A heap block of exactly the size of what it copies, so that reading on is an error that the
// address sanitizer sees.
template <typename T>
class Exact {
 public:
  explicit Exact(const Bytes& bytes) : Exact(bytes.data(), bytes.size()) {}
  explicit Exact(const std::string& text) : Exact(text.c_str(), text.size() + 1) {}
  Exact(const void* data, std::size_t size) : block_(new T[size]) {
    static_assert(sizeof(T) == 1);
    if (size > 0) std::memcpy(block_.get(), data, size);
  }

  T* get() const { return block_.get(); }

 private:
  std::unique_ptr<T[]> block_;
};

#endif
