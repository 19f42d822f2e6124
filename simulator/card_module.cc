#include "simulator/card_module.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace simulator {
namespace {

using std::chrono::milliseconds;

const Bytes kDeviceReady = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x04, 0x00, 0x00, 0x90, 0x94};
const Bytes kCardFound = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x08, 0x00,
                          0x00, 0x9F, 0x00, 0x00, 0x00, 0x00, 0x97};
const Bytes kCardSelected = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x0C, 0x00, 0x00, 0x90,
                             0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x9C};
const Bytes kNoCard = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x04, 0x00, 0x00, 0x81, 0x85};
const Bytes kIcPowerOn = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x04, 0x40, 0x02, 0x41, 0x07};
const Bytes kUnknownStatus = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x04, 0x00, 0x00, 0x55, 0x51};
const Bytes kReadFailed = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x04, 0x00, 0x00, 0x41, 0x45};
// The check byte is the module's own: the XOR would be 25. A zero byte follows the frame.
const Bytes kUnsupported = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00, 0x04, 0x00, 0x00, 0x21, 0x45, 0x00};

constexpr std::uint8_t kCardCheckHead = 0x02;
constexpr std::uint8_t kIdentityCard = 4;  // answer to the card check

constexpr std::uint8_t kGarbage = 0xFF;
constexpr std::size_t kFrameOverhead = 8;  // preamble, length and check byte

// The module's answer of `size` bytes whose length and check byte are right for that size.
Bytes Resized(Bytes reply, std::size_t size) {
  if (size < kFrameOverhead) {
    reply.resize(size);
    return reply;
  }
  Bytes content(reply.begin() + 7, reply.end() - 1);
  content.resize(size - kFrameOverhead);
  return ModuleFrame(content);
}

// A short answer with zeros behind it up to the length of a card answer, and a check byte that is
// right for all of it.
Bytes AsLongAsACard(Bytes reply) {
  constexpr std::size_t kCardAnswer = 1295;
  constexpr std::size_t kChecked = 5;  // behind the preamble
  reply.resize(kCardAnswer);
  for (std::size_t i = kChecked; i + 1 < reply.size(); ++i) reply.back() ^= reply[i];
  return reply;
}

// The reply in small pieces, `rate` bytes a second.
std::vector<Step> Trickle(const Bytes& reply, std::size_t rate) {
  rate = std::max<std::size_t>(rate, 1);
  const std::size_t piece = rate < 1000 ? 1 : rate / 100;
  std::vector<Step> steps;
  for (std::size_t at = 0; at < reply.size(); at += piece) {
    const std::size_t size = std::min(piece, reply.size() - at);
    const auto first = reply.begin() + static_cast<std::ptrdiff_t>(at);
    Step step;
    step.delay = milliseconds(size * 1000 / rate);
    step.bytes.assign(first, first + static_cast<std::ptrdiff_t>(size));
    steps.push_back(std::move(step));
  }
  return steps;
}

}  // namespace

void CardModule::PutCard(Card card) {
  const std::lock_guard guard(lock_);
  card_ = std::move(card);
}

void CardModule::RemoveCard() {
  const std::lock_guard guard(lock_);
  card_.reset();
}

bool CardModule::HasCard() const {
  const std::lock_guard guard(lock_);
  return card_.has_value();
}

void CardModule::SetFaults(std::vector<Fault> faults) {
  const std::lock_guard guard(lock_);
  faults_ = std::move(faults);
  first_request_.reset();
  bad_check_done_ = false;
  replied_ = 0;
}

void CardModule::SetOneCommandFingerprints(bool on) {
  const std::lock_guard guard(lock_);
  one_command_fingerprints_ = on;
}

void CardModule::SetCardCheck(std::optional<std::uint8_t> kind) {
  const std::lock_guard guard(lock_);
  card_check_ = kind;
}

int CardModule::Speed() const {
  const std::lock_guard guard(lock_);
  return speed_;
}

