#include "fuzz/scripted_card.h"

#include <cerrno>

#include "fuzz/frames.h"
#include "fuzz/virtual_clock.h"

namespace {

const Bytes kPreamble = {0xAA, 0xAA, 0xAA, 0x96, 0x69};
const Bytes kFoundStatus = {0x00, 0x00, 0x9F, 0x00, 0x00, 0x00, 0x00};
const Bytes kSelectedStatus = {0x00, 0x00, 0x90, 0, 0, 0, 0, 0, 0, 0, 0};
const Bytes kGoodStatus = {0x00, 0x00, 0x90};
constexpr std::size_t kTextSize = 256, kPhotoSize = 1024, kCommandSize = 10;
constexpr std::size_t kMarkAt = 248;

// Preamble, length, content, check byte.
Bytes Frame(const Bytes& content) {
  Bytes frame = kPreamble;
  const std::size_t length = content.size() + 1;
  frame.push_back(static_cast<std::uint8_t>(length >> 8));
  frame.push_back(static_cast<std::uint8_t>(length & 0xFF));
  frame.insert(frame.end(), content.begin(), content.end());
  frame.push_back(frames::Xor(frame, kPreamble.size(), frame.size()));
  return frame;
}

void Append(const Bytes& bytes, Bytes* to) { to->insert(to->end(), bytes.begin(), bytes.end()); }

void AppendLength(std::size_t length, Bytes* to) {
  to->push_back(static_cast<std::uint8_t>(length >> 8));
  to->push_back(static_cast<std::uint8_t>(length & 0xFF));
}

}  // namespace

ScriptedCard::ScriptedCard(Input* script, bool one_command_fingerprints)
    : script_(script),
      kind_(script->Between(0, 3)),
      one_command_fingerprints_(one_command_fingerprints) {
  const Bytes pattern = script->Take(script->Byte());
  for (std::size_t i = 0; i < kTextSize; ++i) {
    const std::uint8_t filler = i % 2 == 0 ? 'A' : 0;
    text_.push_back(pattern.empty() ? filler : pattern[i % pattern.size()]);
  }
  constexpr char kMarks[] = " IJ";
  if (kind_ < 3) {
    text_[kMarkAt] = static_cast<std::uint8_t>(kMarks[kind_]);
    text_[kMarkAt + 1] = 0;
  }
  templates_ = script->Flag() ? 0 : 1024;
}

void ScriptedCard::Receive(const std::uint8_t* bytes, std::size_t size) {
  received_.insert(received_.end(), bytes, bytes + size);
  while (TakeFrame() || TakePacket()) {
  }
  if (received_.size() > 4096) received_.clear();
}

// A card-module command anywhere in what was received.
bool ScriptedCard::TakeFrame() {
  const auto start =
      std::search(received_.begin(), received_.end(), kPreamble.begin(), kPreamble.end());
  if (static_cast<std::size_t>(received_.end() - start) < kCommandSize) return false;
  const unsigned command = start[7] * 256U + start[8];
  received_.erase(received_.begin(), start + kCommandSize);
  switch (command) {
    case 0x11FF:
      Answer(Frame(kGoodStatus));
      break;
    case 0x2001:
      Answer(Frame(kFoundStatus));
      break;
    case 0x2002:
      Answer(Frame(kSelectedStatus));
      break;
    case 0x3010:
      Answer(ReadReply(true));
      break;
    case 0x3020:
      Answer(ReadReply(one_command_fingerprints_));
      break;
    default:
      Answer(ReadReply(false));
      break;
  }
  return true;
}

// A packet of the reader's own: a card check, or whatever the caller sent. One payload byte comes.
bool ScriptedCard::TakePacket() {
  if (received_.empty() || (received_[0] != 1 && received_[0] != 2)) return false;
  const std::uint8_t head = received_[0], end = head == 1 ? 4 : 3;
  const auto last = std::find(received_.begin(), received_.end(), end);
  if (last == received_.end()) return false;
  received_.erase(received_.begin(), last + 1);
  Answer(frames::Make(head, end, {0, 0, static_cast<std::uint8_t>('1')}));
  return true;
}

