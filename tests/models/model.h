// The library beside plain models: each function of the library gets the same random inputs as a
// second, straightforward way of doing the same, which has areas so large that nothing can run
// over. Results and every byte around and inside the outputs have to be equal.
#ifndef QUILLONID_TESTS_MODELS_MODEL_H
#define QUILLONID_TESTS_MODELS_MODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>

// xorshift64*: the same numbers on every machine.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed | 1) {}

  std::uint64_t Word() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    return state_ * 0x2545F4914F6CDD1DU;
  }
  unsigned char Byte() { return static_cast<unsigned char>(Word() >> 56); }
  // A number from `least` to `most`.
  int Between(int least, int most) {
    const auto range = static_cast<std::uint64_t>(std::int64_t{most} - least + 1);
    return static_cast<int>(least + static_cast<std::int64_t>((Word() >> 16) % range));
  }
  // True once in `n` times.
  bool OneIn(int n) { return Between(1, n) == 1; }

  void Fill(void* dest, std::size_t size) {
    auto* bytes = static_cast<unsigned char*>(dest);
    for (std::size_t i = 0; i < size; i += 8) {
      const std::uint64_t word = Word();
      std::memcpy(bytes + i, &word, std::min<std::size_t>(8, size - i));
    }
  }
  std::string Bytes(int size) {
    std::string bytes(static_cast<std::size_t>(size), '\0');
    Fill(bytes.data(), bytes.size());
    return bytes;
  }
  // Characters of `alphabet`.
  std::string Text(int size, const std::string& alphabet) {
    std::string text(static_cast<std::size_t>(size), '\0');
    for (char& c : text) c = alphabet[static_cast<std::size_t>(Between(0, LastOf(alphabet)))];
    return text;
  }

 private:
  static int LastOf(const std::string& text) { return static_cast<int>(text.size()) - 1; }

  std::uint64_t state_;
};

// Reports two values that differ.
template <typename T>
bool Equal(const T& model, const T& library) {
  if (model == library) return true;
  EXPECT_EQ(model, library);
  return false;
}

// Two outputs of `kSize` bytes with the same bytes inside and around, one for the library and one
// for its model. Nothing of what is around may change.
template <std::size_t kSize>
class Outputs {
 public:
  // Filled with noise, so that a byte that one of them writes and the other does not is seen.
  explicit Outputs(Random& random) {
    const unsigned char noise = random.Byte();
    std::memset(library_.data(), noise, library_.size());
    std::memset(model_.data(), noise, model_.size());
  }
  // Filled with zeros, as callers pass it.
  Outputs() {
    std::memset(library_.data(), 0, library_.size());
    std::memset(model_.data(), 0, model_.size());
  }

  unsigned char* library() { return library_.data() + kAround; }
  unsigned char* model() { return model_.data() + kAround; }
  char* library_text() { return reinterpret_cast<char*>(library()); }
  char* model_text() { return reinterpret_cast<char*>(model()); }

  bool AreEqual() const {
    if (std::memcmp(library_.data(), model_.data(), library_.size()) == 0) return true;
    const auto differ = std::mismatch(library_.begin(), library_.end(), model_.begin());
    ADD_FAILURE() << "byte " << differ.first - library_.begin() - std::ptrdiff_t{kAround} << " is "
                  << int{*differ.first} << ", the model's " << int{*differ.second};
    return false;
  }

 private:
  static constexpr std::size_t kAround = 64;
  alignas(16) std::array<unsigned char, kSize + 2 * kAround> library_;
  alignas(16) std::array<unsigned char, kSize + 2 * kAround> model_;
};

// Two records with the same bytes inside and around.
template <typename Record>
class Records : public Outputs<sizeof(Record)> {
 public:
  using Outputs<sizeof(Record)>::Outputs;

  Record* of_library() { return reinterpret_cast<Record*>(this->library()); }
  Record* of_model() { return reinterpret_cast<Record*>(this->model()); }
};

inline const unsigned char* BytesOf(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

// Writes a text with its zero.
inline void WriteText(const std::string& text, char* dest) {
  std::memcpy(dest, text.c_str(), text.size() + 1);
}

inline int SizeOf(const std::string& text) { return static_cast<int>(text.size()); }

// Number of inputs for each test: `usual`, a tenth under emulation and Valgrind, or what the
// variable QL_MODEL_INPUTS says.
std::uint64_t InputsToTry(std::uint64_t usual);
// Where tests write files: in memory if the private root is there.
std::string WorkFolder();
// A seed of the running test's own.
std::uint64_t SeedOfTest();
// Prints how many inputs were equal, for tests/models/run.
void ReportInputs(std::uint64_t inputs);

// While it lives, the library learns at once that there is no configuration file, if there was none
// at the start: every log call asks, and the answer takes longer than most functions.
class KnownConfiguration {
 public:
  KnownConfiguration();
  KnownConfiguration(const KnownConfiguration&) = delete;
  KnownConfiguration& operator=(const KnownConfiguration&) = delete;
  ~KnownConfiguration();
};

// Calls `is_equal` with random numbers to make an input from, until one differs.
template <typename IsEqual>
void ForEachInput(IsEqual is_equal, std::uint64_t usual = 100000) {
  const KnownConfiguration configuration;
  Random random(SeedOfTest());
  const std::uint64_t inputs = InputsToTry(usual);
  for (std::uint64_t i = 0; i < inputs; ++i) {
    if (is_equal(random)) continue;
    ADD_FAILURE() << "input " << i << " of " << inputs << " differs";
    return;
  }
  ReportInputs(inputs);
}

#endif
