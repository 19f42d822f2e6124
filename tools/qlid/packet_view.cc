#include "tools/qlid/packet_view.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <span>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "simulator/packets.h"
#include "tools/qlid/simulator_text.h"
#include "tools/qlid/terminal.h"
#include "tools/qlid/trace.h"

namespace qlid {
namespace {

using simulator::kPreamble;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kCommandLength = 3;   // command, parameter and check byte
constexpr std::size_t kLongestBody = 1024;  // characters between head and end
constexpr std::size_t kPayloadSize = 1020;
constexpr std::size_t kBytesShown = 8;

std::string HexText(std::span<const std::uint8_t> bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size() && i < kBytesShown; ++i)
    text += Format("%s%02X", i == 0 ? "" : " ", bytes[i]);
  return bytes.size() > kBytesShown ? text + " …" : text;
}

// Takes the bytes from front to back, and never more than there are.
class Walk {
 public:
  Walk(const Bytes& bytes, PacketView* view) : bytes_(bytes), view_(view) {}

  std::size_t left() const { return bytes_.size() - offset_; }

  std::span<const std::uint8_t> Take(std::size_t size, const char* meaning,
                                     std::string value = "") {
    const std::span<const std::uint8_t> piece =
        std::span(bytes_).subspan(offset_, std::min(size, left()));
    if (piece.empty()) return piece;
    view_->rows.push_back({
        offset_, {piece.begin(), piece.end()},
         meaning, std::move(value)
    });
    offset_ += piece.size();
    return piece;
  }

  // Bytes that may be the holder's.
  std::span<const std::uint8_t> TakePersonal(std::size_t size, const char* meaning,
                                             std::string value = "") {
    const auto piece = Take(size, meaning, std::move(value));
    if (!piece.empty()) last().personal = true;
    return piece;
  }

  ByteMeaning& last() { return view_->rows.back(); }

