#include "tools/qlid/trace.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "simulator/packets.h"
#include "tools/qlid/simulator_text.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

using Microseconds = std::chrono::microseconds;
using simulator::RequestKind;

constexpr std::size_t kHead = 10;  // preamble, length, status

// What a card module's answer says: its status bytes, at least so many bytes in all.
struct AnswerRow {
  std::array<std::uint8_t, 3> status;
  std::size_t least;
  const char* meaning;
};
constexpr AnswerRow kAnswers[] = {
    {{0x00, 0x00, 0x9F}, 0,   "card found"   },
    {{0x00, 0x00, 0x90}, 100, "card data"    },
    {{0x00, 0x00, 0x90}, 19,  "card selected"},
    {{0x00, 0x00, 0x90}, 0,   "ready"        },
    {{0x00, 0x00, 0x80}, 0,   "no card"      },
    {{0x00, 0x00, 0x81}, 0,   "no card"      },
    {{0x00, 0x00, 0x41}, 0,   "read failed"  },
    {{0x00, 0x00, 0x21}, 0,   "unsupported"  },
    {{0x40, 0x02, 0x41}, 0,   "IC power-on"  },
};

// Bytes of the answer at the front; 0 while it is not known or not all there.
std::size_t AnswerSize(const simulator::Bytes& bytes) {
  if (bytes.size() < 7) return 0;
  if (!simulator::HasPreamble(bytes)) return bytes.size();
  const std::size_t size = 7 + bytes[5] * 256U + bytes[6];
  return bytes.size() >= size ? size : 0;
}

Part PartOf(RequestKind kind) {
  switch (kind) {
    case RequestKind::kSearch:
      return Part::kSearch;
    case RequestKind::kSelect:
      return Part::kSelect;
    case RequestKind::kRead:
    case RequestKind::kReadFingerprints:
    case RequestKind::kReadOneCommand:
      return Part::kRead;
    default:
      return Part::kOther;
  }
}

}  // namespace

const char* AnswerMeaning(const simulator::Bytes& bytes) {
  if (bytes.size() < kHead || !simulator::HasPreamble(bytes)) return "bytes of no frame";
  for (const AnswerRow& row : kAnswers) {
    if (bytes.size() >= row.least &&
        std::equal(row.status.begin(), row.status.end(), bytes.begin() + 7)) {
      return row.meaning;
    }
  }
  return "unknown answer";
}

void PrintTrace(const simulator::TraceEvent& event, std::size_t limit) {
  const auto since = event.time.time_since_epoch();
  const time_t seconds = std::chrono::system_clock::to_time_t(event.time);
  const long milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(since).count() % 1000;
  tm local = {};
  localtime_r(&seconds, &local);
  const bool from_host = event.direction == simulator::TraceEvent::Direction::kFromHost;
  std::string line =
      Format("%02d:%02d:%02d.%03ld  %s  %s", local.tm_hour, local.tm_min, local.tm_sec,
             milliseconds, from_host ? "<" : ">", PaddedTo(TrafficText(event.meaning), 16).c_str());
  for (std::size_t i = 0; i < event.bytes.size() && i < limit; ++i)
    line += Format(" %02X", event.bytes[i]);
  if (event.bytes.size() > limit)
    line += Format(Tr(" ... %zu bytes", " ... 共 %zu 字节"), event.bytes.size());
  std::fprintf(stderr, "%s\n", line.c_str());
}

std::vector<Frame> FrameReader::Take(const simulator::RecordedPiece& piece) {
  std::vector<Frame> frames;
  if (piece.bytes.empty()) return frames;
  Side& side = piece.from_host ? host_ : reader_;
  if (side.bytes.empty()) side.first = piece.at;
  side.bytes.insert(side.bytes.end(), piece.bytes.begin(), piece.bytes.end());
  while (!side.bytes.empty()) {
    Frame frame;
    if (piece.from_host) {
      // What the reader had not finished to say is not coming any more.
      reader_.bytes.clear();
      auto request = simulator::TakeRequest(&side.bytes);
      if (!request) break;
      frame.kind = request->kind;
      frame.meaning = std::move(request->meaning);
      frame.bytes = std::move(request->bytes);
    } else {
      const std::size_t size = AnswerSize(side.bytes);
      if (size == 0) break;
      const auto end = side.bytes.begin() + static_cast<std::ptrdiff_t>(size);
      frame.bytes.assign(side.bytes.begin(), end);
      side.bytes.erase(side.bytes.begin(), end);
      frame.meaning = AnswerMeaning(frame.bytes);
    }
    frame.from_host = piece.from_host;
    frame.first = side.first;
    frame.last = piece.at;
    side.first = piece.at;
    frames.push_back(std::move(frame));
  }
  return frames;
}

Timing TimingOf(const std::vector<Frame>& frames, Microseconds whole) {
  Timing timing = {{{{"open", "open", "打开"},
                     {"search", "search", "寻卡"},
                     {"select", "select", "选卡"},
                     {"read", "read", "读卡"},
                     {"other", "other requests", "其他请求"},
                     {"pauses", "pauses between", "间隔"},
                     {"close", "decode and close", "解析并关闭"}}}};
  const auto row = [&](Part part) -> Timing::Row& {
    return timing.rows[static_cast<std::size_t>(part)];
  };
  Microseconds told{0};  // up to here
  Part part = Part::kOpen;
  bool asked = false;  // and not answered yet
  for (const Frame& frame : frames) {
    if (frame.from_host) {
      row(asked               ? part
          : told.count() == 0 ? Part::kOpen
                              : Part::kPauses)
          .time += frame.first - told;
      told = frame.first;
      part = PartOf(frame.kind);
      ++row(part).requests;
      asked = true;
    } else if (asked) {
      row(part).time += frame.last - told;
      told = frame.last;
      asked = false;
    }
  }
  row(asked ? part : Part::kClose).time += whole - told;
  return timing;
}

void PrintTiming(const Timing& timing) {
  Microseconds sum{0};
  const auto print = [](const char* name, Microseconds time) {
    std::fprintf(stderr, "  %s  %8.3f s", PaddedTo(name, 16).c_str(),
                 static_cast<double>(time.count()) / 1e6);
  };
  std::fprintf(stderr, "%s\n", Tr("Timing", "用时"));
  for (const Timing::Row& row : timing.rows) {
    sum += row.time;
    if (row.requests == 0 && row.time.count() == 0) continue;
    print(Tr(row.english, row.chinese), row.time);
    if (row.requests > 1) std::fprintf(stderr, Tr("  %d requests", "  %d 次请求"), row.requests);
    std::fputc('\n', stderr);
  }
  print(Tr("in all", "合计"), sum);
  std::fputc('\n', stderr);
}

}  // namespace qlid
