// What travels between program and reader, in words: a line for each frame, and where the time of a
// read went.
#ifndef QUILLONID_TOOLS_QLID_TRACE_H
#define QUILLONID_TOOLS_QLID_TRACE_H

#include <array>
#include <chrono>
#include <string>
#include <vector>

#include "simulator/recording.h"
#include "simulator/tty_reader.h"

namespace qlid {

constexpr std::size_t kTracedBytes = 24;

// One frame as a line on standard error, at most `limit` of its bytes.
void PrintTrace(const simulator::TraceEvent& event, std::size_t limit = kTracedBytes);

// What the card module says with an answer.
const char* AnswerMeaning(const simulator::Bytes& bytes);

// A request or an answer, whole.
struct Frame {
  std::chrono::microseconds first{0};  // when its first byte came
  std::chrono::microseconds last{0};   // and its last
  bool from_host = false;
  simulator::RequestKind kind = simulator::RequestKind::kNoise;  // of a request
  std::string meaning;
  simulator::Bytes bytes;
};

// Puts frames together from the pieces that a line tap hears.
class FrameReader {
 public:
  // The frames that are whole with this piece.
  std::vector<Frame> Take(const simulator::RecordedPiece& piece);

 private:
  struct Side {
    simulator::Bytes bytes;
    std::chrono::microseconds first{0};
  };
  Side host_;
  Side reader_;
};

// The parts of a read, in the order of their happening.
enum class Part { kOpen, kSearch, kSelect, kRead, kOther, kPauses, kClose };
struct Timing {
  struct Row {
    const char* name;  // in JSON
    const char* english;
    const char* chinese;
    std::chrono::microseconds time{0};
    int requests = 0;
  };
  std::array<Row, 7> rows;  // by Part
};

// From the frames of a read that took `whole` in all: a request lasts until its answer has come, or
// until the next request where there was no answer.
Timing TimingOf(const std::vector<Frame>& frames, std::chrono::microseconds whole);

// A table on standard error.
void PrintTiming(const Timing& timing);

}  // namespace qlid

#endif
