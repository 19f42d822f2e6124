// Reads and writes of a USB reader, transfer by transfer.
#include "quillonid/link.h"
#include "quillonid/transport.h"
#include "tests/models/line.h"
#include "tests/models/model.h"
#include "tests/usb/fake_libusb.h"

namespace {

constexpr std::uint64_t kReads = 20000;
constexpr int kTimedOut = -7;  // as libusb numbers it
constexpr int kPhase = 20;     // milliseconds: no sum of transfers ends where the second changes

constexpr unsigned char kMark = 0x7E;

int EndsInMark(const unsigned char* buffer, int count) {
  return count > 0 && buffer[count - 1] == kMark ? 0 : -1;
}

void OpenReader() { ASSERT_EQ(0, COMM_Hid_OpenLinuxUsbLibHid(0x0403, 0xBCD5)); }

// Bytes with zeros behind them, or a slice of time without any.
fake_libusb::Transfer AnyTransfer(Random& random) {
  fake_libusb::Transfer transfer;
  if (random.OneIn(6)) {
    transfer.result = random.OneIn(2) ? kTimedOut : 0;
    transfer.seconds = 0.2;
    return transfer;
  }
  const int most = random.OneIn(8) ? 1024 : 64;
  std::string bytes = random.Bytes(random.Between(1, most));
  const int zeros = random.OneIn(2) ? random.Between(0, SizeOf(bytes)) : 0;
  std::fill(bytes.end() - zeros, bytes.end(), '\0');
  if (bytes.size() > 6 && random.OneIn(2)) {
    bytes[5] = static_cast<char>(random.Between(0, 1));
    bytes[6] = static_cast<char>(random.Between(0, 100));
  }
  if (random.OneIn(8)) bytes.back() = kMark;
  transfer.bytes.assign(bytes.begin(), bytes.end());
  transfer.seconds = 0.05 * random.Between(1, 4);
  if (random.OneIn(16)) transfer.result = kTimedOut;  // with what had come by then
  return transfer;
}

int LastNonZero(const unsigned char* bytes, int count) {
  int last = 0;
  for (int i = 0; i < count; ++i) {
    if (bytes[i] != 0) last = i + 1;
  }
  return last;
}

// With room for everything that comes; the caller sees the first `wanted` bytes.
int ModelRead(std::deque<fake_libusb::Transfer> transfers, bool trims, unsigned char* buffer,
              int wanted, int limit, QL_END_CONDITION end_condition) {
  std::vector<unsigned char> area(std::size_t{64} * 1024);
  double seconds = kPhase / 1000.0;
  int total = 0;
  int result = 0;
  while (true) {
    fake_libusb::Transfer transfer;
    transfer.seconds = 0.2;
    if (!transfers.empty()) {
      transfer = transfers.front();
      transfers.pop_front();
    }
    seconds += transfer.seconds;
    const int came = static_cast<int>(transfer.bytes.size());
    const int kept = trims ? LastNonZero(transfer.bytes.data(), came) : came;
    for (int i = 0; i < kept; ++i) {
      area[static_cast<std::size_t>(total++)] = transfer.bytes[static_cast<std::size_t>(i)];
    }
    if (total >= wanted) {
      result = LastNonZero(area.data(), wanted);
      break;
    }
    if (end_condition != nullptr && end_condition(area.data(), total) == 0) {
      result = LastNonZero(area.data(), total);
      break;
    }
    if (static_cast<int>(seconds) > limit) break;
  }
  std::memcpy(buffer, area.data(), static_cast<std::size_t>(std::min(total, wanted)));
  return result;
}

}  // namespace

TEST(ModelOfCOMMHidReadLinuxUsbLibHid, IsEqual) {
  OpenReader();
  ForEachInput(
      [](Random& random) {
        line::Start(kPhase);
        fake_libusb::State& usb = fake_libusb::Now();
        usb.calls.clear();
        usb.transfers.clear();
        for (int n = random.Between(0, 8); n > 0; --n) usb.transfers.push_back(AnyTransfer(random));
        usb.otherwise = {};
        usb.otherwise.result = kTimedOut;
        usb.otherwise.seconds = 0.2;
        const auto transfers = usb.transfers;
        const bool trims = random.OneIn(2);
        const int wanted = random.OneIn(2) ? 2048 : random.Between(0, 300);
        const int limit = random.Between(-1, 2);
        const QL_END_CONDITION ends[] = {nullptr, EndsInMark, IdEndCondition};
        const QL_END_CONDITION end = ends[random.Between(0, 2)];
        Outputs<2048> out(random);
        COMM_Hid_SetLinuxHidClearZero(trims ? 1 : 0);

        const int library =
            COMM_Hid_ReadLinuxUsbLibHid(out.library(), wanted, static_cast<unsigned>(limit), end);
        const int model = ModelRead(transfers, trims, out.model(), wanted, limit, end);

        return Equal(model, library) && out.AreEqual();
      },
      kReads);
}

TEST(ModelOfCOMMHidWriteLinuxUsbLibHid, IsEqual) {
  OpenReader();
  ForEachInput([](Random& random) {
    fake_libusb::State& usb = fake_libusb::Now();
    usb.calls.clear();
    usb.written.clear();
    usb.transfers.clear();
    const std::string bytes = random.Bytes(random.Between(0, 200));
    std::deque<int> counts;
    for (int n = random.Between(0, 6); n > 0; --n) {
      counts.push_back(random.OneIn(16) ? -4 : random.Between(0, 90));
    }
    int model = -54;
    std::vector<std::vector<unsigned char>> written;
    std::size_t total = 0;
    for (int times = 1; times <= 5 && model < 0; ++times) {
      const auto left = static_cast<int>(bytes.size() - total);
      int moved = left;
      if (!counts.empty()) {
        moved = std::min(counts.front(), left);
        counts.pop_front();
      }
      fake_libusb::Transfer transfer;
      transfer.result = std::min(moved, 0);
      transfer.count = std::max(moved, 0);
      usb.transfers.push_back(transfer);
      if (moved < 0) break;
      written.emplace_back(bytes.begin() + static_cast<std::ptrdiff_t>(total), bytes.end());
      total += static_cast<std::size_t>(moved);
      if (total == bytes.size()) model = SizeOf(bytes);
    }

    const int library =
        COMM_Hid_WriteLinuxUsbLibHid(BytesOf(bytes), static_cast<unsigned>(bytes.size()));

    return Equal(model, library) && Equal(written, usb.written);
  });
}
