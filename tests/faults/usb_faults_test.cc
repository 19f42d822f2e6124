// Every reader fault over USB: the simulated reader behind a libusb in which time is the library's
// own, so that nothing waits.
#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <algorithm>
#include <deque>
#include <string>

#include "quillonid/quillonid.h"
#include "simulator/card_module.h"
#include "tests/faults/reader_faults.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/usb/fake_libusb.h"
#include "tests/whole/expected.h"

namespace faults {
namespace {

using fake_libusb::Transfer;
using simulator::CardModule;
using simulator::FaultId;

constexpr std::size_t kLongestTransfer = 1024;

// The reader at the other end of the cable.
class UsbReader {
 public:
  UsbReader() {
    module_.PutCard(simulator::MakeCard("resident"));
    fake_libusb::Now().device = [this](auto out, unsigned limit) {
      if (unplugged_) return Transfer{.result = LIBUSB_ERROR_NO_DEVICE};
      const double seconds = limit / 1000.0;
      if (out.empty()) return Bring(seconds);
      return takes_nothing_ ? Transfer{.result = LIBUSB_ERROR_TIMEOUT, .seconds = seconds}
                            : Take(out);
    };
  }
  UsbReader(const UsbReader&) = delete;
  UsbReader& operator=(const UsbReader&) = delete;
  ~UsbReader() { fake_libusb::Now().device = nullptr; }

  void SetFault(const simulator::Fault& fault) {
    if (fault.id == FaultId::kCardAfter) {  // of the library's seconds
      module_.RemoveCard();
      card_comes_ = stand_in_clock::Seconds() + static_cast<double>(fault.value);
    } else {
      module_.SetFault(fault);
    }
  }

  void TakeNothing() { takes_nothing_ = true; }

 private:
  struct Piece {
    double due;
    simulator::Bytes bytes;
    bool unplug;
  };

  Transfer Take(std::span<const unsigned char> bytes) {
    const double now = stand_in_clock::Seconds();
    if (now >= card_comes_ && !module_.HasCard()) module_.PutCard(simulator::MakeCard("resident"));
    double due = pieces_.empty() ? now : std::max(now, pieces_.back().due);
    for (const simulator::Exchange& exchange : module_.Receive(bytes)) {
      for (const simulator::Step& step : exchange.steps) {
        due += static_cast<double>(step.delay.count()) / 1000;
        pieces_.push_back({due, step.bytes, step.hang_up});
      }
    }
    return {};
  }

  // What is due within `limit` seconds, as much as fits a transfer.
  Transfer Bring(double limit) {
    const double now = stand_in_clock::Seconds();
    if (pieces_.empty() || pieces_.front().due > now + limit) {
      return {.result = LIBUSB_ERROR_TIMEOUT, .seconds = limit};
    }
    Piece& next = pieces_.front();
    const auto size = static_cast<std::ptrdiff_t>(std::min(next.bytes.size(), kLongestTransfer));
    Transfer transfer = {.seconds = std::max(next.due - now, 0.0)};
    transfer.bytes.assign(next.bytes.begin(), next.bytes.begin() + size);
    next.bytes.erase(next.bytes.begin(), next.bytes.begin() + size);
    if (next.bytes.empty()) {
      unplugged_ = next.unplug;
      pieces_.pop_front();
    }
    return transfer;
  }

  CardModule module_;
  std::deque<Piece> pieces_;
  double card_comes_ = 0;
  bool takes_nothing_ = false;
  bool unplugged_ = false;
};

class UsbReadWith : public testing::TestWithParam<ReaderFault> {};

TEST_P(UsbReadWith, EndsSo) {
  NEEDS_PRIVATE_ROOT();
  whole::InstallDecoder();
  UsbReader reader;
  reader.SetFault(*simulator::ParseFault(GetParam().fault));
  std::string photo = TemporaryFolder() + "/photo.bmp";
  PERSONINFO_CHA record = {};
  const double start = stand_in_clock::Seconds();

  const int result = APP_ID_ReadChinaIDCard("HID", "", 115200, kTimeLimit, photo.data(), &record);

  EXPECT_PRED2(Has, GetParam().usb, result);
  EXPECT_LE(stand_in_clock::Seconds() - start, GetParam().seconds);
  EXPECT_EQ(result == 0, FileExists(photo));
  EXPECT_EQ(result == 0, record.name[0] != '\0');
  EXPECT_EQ(0, fake_libusb::Now().handles);
  EXPECT_EQ(0, fake_libusb::Now().contexts);
}

INSTANTIATE_TEST_SUITE_P(EveryFault, UsbReadWith, testing::ValuesIn(ReaderFaults()));

// A reader at fault leaves nothing behind that the next read would trip over.
class UsbReadAfter : public testing::TestWithParam<ReaderFault> {};

TEST_P(UsbReadAfter, Works) {
  NEEDS_PRIVATE_ROOT();
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};
  {
    UsbReader faulty;
    faulty.SetFault(*simulator::ParseFault(GetParam().fault));
    APP_ID_ReadCollectIDCard("HID", "", 115200, 2, no_photo, &record);
  }
  const UsbReader reader;
  record = {};
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(0, APP_ID_ReadCollectIDCard("HID", "", 115200, kTimeLimit, no_photo, &record));

  EXPECT_LE(stand_in_clock::Seconds() - start, kGoodRead);
  EXPECT_NE('\0', record.name[0]);
}

INSTANTIATE_TEST_SUITE_P(EveryFault, UsbReadAfter, testing::ValuesIn(ReaderFaults()));

TEST(UsbReadWith, AReaderThatTakesNothingEndsInTime) {
  NEEDS_PRIVATE_ROOT();
  UsbReader reader;
  reader.TakeNothing();
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(-5, APP_ID_ReadCollectIDCard("HID", "", 115200, kTimeLimit, no_photo, &record));

  EXPECT_LE(stand_in_clock::Seconds() - start, kTimeLimit + 7);
}

TEST(UsbReadWith, AReaderThatWasPulledCannotBeOpened) {
  NEEDS_PRIVATE_ROOT();
  fake_libusb::Now().devices.clear();
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};
  const double start = stand_in_clock::Seconds();

  EXPECT_EQ(-1, APP_ID_ReadCollectIDCard("HID", "", 115200, kTimeLimit, no_photo, &record));

  EXPECT_LE(stand_in_clock::Seconds() - start, kAtOnce);
}

}  // namespace
}  // namespace faults
