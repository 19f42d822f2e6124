// The reader's mind: takes what the host sends and says what goes back and when. The tty and the
// USB side carry it. Every function may be called from any thread.
#ifndef QUILLONID_SIMULATOR_CARD_MODULE_H
#define QUILLONID_SIMULATOR_CARD_MODULE_H

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulator/card.h"
#include "simulator/faults.h"
#include "simulator/packets.h"

namespace simulator {

// One thing the reader does, `delay` after the one before it.
struct Step {
  std::chrono::milliseconds delay{0};
  Bytes bytes;
  bool hang_up = false;  // after the bytes: the line is dead from here on
  bool block = false;    // before the bytes: the line takes no more from the host
};

struct Exchange {
  Request request;
  std::string meaning;  // of the answer, in words; empty when there is none
  std::vector<Step> steps;
};

class CardModule {
 public:
  // Which card lies on the reader; none at the start.
  void PutCard(Card card);
  void RemoveCard();
  bool HasCard() const;

  // The faults from now on; none lets it behave again.
  void SetFaults(std::vector<Fault> faults);
  void SetFault(const Fault& fault) { SetFaults({fault}); }
  void ClearFaults() { SetFaults({}); }

  // Off (at the start): the one-command read answers without fingerprints.
  void SetOneCommandFingerprints(bool on);

  // First payload byte of the answer to the card check; none (at the start) lets the card on the
  // reader decide: 4 identity card, 0 nothing there.
  void SetCardCheck(std::optional<std::uint8_t> kind);

  // Speed that the reader talks at; 9,600 bit/s at the start and after a reset.
  int Speed() const;
  // On: what comes at another line speed than the reader's is noise to it. Off at the start.
  void SetSpeedMatters(bool on);

  // As after power-on: own speed, nothing half received. Card and faults stay.
  void Reset();

  // Takes bytes from the host, sent at `line_speed` bit/s (0 where there is no such thing), and
  // gives the exchange of every request that is whole by now.
  std::vector<Exchange> Receive(std::span<const std::uint8_t> bytes, int line_speed = 0);

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr int kOwnSpeed = 9600;

  const Fault* Find(FaultId id) const;
  bool CardPresent() const;
  Card CardAsRead() const;
  Exchange Answer(Request request, int line_speed);
  Bytes Reply(const Request& request, std::string* meaning);
  Bytes PacketAnswer(const Request& request, std::string* meaning) const;
  Bytes ReadReply(bool fingerprints, std::string* meaning);
  std::vector<Step> Delivery(Bytes reply);

  mutable std::mutex lock_;  // guards all below
  std::optional<Card> card_;
  std::vector<Fault> faults_;
  std::optional<Clock::time_point> first_request_;  // since the faults were set; for card-after
  bool bad_check_done_ = false;                     // bad-check-once has had its turn
  std::size_t replied_ = 0;  // bytes since the faults were set; hang-up counts them
  bool dead_ = false;        // hung up
  bool one_command_fingerprints_ = false;
  std::optional<std::uint8_t> card_check_;
  int speed_ = kOwnSpeed;
  bool speed_matters_ = false;
  Bytes received_;  // the start of a request
};

}  // namespace simulator

#endif