void CardModule::SetSpeedMatters(bool on) {
  const std::lock_guard guard(lock_);
  speed_matters_ = on;
}

void CardModule::Reset() {
  const std::lock_guard guard(lock_);
  speed_ = kOwnSpeed;
  dead_ = false;
  replied_ = 0;
  received_.clear();
}

std::vector<Exchange> CardModule::Receive(std::span<const std::uint8_t> bytes, int line_speed) {
  const std::lock_guard guard(lock_);
  std::vector<Exchange> exchanges;
  if (dead_) return exchanges;
  received_.insert(received_.end(), bytes.begin(), bytes.end());
  while (auto request = TakeRequest(&received_)) {
    exchanges.push_back(Answer(std::move(*request), line_speed));
  }
  return exchanges;
}

const Fault* CardModule::Find(FaultId id) const {
  const auto found =
      std::find_if(faults_.begin(), faults_.end(), [&](const Fault& f) { return f.id == id; });
  return found == faults_.end() ? nullptr : &*found;
}

bool CardModule::CardPresent() const {
  if (!card_ || Find(FaultId::kNoCard) != nullptr) return false;
  const Fault* after = Find(FaultId::kCardAfter);
  return after == nullptr ||
         (first_request_ && Clock::now() - *first_request_ >= std::chrono::seconds(after->value));
}

// The card with the faults that lie in the card.
Card CardModule::CardAsRead() const {
  Card card = *card_;
  if (Find(FaultId::kOtherKind) != nullptr) {
    // A permit is no answer to anyone who asked for a resident's or a foreigner's card.
    card = MakeCard(card.person.kind == Kind::kPermit ? "resident" : "permit", card.fingerprints);
  }
  if (Find(FaultId::kUnknownKind) != nullptr) card.mark = 'X';
  if (const Fault* length = Find(FaultId::kPhotoLength)) {
    card.photo_length = static_cast<unsigned>(length->value);
  }
  if (Find(FaultId::kPhotoRefused) != nullptr) card.photo.assign(kPhotoSize, 0);  // no portrait
  return card;
}

Exchange CardModule::Answer(Request request, int line_speed) {
  Exchange exchange;
  exchange.request = std::move(request);

  // A speed command counts at any line speed: the host changes the line's speed right after it, and
  // a pseudo-terminal does not keep the speed that the bytes were sent at.
  if (exchange.request.kind == RequestKind::kSpeed) {
    speed_ = exchange.request.speed == 0 ? kOwnSpeed : exchange.request.speed;
    return exchange;
  }
  if (speed_matters_ && line_speed != 0 && line_speed != speed_) {
    exchange.meaning = "not understood: the reader is at " + std::to_string(speed_) + " bit/s";
    return exchange;
  }
  if (!first_request_) first_request_ = Clock::now();
  Bytes reply = Reply(exchange.request, &exchange.meaning);
  if (!reply.empty() && Find(FaultId::kSilent) != nullptr) {
    reply.clear();
    exchange.meaning = "silent";
  }
  if (!reply.empty()) exchange.steps = Delivery(std::move(reply));
  return exchange;
}

Bytes CardModule::Reply(const Request& request, std::string* meaning) {
  const auto say = [&](const char* words, const Bytes& reply) {
    *meaning = words;
    return reply;
  };
  switch (request.kind) {
    case RequestKind::kDeviceCheck:
      return say("device ready", kDeviceReady);
    case RequestKind::kSearch:
      return CardPresent() ? say("card found", kCardFound) : say("no card", kNoCard);
    case RequestKind::kSelect:
      if (Find(FaultId::kIcPowerOn) != nullptr) return say("IC power-on", kIcPowerOn);
      if (Find(FaultId::kSelectUnknown) != nullptr) return say("unknown status", kUnknownStatus);
      if (!CardPresent() || Find(FaultId::kSelectNoCard) != nullptr) {
        return say("no card", kNoCard);
      }
      return say("card selected", kCardSelected);
    case RequestKind::kRead:
      return ReadReply(false, meaning);
    case RequestKind::kReadFingerprints:
      return ReadReply(true, meaning);
    case RequestKind::kReadOneCommand:
      return ReadReply(one_command_fingerprints_, meaning);
    case RequestKind::kPacket:
      return PacketAnswer(request, meaning);
    case RequestKind::kOtherFrame:
    case RequestKind::kOtherPacket:
    case RequestKind::kSpeed:
    case RequestKind::kExtension:
    case RequestKind::kNoise:
      break;
  }
  return {};
}

