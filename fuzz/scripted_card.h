// A card reader that does what the fuzzer's input says: to each command it gives the right answer,
// a damaged one, others' bytes, or none, now or later, whole or in pieces. Where the input ends it
// is a good reader with a card on it.
#ifndef QUILLONID_FUZZ_SCRIPTED_CARD_H
#define QUILLONID_FUZZ_SCRIPTED_CARD_H

#include <cstdint>
#include <deque>

#include "fuzz/input.h"

class ScriptedCard {
 public:
  // `one_command_fingerprints`: the one-command read gives fingerprints, as a module can be set to.
  ScriptedCard(Input* script, bool one_command_fingerprints);

  void Receive(const std::uint8_t* bytes, std::size_t size);
  // At most `most` of the bytes that have come by now.
  Bytes Give(std::size_t most);
  // Microseconds until more bytes come, or `longest`.
  std::int64_t UntilNext(std::int64_t longest) const;

  // The failure of the next read, once: an errno, or 0.
  int TakeFault();
  bool HasFault() const { return fault_ != 0; }
  bool HungUp() const { return hung_up_; }
  // Nothing but right answers so far, at once and whole.
  bool Flawless() const { return flawless_; }
  bool HasKnownKind() const { return kind_ < 3; }
  int Kind() const { return kind_; }

 private:
  struct Pending {
    std::int64_t at;
    Bytes bytes;
  };

  void Answer(const Bytes& right);
  Bytes Damaged(Bytes answer);
  Bytes ReadReply(bool fingerprints) const;
  bool TakeFrame();
  bool TakePacket();

  Input* script_;
  int kind_;
  Bytes text_;
  int templates_;
  bool one_command_fingerprints_;
  Bytes received_;
  std::deque<Pending> pending_;
  std::size_t piece_ = 0;  // bytes that one read gives; 0: all
  int fault_ = 0;
  bool hung_up_ = false;
  bool flawless_ = true;
};

#endif