 private:
  const Bytes& bytes_;
  PacketView* view_;
  std::size_t offset_ = 0;
};

void TellCheckByte(std::uint8_t right, std::uint8_t got, Walk* walk, PacketView* view) {
  walk->last().value = Format("%02X", got);
  if (got == right) {
    walk->last().value += Tr(", right", "，正确");
    return;
  }
  walk->last().impossible = true;
  walk->last().value += Format(Tr(", wrong: %02X would be right", "，错误：应为 %02X"), right);
  view->fault = Format(Tr("check byte at offset %zu: %02X, and the bytes before it give %02X",
                          "偏移 %zu 处的校验字节：%02X，而前面的字节得出 %02X"),
                       walk->last().offset, got, right);
}

// Reader packets ------------------------------------------------------------------------------

// The bytes that pairs of characters stand for, by their low nibbles.
Bytes Merged(std::span<const std::uint8_t> characters) {
  Bytes bytes(characters.size() / 2);
  Str_ZelModeMergeData(characters.data(), static_cast<int>(bytes.size() * 2), bytes.data());
  return bytes;
}

// The fields between head and end. Length, check byte and what they say about each other.
void WalkBody(std::size_t size, Walk* walk, PacketView* view) {
  const Bytes length = Merged(walk->Take(std::min<std::size_t>(size, 4), Tr("length", "长度")));
  if (size < 6) return;
  ByteMeaning& length_row = walk->last();
  const std::size_t announced = length[0] * 256U + length[1];
  const std::size_t covered = size / 2 - 3;
  std::string value = Format(Tr("%zu bytes", "%zu 字节"), announced);
  if (announced != covered) {
    length_row.impossible = true;
    value += Format(Tr(", but %zu came", "，实际为 %zu"), covered);
  }
  length_row.value = value;
  if (announced < 2)
    view->fault = Format(Tr("length at offset %zu: %zu, and an answer has two bytes of status",
                            "偏移 %zu 处的长度：%zu，而应答至少有两字节状态"),
                         length_row.offset, announced);

  const std::size_t status_size = std::min<std::size_t>(2 * covered, 4);
  Bytes checked = Merged(walk->Take(
      status_size, Tr("status, or the first bytes of a request", "状态，或请求的前两个字节")));
  if (status_size > 0) walk->last().value = HexText(checked);
  const Bytes payload =
      Merged(walk->TakePersonal(2 * covered - status_size, Tr("payload", "数据内容")));
  if (!payload.empty()) {
    walk->last().value = HexText(payload);
    checked.insert(checked.end(), payload.begin(), payload.end());
  }
  const Bytes check = Merged(walk->Take(2, Tr("check byte", "校验字节")));
  TellCheckByte(simulator::Xor(checked), check[0], walk, view);
}

// What only the number of characters between head and end says.
std::string SizeFault(std::size_t size) {
  if (size % 2 != 0)
    return Format(Tr("%zu characters between head and end: a byte is two of them",
                     "首尾之间有 %zu 个字符：每字节应为两个字符"),
                  size);
  if (size > kLongestBody)
    return Format(Tr("%zu characters between head and end, more than the 1024 of any packet",
                     "首尾之间有 %zu 个字符，超过任何数据包的 1024 个"),
                  size);
  return "";
}

void ViewReaderPacket(const Bytes& bytes, std::size_t head_at, PacketView* view) {
  view->frame = "reader-packet";
  const std::uint8_t head = bytes[head_at];
  const std::uint8_t end = head == 0x01 ? 0x04 : 0x03;
  Walk walk(bytes, view);
  walk.TakePersonal(head_at, Tr("ignored: before the head", "忽略：起始字节之前"));
  walk.Take(1, Tr("head", "起始字节"));
  const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(head_at) + 1;
  const auto last = std::find(first, bytes.end(), end);
  const auto size = static_cast<std::size_t>(last - first);
  if (last == bytes.end()) {
    walk.TakePersonal(size, Tr("without an end", "没有结束字节"));
    view->fault = Format(Tr("no end byte %02X behind the head at offset %zu",
                            "偏移 %2$zu 处的起始字节之后没有结束字节 %1$02X"),
                         end, head_at);
  } else {
    view->fault = SizeFault(size);
    if (view->fault.empty()) {
      WalkBody(size, &walk, view);
    } else {
      walk.TakePersonal(
          size, Tr("length, status, payload, check byte", "长度、状态、数据内容、校验字节"));
    }
    walk.Take(1, Tr("end", "结束字节"));
    walk.TakePersonal(walk.left(), Tr("ignored: behind the end", "忽略：结束字节之后"));
  }

  std::uint8_t payload[kPayloadSize];
  std::uint32_t payload_size = 0;
  const bool taken =
      Str_ZEL_ParsePacket(head, end, bytes.data(), static_cast<uint32_t>(bytes.size()), payload,
                          &payload_size) == QL_SUCCESS;
  if (taken) {
    view->fault.clear();
  } else if (view->fault.empty()) {
    view->fault = Tr("too few bytes between head and end", "首尾之间的字节太少");
  }
}

// Card-module frames --------------------------------------------------------------------------

// The one answer that is known by its bytes: its check byte is another than their exclusive-or.
bool IsUnsupported(const Bytes& bytes) {
  constexpr std::array<std::uint8_t, 11> kUnsupported = {0xAA, 0xAA, 0xAA, 0x96, 0x69, 0x00,
                                                         0x04, 0x00, 0x00, 0x21, 0x45};
  return bytes.size() >= kUnsupported.size() &&
         std::equal(kUnsupported.begin(), kUnsupported.end(), bytes.begin());
}

std::string ModuleMeaning(const Bytes& bytes, bool command) {
  if (!command) return AnswerMeaning(bytes);
  Bytes rest = bytes;
  const auto request = simulator::TakeRequest(&rest);
  return request ? request->meaning : "";
}

void ViewModuleFrame(const Bytes& bytes, PacketView* view) {
  view->frame = "card-module";
  Walk walk(bytes, view);
  walk.Take(kPreamble.size(), Tr("preamble", "前导"));
  const auto length_bytes =
      walk.Take(2, Tr("length of what follows, big-endian", "其后长度，大端"));
  const std::size_t length =
      length_bytes.size() == 2 ? length_bytes[0] * 256U + length_bytes[1] : 0;
  if (length_bytes.size() == 2) walk.last().value = Format(Tr("%zu bytes", "%zu 字节"), length);
  if (length_bytes.size() < 2 || length < kCommandLength ||
      IdEndCondition(bytes.data(), static_cast<int>(bytes.size())) != 0) {
    const std::size_t came = walk.left();
    walk.TakePersonal(came, Tr("what came", "收到的部分"));
    view->fault = length_bytes.size() == 2 && length < kCommandLength
                      ? Format(Tr("length at offset 5: %zu, and the shortest frame has 3",
                                  "偏移 5 处的长度：%zu，而最短的帧为 3"),
                               length)
                      : Format(Tr("cut off at offset %zu: the length announces %zu bytes, %zu came",
                                  "在偏移 %zu 处中断：长度为 %zu 字节，收到 %zu 字节"),
                               bytes.size(), length, came);
    return;
  }
  const bool command = length == kCommandLength;
  if (command) {
    walk.Take(1, Tr("command", "命令"));
    walk.Take(1, Tr("parameter", "参数"));
  } else {
    walk.Take(3, Tr("status", "状态"));
    const std::size_t data = length - 4;
    walk.TakePersonal(data, Tr("data", "数据"), Format(Tr("%zu bytes", "%zu 字节"), data));
  }
  const auto check = walk.Take(1, Tr("check byte", "校验字节"));
  const std::uint8_t right = simulator::Xor(std::span(bytes).subspan(kPreamble.size(), length + 1));
  view->meaning = TrafficText(ModuleMeaning(bytes, command));
  if (IsUnsupported(bytes)) {
    walk.last().value = Tr("45, as this answer has it", "45，此应答如此");
  } else {
    TellCheckByte(right, check[0], &walk, view);
  }
  walk.TakePersonal(walk.left(), Tr("ignored: behind the frame", "忽略：帧之后"));
}

}  // namespace