Bytes CardModule::PacketAnswer(const Request& request, std::string* meaning) const {
  const std::uint8_t head = request.bytes.front();
  const std::uint8_t end = request.bytes.back();
  if (head != kCardCheckHead) {
    *meaning = "channel data, echoed";
    return PacketReply(head, end, 0, request.content);
  }
  const std::uint8_t kind = card_check_.value_or(CardPresent() ? kIdentityCard : 0);
  *meaning = "card of kind " + std::to_string(kind);
  return PacketReply(head, end, 0, Bytes{kind});
}

Bytes CardModule::ReadReply(bool fingerprints, std::string* meaning) {
  if (Find(FaultId::kUnsupported) != nullptr) {
    *meaning = "unsupported";
    return kUnsupported;
  }
  if (Find(FaultId::kUnsupportedCard) != nullptr) {
    *meaning = "unsupported, as long as a card";
    return AsLongAsACard(kUnsupported);
  }
  if (!CardPresent() || Find(FaultId::kReadFailed) != nullptr) {
    *meaning = "read failed";
    return kReadFailed;
  }
  Bytes reply = NativeData(CardAsRead(), fingerprints);
  *meaning = "read done, " + std::to_string(reply.size()) + " bytes";
  const bool bad_check = Find(FaultId::kBadCheck) != nullptr ||
                         (Find(FaultId::kBadCheckOnce) != nullptr && !bad_check_done_);
  if (bad_check) {
    reply.back() ^= 0xFF;
    bad_check_done_ = true;
    *meaning += ", wrong check byte";
  }
  if (const Fault* length = Find(FaultId::kLength)) {
    reply = Resized(std::move(reply), static_cast<std::size_t>(length->value));
    *meaning = "read reply of " + std::to_string(reply.size()) + " bytes";
  }
  if (const Fault* cut = Find(FaultId::kCut)) {
    reply.resize(std::min(reply.size(), static_cast<std::size_t>(cut->value)));
    *meaning = "read reply cut after " + std::to_string(reply.size()) + " bytes";
  }
  return reply;
}

// How the reply gets to the host: with the faults that lie on the line.
std::vector<Step> CardModule::Delivery(Bytes reply) {
  if (const Fault* garbage = Find(FaultId::kGarbage)) {
    reply.insert(reply.begin(), static_cast<std::size_t>(garbage->value), kGarbage);
  }
  bool hang_up = false;
  if (const Fault* limit = Find(FaultId::kHangUp)) {
    const auto left = static_cast<std::size_t>(limit->value) - replied_;
    hang_up = reply.size() >= left;
    if (hang_up) reply.resize(left);
  }
  replied_ += reply.size();
  dead_ = hang_up;

  std::vector<Step> steps;
  if (const Fault* slow = Find(FaultId::kSlow)) {
    steps = Trickle(reply, static_cast<std::size_t>(slow->value));
  }
  if (steps.empty()) {
    steps.emplace_back();
    steps.back().bytes = std::move(reply);
  }
  if (const Fault* late = Find(FaultId::kLate))
    steps.front().delay += std::chrono::seconds(late->value);
  steps.back().hang_up = hang_up;
  steps.front().block = Find(FaultId::kBlocked) != nullptr;
  return steps;
}

}  // namespace simulator