Bytes ScriptedCard::ReadReply(bool fingerprints) const {
  Bytes content = kGoodStatus;
  AppendLength(kTextSize, &content);
  AppendLength(kPhotoSize, &content);
  if (fingerprints) AppendLength(static_cast<std::size_t>(templates_), &content);
  Append(text_, &content);
  for (std::size_t i = 0; i < kPhotoSize; ++i)
    content.push_back(static_cast<std::uint8_t>(i % 251));
  if (fingerprints) content.resize(content.size() + static_cast<std::size_t>(templates_), 0x5F);
  return Frame(content);
}

void ScriptedCard::Answer(const Bytes& right) {
  const Bytes answer = Damaged(right);
  // Half of the answers come at once, the others up to 6.35 s later; one in four in pieces.
  const std::int64_t delay = std::max(script_->Byte() - 128, 0) * std::int64_t{50'000};
  const std::uint8_t piece = script_->Byte();
  piece_ = piece < 192 ? 0 : piece - 191U;
  flawless_ = flawless_ && answer == right && delay == 0 && piece_ == 0 && fault_ == 0 && !hung_up_;
  pending_.push_back({virtual_clock::Microseconds() + delay, answer});
}

Bytes ScriptedCard::Damaged(Bytes answer) {
  const int fault = script_->Byte() % 20;
  switch (fault) {
    case 8:  // no card
      return Frame({0x00, 0x00, 0x81});
    case 9:  // some bits
      for (int i = script_->Byte() % 4; i >= 0; --i) {
        answer[script_->Word() % answer.size()] ^= static_cast<std::uint8_t>(script_->Byte());
      }
      return answer;
    case 10:  // cut
      answer.resize(script_->Word() % (answer.size() + 1));
      return answer;
    case 11: {  // bytes before it
      Bytes whole = script_->Take(script_->Byte() * std::size_t{8});
      Append(answer, &whole);
      return whole;
    }
    case 12:  // another length
      answer[5] = script_->Byte();
      answer[6] = script_->Byte();
      answer.resize(script_->Word() % 5000, 0x33);
      return answer;
    case 13:  // silence
      return {};
    case 14:
      fault_ = script_->Flag() ? EIO : EINTR;
      return answer;
    case 15:
      hung_up_ = script_->Flag();
      return answer;
    case 16:  // anything
      return script_->Take(script_->Byte() * std::size_t{16});
    case 17:  // a right frame of any content
      return Frame(script_->Take(script_->Byte() * std::size_t{4}));
    case 18:  // unsupported, IC power-on
      return script_->Flag() ? Bytes{0xAA, 0xAA, 0xAA, 0x96, 0x69, 0, 4, 0, 0, 0x21, 0x45, 0}
                             : Frame({0x40, 0x02, 0x41});
    case 19:  // twice
      Append(Bytes(answer), &answer);
      return answer;
    default:
      return answer;
  }
}

Bytes ScriptedCard::Give(std::size_t most) {
  if (piece_ > 0) most = std::min(most, piece_);
  Bytes given;
  while (!pending_.empty() && pending_.front().at <= virtual_clock::Microseconds() &&
         given.size() < most) {
    Bytes& front = pending_.front().bytes;
    const std::size_t count = std::min(most - given.size(), front.size());
    const auto end = front.begin() + static_cast<std::ptrdiff_t>(count);
    given.insert(given.end(), front.begin(), end);
    front.erase(front.begin(), end);
    if (front.empty()) pending_.pop_front();
  }
  return given;
}

std::int64_t ScriptedCard::UntilNext(std::int64_t longest) const {
  if (pending_.empty()) return longest;
  const std::int64_t left = pending_.front().at - virtual_clock::Microseconds();
  return std::clamp<std::int64_t>(left, 0, longest);
}

int ScriptedCard::TakeFault() {
  const int fault = fault_;
  fault_ = 0;
  return fault;
}