PacketView ViewPacket(const std::vector<std::uint8_t>& bytes) {
  PacketView view;
  if (simulator::HasPreamble(bytes)) {
    ViewModuleFrame(bytes, &view);
    return view;
  }
  const auto head = std::find_if(bytes.begin(), bytes.end(),
                                 [](std::uint8_t byte) { return byte == 0x01 || byte == 0x02; });
  if (head != bytes.end()) {
    ViewReaderPacket(bytes, static_cast<std::size_t>(head - bytes.begin()), &view);
    return view;
  }
  Walk(bytes, &view).TakePersonal(bytes.size(), Tr("bytes of no frame", "不属于任何帧的字节"));
  view.fault =
      Tr("neither the head byte 01 or 02 of a reader packet nor the preamble "
         "AA AA AA 96 69 of a card-module frame",
         "既没有数据包的起始字节 01 或 02，也没有安全模块帧的前导 AA AA AA 96 69");
  return view;
}

bool ParseHex(const std::string& text, std::vector<std::uint8_t>* bytes) {
  std::string digits;
  for (const char c : text) {
    if (std::isxdigit(static_cast<unsigned char>(c))) {
      digits += c;
    } else if (!std::isspace(static_cast<unsigned char>(c)) && c != ':') {
      return false;
    }
  }
  if (digits.empty() || digits.size() % 2 != 0) return false;
  bytes->clear();
  for (std::size_t i = 0; i < digits.size(); i += 2)
    bytes->push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  return true;
}

}  // namespace qlid
