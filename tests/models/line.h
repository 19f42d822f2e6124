// A serial line inside the process: the library's system calls on devices are answered here, by
// its own clock, which stands still but for what a script makes the library wait.
#ifndef QUILLONID_TESTS_MODELS_LINE_H
#define QUILLONID_TESTS_MODELS_LINE_H

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace line {

inline constexpr int kDescriptor = 1 << 20;  // no file has it
inline constexpr int kFirstRate = 300;       // of the line before anything opens it

// Bytes that one read gives, or its failure.
struct Arrival {
  std::int64_t at;  // milliseconds since Start()
  std::string bytes;
  int error = 0;
};

struct State {
  bool opens = true;  // devices can be opened

  std::deque<Arrival> arrivals;  // in the order of their times
  // What each write is answered with, in pieces; after the last one nothing more comes.
  std::deque<std::vector<std::string>> answers;
  int answer_after = 0;         // milliseconds
  std::deque<int> writes;       // bytes taken by the next writes, below zero: failures; then all
  std::int64_t cancel_at = -1;  // when another thread cancels

  std::string written;
  int empty_reads = 0;              // reads of no bytes
  std::vector<std::string> events;  // open, rate, close; what is written while `notes_writes`
  bool notes_writes = false;
};

State& Now();

// A new line; the clock stands `phase` milliseconds behind a whole second.
void Start(int phase);
// Milliseconds since then.
std::int64_t Milliseconds();

}  // namespace line

#endif
