// What travelled on a serial line between a program and a card reader, with its timing, as a text
// file; and a reader that answers from it. The file:
//
//   qtrace 1
//   # a remark
//   0.000214 speed 115200
//   0.000214 < AA AA AA 96 69 00 03 20 01 22
//   0.014907 > AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97
//
// Seconds since the start; "<" towards the reader, ">" from it; "speed" before the first bytes sent
// at another line speed than those before.
#ifndef QUILLONID_SIMULATOR_RECORDING_H
#define QUILLONID_SIMULATOR_RECORDING_H

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/card_module.h"

namespace simulator {

struct RecordedPiece {
  std::chrono::microseconds at{0};
  bool from_host = false;
  int speed = 0;  // bit/s: the line changed to it; then there are no bytes
  Bytes bytes;
};

// Lines of `remark` stand at the head of the text.
std::string RecordingText(std::span<const RecordedPiece> pieces, std::string_view remark);

// None for a text that is no recording, with the number of the line and what is wrong with it.
std::optional<std::vector<RecordedPiece>> ParseRecording(std::string_view text, std::string* why);

// A reader that says what the recorded one said, after the time it took, whenever it is sent what
// that one was sent. What comes after the recording's end starts it again; what is not in it is not
// answered.
class Replay {
 public:
  explicit Replay(const std::vector<RecordedPiece>& pieces);

  std::vector<Exchange> Receive(std::span<const std::uint8_t> bytes, int line_speed);

 private:
  struct Turn {
    Bytes sent;  // by the host
    std::vector<Step> answer;
  };

  bool Find(std::size_t* turn) const;
  bool MayComplete() const;

  std::vector<Turn> turns_;
  std::size_t next_ = 0;  // turn that is expected
  Bytes received_;        // of which no turn is whole yet
};

}  // namespace simulator

#endif
