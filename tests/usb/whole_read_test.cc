// Whole reads of a card through device opening, exchange and card commands.

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "simulator/tty_reader.h"
#include "tests/testing/held.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/usb/card_on_usb.h"

namespace {

using simulator::Bytes;
using simulator::FaultId;
using simulator::Milliseconds;
using simulator::UsbTraits;

// Descriptors and threads of this process, among them those of the emulated bus: it takes up its
// own at the first read and lets go of a closed file a moment later.
struct Held {
  std::ptrdiff_t descriptors = OpenDescriptors();
  std::ptrdiff_t threads = Threads();
  bool operator==(const Held&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Held& held) {
  return out << held.descriptors << " descriptors, " << held.threads << " threads";
}

void ExpectToHoldAgain(const Held& before) {
  for (int i = 0; i < 400 && Held() != before; ++i) {
    std::this_thread::sleep_for(Milliseconds(5));
  }
  EXPECT_EQ(before, Held());
}

// The same text as over a tty -------------------------------------------------------------------

struct Specimen {
  std::string id;
  bool fingerprints;
};

void PrintTo(const Specimen& specimen, std::ostream* out) {
  *out << specimen.id << (specimen.fingerprints ? " with fingerprints" : "");
}

std::vector<Specimen> AllSpecimens() {
  std::vector<Specimen> all;
  for (const simulator::Specimen& each : simulator::Specimens()) {
    all.push_back({each.id, false});
    all.push_back({each.id, true});
  }
  return all;
}

class UsbWholeRead : public testing::TestWithParam<Specimen> {};

// The tty is gone before there is an emulated bus: the two do not mix.
TEST_P(UsbWholeRead, GivesTheSameTextAsOverATty) {
  const auto& [id, fingerprints] = GetParam();
  JsonRead serial = {};
  {
    simulator::TtyReader tty;
    tty.PutCard(simulator::MakeCard(id, fingerprints));
    serial = ReadJson(tty.path().c_str(), fingerprints);
  }
  ASSERT_EQ(0, serial.result);
  ASSERT_NE("", serial.text);
  CardOnUsb usb(QuickTraits(), simulator::MakeCard(id, fingerprints));

  const JsonRead read = ReadJson("HID", fingerprints);

  EXPECT_EQ(0, read.result);
  EXPECT_EQ(serial.text, read.text);
}

INSTANTIATE_TEST_SUITE_P(, UsbWholeRead, testing::ValuesIn(AllSpecimens()));

// Readers of every make -------------------------------------------------------------------------

struct Make {
  const char* name;
  UsbTraits traits;
};

void PrintTo(const Make& make, std::ostream* out) { *out << make.name; }

class UsbReaderMake : public testing::TestWithParam<Make> {};

TEST_P(UsbReaderMake, ReadsACard) {
  CardOnUsb usb(GetParam().traits);

  const NativeRead read = ReadNative();

  EXPECT_EQ(0, read.result);
  EXPECT_EQ(HexText(NativeData(simulator::MakeCard("resident"), false)), HexText(read.data));
  EXPECT_TRUE(usb.reader.WaitClosed());
}

INSTANTIATE_TEST_SUITE_P(
    , UsbReaderMake,
    testing::Values(
        Make{
            "PaddedReports", {}
},
        Make{"ShortPackets", QuickTraits()}, Make{"HidWithShortPackets", {.padded = false}},
        Make{"KernelDriverBound", {.driver = "usbhid"}},
        Make{"ShortWrites", {.padded = false, .out_limit = 2}},
        Make{"SecondId", {.product = 0xBCD7, .padded = false}},
        Make{"ThirdId", {.product = 0xBC95, .padded = false}},
        Make{"FourthId", {.vendor = 0x2B46, .product = 0xBE11, .padded = false}},
        Make{"FifthId", {.vendor = 0x2B46, .product = 0xBE01, .padded = false}},
        Make{"SixthId", {.vendor = 0x2B46, .product = 0xBC01, .padded = false}}),
    [](const auto& test) { return test.param.name; });

TEST(UsbReader, WithOtherIdsIsReadOnceTheyAreAdded) {
  CardOnUsb usb({.vendor = 0x1234, .product = 0x5678, .padded = false});
  EXPECT_EQ(-50, ReadNative().result);

  EXPECT_EQ(0, APP_ID_AddHID(0, 0x5678, 0x1234));

  EXPECT_EQ(0, ReadNative().result);
}

TEST(UsbReader, ThatRefusesItsInterfaceCannotBeOpened) {
  CardOnUsb usb({.claim_errno = EBUSY});

  EXPECT_EQ(-50, ReadNative().result);

  EXPECT_TRUE(usb.reader.WaitClosed());
}

TEST(UsbReader, ThatIsNotThereCannotBeOpened) { EXPECT_EQ(-50, ReadNative().result); }

TEST(UsbReader, IsTakenByEitherName) {
  CardOnUsb usb;

  for (const char* name : {"HID", "hid", "1001"}) EXPECT_EQ(0, ReadJson(name).result) << name;
}

// Check bytes -----------------------------------------------------------------------------------

// The first byte of the photo moves the check byte through all its values.
simulator::Card CardWithCheckByte(std::uint8_t check) {
  simulator::Card card = simulator::MakeCard("resident");
  const std::uint8_t natural = NativeData(card, false).back();
  card.photo.front() ^= static_cast<std::uint8_t>(natural ^ check);
  return card;
}

// A reply that ends in a zero comes back from the transport without it.
TEST(UsbCheckByte, OfAnyValueReads) {
  CardOnUsb usb;
  for (unsigned value = 0; value <= 0xFF; ++value) {
    const auto check = static_cast<std::uint8_t>(value);
    const simulator::Card card = CardWithCheckByte(check);
    const Bytes expected = NativeData(card, false);
    ASSERT_EQ(check, expected.back());
    usb.module.PutCard(card);

    const NativeRead read = ReadNative();

    ASSERT_EQ(0, read.result) << value;
    ASSERT_EQ(HexText(expected), HexText(read.data)) << value;
  }
}

TEST(UsbCheckByte, OfZeroReadsFromPaddedReports) {
  CardOnUsb usb(HidTraits(), CardWithCheckByte(0x00));

  const NativeRead read = ReadNative();

  EXPECT_EQ(0, read.result);
  EXPECT_EQ(HexText(NativeData(CardWithCheckByte(0x00), false)), HexText(read.data));
}

// Faults ----------------------------------------------------------------------------------------

struct Misbehaviour {
  const char* fault;
  int result;
};

void PrintTo(const Misbehaviour& row, std::ostream* out) { *out << row.fault; }

class UsbFault : public testing::TestWithParam<Misbehaviour> {};

// The library's clock runs faster, so that it gives up sooner.
TEST_P(UsbFault, EndsAsOverATtyAndLeavesNothing) {
  CardOnUsb usb;
  ASSERT_EQ(0, ReadNative().result);
  ASSERT_TRUE(usb.reader.WaitClosed());
  const Held before;
  stand_in_clock::SetSpeed(4);
  const auto fault = simulator::ParseFault(GetParam().fault);
  ASSERT_TRUE(fault.has_value());
  usb.module.SetFault(*fault);

  const NativeRead read = ReadNative(5);

  EXPECT_EQ(GetParam().result, read.result);
  EXPECT_EQ(read.result == 0 ? 1295u : 0u, read.data.size());
  EXPECT_TRUE(usb.reader.WaitClosed());
  ExpectToHoldAgain(before);
}

INSTANTIATE_TEST_SUITE_P(
    , UsbFault,
    testing::Values(Misbehaviour{"silent", -56}, Misbehaviour{"no-card", -56},
                    Misbehaviour{"select-no-card", -2003}, Misbehaviour{"ic-power-on", -2007},
                    Misbehaviour{"unsupported", -56}, Misbehaviour{"read-failed", -56},
                    Misbehaviour{"bad-check", -56}, Misbehaviour{"bad-check-once", 0},
                    Misbehaviour{"length=0", -56}, Misbehaviour{"length=1294", -56},
                    Misbehaviour{"length=1296", -56}, Misbehaviour{"length=1298", -56},
                    Misbehaviour{"length=2320", -56}, Misbehaviour{"length=2322", -56},
                    Misbehaviour{"cut=700", -56}, Misbehaviour{"cut=1294", -56},
                    Misbehaviour{"garbage=1", -56}, Misbehaviour{"garbage=7", -56},
                    Misbehaviour{"garbage=100", -56}, Misbehaviour{"slow=20000", 0}));

class UsbOverlongReply : public testing::TestWithParam<const char*> {};

// What does not fit the read is still there for the next search or select.
TEST_P(UsbOverlongReply, EndsTheReadInTime) {
  CardOnUsb usb;
  stand_in_clock::SetSpeed(4);
  usb.module.SetFault(simulator::ParseFault(GetParam()).value());

  const int result = ReadNative(5).result;

  EXPECT_TRUE(result == -56 || result == -55) << result;
}

INSTANTIATE_TEST_SUITE_P(, UsbOverlongReply,
                         testing::Values("length=4096", "length=65535", "garbage=4095"));

TEST(UsbReader, WaitsForTheCard) {
  CardOnUsb usb;
  stand_in_clock::UseSystemClock();
  usb.module.SetFault({FaultId::kCardAfter, 2});

  EXPECT_EQ(0, ReadNative().result);
}

struct Pull {
  long bytes;  // of replies before it: 15 to the search, 19 to select, 1,295 to the read
  int result;  // the first select that cannot be sent ends the read at once
};

void PrintTo(const Pull& pull, std::ostream* out) { *out << pull.bytes; }

class UsbUnplugged : public testing::TestWithParam<Pull> {};

TEST_P(UsbUnplugged, EndsInTimeAndReadsAgainWhenItIsBack) {
  {
    CardOnUsb usb;
    ASSERT_EQ(0, ReadNative().result);
    ASSERT_TRUE(usb.reader.WaitClosed());
    const Held before;
    stand_in_clock::SetSpeed(4);
    usb.module.SetFault({FaultId::kHangUp, GetParam().bytes});

    EXPECT_EQ(GetParam().result, ReadNative(5).result);

    EXPECT_TRUE(usb.reader.WaitClosed());
    ExpectToHoldAgain(before);
  }
  CardOnUsb back;

  EXPECT_EQ(0, ReadNative().result);
}

INSTANTIATE_TEST_SUITE_P(, UsbUnplugged,
                         testing::Values(Pull{0, -56}, Pull{1, -56}, Pull{15, -54}, Pull{16, -56},
                                         Pull{33, -56}, Pull{34, -56}, Pull{35, -56}, Pull{98, -56},
                                         Pull{700, -56}, Pull{1058, -56}, Pull{1328, -56}));

TEST(UsbReader, PulledInMidReplyHardlyUsesTheProcessor) {
  CardOnUsb usb;
  stand_in_clock::UseSystemClock();
  usb.module.SetFault({FaultId::kHangUp, 700});
  const auto start = std::chrono::steady_clock::now();
  const double processor = ProcessorSeconds();

  EXPECT_EQ(-56, ReadNative(4).result);

  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  EXPECT_GE(taken.count(), 3.5);
  EXPECT_LT(ProcessorSeconds() - processor, kProcessorShare * taken.count());
}

TEST(UsbReader, PulledBeforeTheCloseHasStillBeenRead) {
  CardOnUsb usb;
  usb.module.SetFault({FaultId::kHangUp, 15 + 19 + 1295});

  const NativeRead read = ReadNative();

  EXPECT_EQ(0, read.result);
  EXPECT_EQ(1295u, read.data.size());
}

// What only USB readers do, at the command that starts with these two bytes.
struct UsbMisbehaviour {
  const char* name;
  std::uint8_t command, parameter;
  void (*happen)(simulator::UsbDevice&);
};

void PrintTo(const UsbMisbehaviour& row, std::ostream* out) { *out << row.name; }

class UsbOwnFault : public testing::TestWithParam<UsbMisbehaviour> {};

TEST_P(UsbOwnFault, EndsInTime) {
  CardOnUsb usb;
  stand_in_clock::SetSpeed(4);
  const auto& row = GetParam();
  usb.reader.on_out = [&](simulator::UsbDevice& device, const Bytes& bytes) {
    if (bytes.size() == 10 && bytes[7] == row.command && bytes[8] == row.parameter) {
      row.happen(device);
      return;
    }
    for (const simulator::Exchange& exchange : usb.module.Receive(bytes)) {
      for (const simulator::Step& step : exchange.steps) device.Send(step.bytes);
    }
  };

  EXPECT_EQ(-56, ReadNative(5).result);

  EXPECT_TRUE(usb.reader.WaitClosed());
}

void Stalls(simulator::UsbDevice& device) { device.Stall(); }
void Unplugs(simulator::UsbDevice& device) { device.Unplug(); }
void FloodsWithBytes(simulator::UsbDevice& device) { device.Flood(0x5A); }
void FloodsWithZeros(simulator::UsbDevice& device) { device.Flood(0x00); }

INSTANTIATE_TEST_SUITE_P(
    , UsbOwnFault,
    testing::Values(UsbMisbehaviour{"StallAtSearch", 0x20, 0x01, Stalls},
                    UsbMisbehaviour{"StallAtSelect", 0x20, 0x02, Stalls},
                    UsbMisbehaviour{"StallAtRead", 0x30, 0x01, Stalls},
                    UsbMisbehaviour{"UnplugAtSelect", 0x20, 0x02, Unplugs},
                    UsbMisbehaviour{"FloodAtSearch", 0x20, 0x01, FloodsWithBytes},
                    UsbMisbehaviour{"FloodAtRead", 0x30, 0x01, FloodsWithBytes},
                    UsbMisbehaviour{"ZerosAtSearch", 0x20, 0x01, FloodsWithZeros},
                    UsbMisbehaviour{"ZerosAtRead", 0x30, 0x01, FloodsWithZeros}),
    [](const auto& test) { return test.param.name; });

TEST(UsbReader, ThatTakesNothingEndsInTime) {
  CardOnUsb usb({.out_blocked = true});
  stand_in_clock::SetSpeed(4);

  EXPECT_EQ(-56, ReadNative(5).result);
}

// The search uses up more than the seconds that it shares with select, which then has one pass.
TEST(UsbReader, ThatIsSlowToFindTheCardIsStillRead) {
  CardOnUsb usb;
  stand_in_clock::UseSystemClock();
  const auto start = std::chrono::steady_clock::now();
  usb.reader.on_out = [&](simulator::UsbDevice& device, const Bytes& bytes) {
    const bool search = bytes.size() == 10 && bytes[7] == 0x20 && bytes[8] == 0x01;
    for (const simulator::Exchange& exchange : usb.module.Receive(bytes)) {
      for (const simulator::Step& step : exchange.steps) {
        device.Send(step.bytes, Milliseconds(search ? 2900 : 0));
      }
    }
  };

  EXPECT_EQ(0, ReadNative(20).result);

  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
}

// Many reads ------------------------------------------------------------------------------------

TEST(UsbReader, IsReadHundredsOfTimesWithoutALeak) {
  CardOnUsb usb;
  ASSERT_EQ(0, ReadNative().result);
  ASSERT_TRUE(usb.reader.WaitClosed());
  const Held before;

  for (int i = 0; i < 300; ++i) ASSERT_EQ(0, ReadNative().result) << i;

  EXPECT_TRUE(usb.reader.WaitClosed());
  ExpectToHoldAgain(before);
}

}  // namespace
