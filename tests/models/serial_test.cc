// Reads and writes of the serial port. The model reads as the port would with a clock in its
// driver: a pass takes a tenth of a second at most.
#include <cmath>
#include <functional>

#include "quillonid/link.h"
#include "quillonid/transport.h"
#include "tests/models/line.h"
#include "tests/models/model.h"

namespace {

constexpr std::uint64_t kReads = 20000;

// Whole seconds change, cancels come and bytes come at times of each half second that are further
// apart than the longest pass of either side.
constexpr int kPhase = 20;  // behind a whole or half second: the second changes 480 later
constexpr int kCancels = 100;
constexpr int kComes = 350;
constexpr int kPass = 100;

constexpr unsigned char kMark = 0x7E;
std::string s_asked;  // numbers of bytes that the end condition was asked about

int EndsInMark(const unsigned char* buffer, int count) {
  const std::string number = std::to_string(count) + " ";
  if (!s_asked.ends_with(" " + number) && s_asked != number) s_asked += number;
  return count > 0 && buffer[count - 1] == kMark ? 0 : 7;
}

struct Script {
  int phase;
  std::deque<line::Arrival> arrivals;
  std::int64_t cancel_at = -1;
};

// Bytes that a card module could send, with marks in them, in pieces that come together or later.
Script AnyScript(Random& random) {
  Script script = {kPhase + 500 * random.Between(0, 1), {}};
  const int size = random.Between(0, 60);
  std::string bytes = random.Bytes(size);
  for (char& c : bytes) {
    if (c == static_cast<char>(kMark) || random.OneIn(40)) c = random.OneIn(2) ? 0x7E : 0x11;
  }
  if (size > 6) {
    bytes[5] = 0;
    bytes[6] = static_cast<char>(std::max(size - 7 + random.Between(-1, 1), 0));
  }
  std::int64_t at = random.OneIn(2) ? 0 : kComes;
  for (std::size_t from = 0; from < bytes.size();) {
    const auto count = static_cast<std::size_t>(random.Between(1, random.OneIn(2) ? 64 : 9));
    script.arrivals.push_back({at, bytes.substr(from, count)});
    from += count;
    if (random.OneIn(6)) at = at - at % 500 + kComes + 500 * std::int64_t{random.Between(1, 3)};
  }
  if (random.OneIn(10)) script.arrivals.push_back({at, "", 5});
  if (random.OneIn(6)) script.cancel_at = kCancels + 500 * std::int64_t{random.Between(0, 5)};
  return script;
}

int ModelRead(Script script, unsigned char* buffer, int wanted, int limit,
              QL_END_CONDITION end_condition) {
  std::int64_t now = 0;
  int count = 0;
  if (limit < 0) limit = 1;
  while (true) {
    int got = 0;
    if (!script.arrivals.empty() && script.arrivals.front().at <= now + kPass) {
      line::Arrival& front = script.arrivals.front();
      now = std::max(now, front.at);
      if (front.error != 0 && wanted > count) return -55;
      while (got < wanted - count && !front.bytes.empty()) {
        buffer[count + got++] = BytesOf(front.bytes)[0];
        front.bytes.erase(0, 1);
      }
      if (front.bytes.empty()) script.arrivals.pop_front();
    } else if (wanted > count) {
      now += kPass;
    }
    count += got;
    if (count >= wanted) return wanted;
    if (end_condition != nullptr && end_condition(buffer, count) == 0) return count;
    if ((script.phase + now) / 1000 - script.phase / 1000 > limit) return -56;
    if (script.cancel_at >= 0 && script.cancel_at <= now) return -57;
  }
}

}  // namespace

TEST(ModelOfCOMMComReadLinux, IsEqual) {
  ForEachInput(
      [](Random& random) {
        const Script script = AnyScript(random);
        const int wanted = random.OneIn(4) ? random.Between(0, 64) : 256;
        const int limit = random.OneIn(4) ? random.Between(-5, 2) : random.Between(0, 1);
        const QL_END_CONDITION ends[] = {nullptr, EndsInMark, IdEndCondition};
        const QL_END_CONDITION end = ends[random.Between(0, 2)];
        const bool is_open = !random.OneIn(16);
        const bool has_buffer = !random.OneIn(16);
        Outputs<256> out(random);
        line::Start(script.phase);
        line::Now().arrivals = script.arrivals;
        line::Now().cancel_at = script.cancel_at;
        SetAuxFd(is_open ? line::kDescriptor : -2);
        // Forgotten, since no read runs yet.
        if (random.OneIn(4)) COMM_Com_CancelLinuxRead();

        s_asked.clear();
        const int library = COMM_Com_ReadLinux(has_buffer ? out.library() : nullptr,
                                               static_cast<unsigned>(wanted), limit, end);
        const std::string asked = s_asked;
        s_asked.clear();
        const int model =
            is_open && has_buffer ? ModelRead(script, out.model(), wanted, limit, end) : -2;

        return Equal(model, library) && Equal(s_asked, asked) && out.AreEqual();
      },
      kReads);
}

TEST(ModelOfQLSendDataToTransPort, IsEqual) {
  ForEachInput(
      [](Random& random) {
        const std::string bytes = random.Bytes(random.Between(0, 200));
        const bool is_open = !random.OneIn(16);
        const bool has_data = !random.OneIn(16);
        const int length = random.OneIn(16) ? random.Between(-3, 0) : SizeOf(bytes);
        line::Start(kPhase);
        std::deque<int>& writes = line::Now().writes;
        for (int n = random.Between(0, 6); n > 0; --n) {
          const bool after_none = !writes.empty() && writes.back() == 0;
          writes.push_back(random.Between(after_none ? 1 : 0, random.OneIn(2) ? 200 : 20));
        }
        if (random.OneIn(4)) writes.push_back(-1);
        std::deque<int> script = writes;
        SetAuxFd(is_open ? line::kDescriptor : -2);

        const int library =
            random.OneIn(2) ? QL_SendDataToTransPort(has_data ? BytesOf(bytes) : nullptr, length)
                            : COMM_Com_WriteLinux(has_data ? BytesOf(bytes) : nullptr, length);
        int model = -2;
        int empty_reads = 0;
        std::string written;
        if (is_open && has_data && length > 0) {
          empty_reads = 1;
          for (model = 0; model < length;) {
            int taken = length - model;
            if (!script.empty()) {
              taken = std::min(taken, script.front());
              script.pop_front();
            }
            if (taken < 0) break;
            written +=
                bytes.substr(static_cast<std::size_t>(model), static_cast<std::size_t>(taken));
            model += taken;
          }
        }

        return Equal(model, library) && Equal(written, line::Now().written) &&
               Equal(empty_reads, line::Now().empty_reads);
      },
      50000);
}
