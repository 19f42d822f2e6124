#include <algorithm>
#include <chrono>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "quillonid/transport.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/usb/log_text.h"
#include "tests/usb/open_reader.h"

namespace {

using simulator::Bytes;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Lines = std::vector<std::string>;

constexpr unsigned char kUntouched = 0xEE;

struct Reading {
  int result;
  Bytes buffer;  // as large as wanted, and a transfer more
};

Reading Read(int wanted, int timeout_s, QL_END_CONDITION end_condition = nullptr) {
  Reading reading = {0, Bytes(static_cast<std::size_t>(wanted) + 1024, kUntouched)};
  reading.result = COMM_Hid_ReadLinuxUsbLibHid(
      reading.buffer.data(), wanted, static_cast<std::uint32_t>(timeout_s), end_condition);
  return reading;
}

std::string Start(const Reading& reading, int size) {
  return HexText(reading.buffer.data(), static_cast<std::size_t>(size));
}

Bytes Counting(std::size_t size) {
  Bytes bytes;
  for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<unsigned char>(i % 255 + 1));
  return bytes;
}

Bytes Padded(Bytes bytes, std::size_t size) {
  bytes.resize(size);
  return bytes;
}

template <int kCount>
int EndsAt(const unsigned char*, int count) {
  return count >= kCount ? 0 : -1;
}

// Twenty bytes in a packet of 64, and the two ways to keep them.

TEST(HidRead, DropsTheZerosBehindEachTransfer) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  reader.Send(Counting(20));
  reader.Send(Counting(5), milliseconds(400));
  SwitchLogging(true);

  const Reading reading = Read(100, 5, EndsAt<25>);

  EXPECT_EQ(25, reading.result);
  EXPECT_EQ(HexText(Counting(20)) + " " + HexText(Counting(5)), Start(reading, 25));
  EXPECT_EQ(kUntouched, reading.buffer[25]);
}

TEST(HidRead, KeepsTheZerosOfATransferOnDemand) {
  OpenReader reader;
  COMM_Hid_SetLinuxHidClearZero(0);
  reader.Send(Counting(20));
  reader.Send(Counting(5), milliseconds(400));

  const Reading reading = Read(200, 5, EndsAt<128>);

  EXPECT_EQ(69, reading.result);
  EXPECT_EQ(HexText(Padded(Counting(20), 64)) + " " + HexText(Padded(Counting(5), 64)),
            Start(reading, 128));
}

TEST(HidRead, DropsZerosOnlyForTheFlagOne) {
  OpenReader reader;
  COMM_Hid_SetLinuxHidClearZero(2);
  reader.Send(Counting(20));

  EXPECT_EQ(20, Read(100, 5, EndsAt<64>).result);

  COMM_Hid_SetLinuxHidClearZero(1);
  reader.Send(Counting(20));
  EXPECT_EQ(20, Read(100, 5, EndsAt<20>).result);
}

TEST(HidRead, ShortensAReplyThatEndsInZeros) {
  OpenReader reader;
  COMM_Hid_SetLinuxHidClearZero(0);
  reader.SendPacket({1, 2, 0, 4, 0, 0});

  const Reading reading = Read(100, 5, EndsAt<6>);

  EXPECT_EQ(4, reading.result);
  EXPECT_EQ("01 02 00 04 00 00", Start(reading, 6));
}

TEST(HidRead, ShortensTheCountedBytesAlone) {
  OpenReader reader;
  reader.SendPacket({1, 2, 0, 0, 5, 6});

  const Reading reading = Read(4, 5);

  EXPECT_EQ(2, reading.result);
  EXPECT_EQ("01 02 00 00", Start(reading, 4));
}

TEST(HidRead, OfZerosAloneIsEmpty) {
  OpenReader reader;
  COMM_Hid_SetLinuxHidClearZero(0);
  reader.SendPacket({0, 0, 0, 0});

  EXPECT_EQ(0, Read(4, 5).result);
}

TEST(HidRead, AppendsNothingOfATransferOfZeros) {
  OpenReader reader;
  reader.SendPacket({0, 0, 0, 0});
  reader.SendPacket({7, 8}, milliseconds(50));

  const Reading reading = Read(2, 5);

  EXPECT_EQ(2, reading.result);
  EXPECT_EQ("07 08", Start(reading, 2));
}

// Where a read ends.

TEST(HidRead, StopsAtTheWantedCountWithoutAskingTheEndCondition) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  reader.SendPacket({1, 2, 3});
  SwitchLogging(true);

  const Reading reading = Read(3, 5, EndsAt<0>);

  EXPECT_EQ(3, reading.result);
  EXPECT_EQ((Lines{Info("read nRetVal:0, nReadOneTm=3\n"), Dump("read data", {1, 2, 3}),
                   Info("read ret:3\n")}),
            LogLines());
}

TEST(HidRead, AppendsNoMoreThanWanted) {
  OpenReader reader;
  reader.SendPacket(Counting(10));
  reader.SendPacket(Counting(40));

  const Reading reading = Read(30, 5);

  EXPECT_EQ(30, reading.result);
  EXPECT_EQ(HexText(Counting(10)) + " " + HexText(Counting(20)), Start(reading, 30));
  EXPECT_EQ(Bytes(1024, kUntouched), Bytes(reading.buffer.begin() + 30, reading.buffer.end()));
}

TEST(HidRead, StopsAtTheEndConditionAndLogsEachPass) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  reader.SendPacket({0x11, 0x12});
  reader.SendPacket({0x13, 0x00}, milliseconds(50));
  SwitchLogging(true);

  const Reading reading = Read(100, 5, EndsAt<3>);

  EXPECT_EQ(3, reading.result);
  EXPECT_EQ("11 12 13", Start(reading, 3));
  EXPECT_EQ((Lines{Info("read nRetVal:0, nReadOneTm=2\n"), Dump("read data", {0x11, 0x12}),
                   Dump("read real data", {0x11, 0x12}), Info("read nRetVal:0, nReadOneTm=2\n"),
                   Dump("read data", {0x13, 0x00}), Dump("read real data", {0x11, 0x12, 0x13}),
                   Info("2nReadLen=3\n"), Info("read ret:3\n")}),
            LogLines());
}

TEST(HidRead, TakesTheBytesOfATransferThatRanOutOfTime) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  reader.Send({9, 8, 7});
  SwitchLogging(true);

  EXPECT_EQ(3, Read(100, 5, EndsAt<3>).result);

  EXPECT_EQ(
      (Lines{Error("read nRetVal:-7, nReadOneTm=64\n"), Dump("read data", Padded({9, 8, 7}, 64)),
             Dump("read real data", {9, 8, 7}), Info("2nReadLen=3\n"), Info("read ret:3\n")}),
      LogLines());
}

TEST(HidRead, PutsALongReplyTogether) {
  OpenReader reader;
  const Bytes reply = Counting(1295);
  reader.Send(reply);

  const Reading reading = Read(4096, 5, EndsAt<1295>);

  EXPECT_EQ(1295, reading.result);
  EXPECT_EQ(HexText(reply), Start(reading, 1295));
}

int s_asked;  // calls of the end condition below

int CountsCalls(const unsigned char*, int count) {
  ++s_asked;
  return count > 0 ? 0 : -1;
}

TEST(HidRead, AsksTheEndConditionAlsoWithoutBytes) {
  OpenReader reader;
  reader.SendPacket({5}, milliseconds(1500));
  s_asked = 0;

  EXPECT_EQ(1, Read(100, 5, CountsCalls).result);

  EXPECT_GE(s_asked, 2);
}

TEST(HidRead, WithoutADeviceFails) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(-50, Read(100, 5).result);

  EXPECT_EQ(Lines{}, LogLines());
}

struct Nothing {
  const char* name;
  bool buffer;
  int wanted;
};

void PrintTo(const Nothing& row, std::ostream* out) { *out << row.name; }

class HidReadOfNothing : public testing::TestWithParam<Nothing> {};

TEST_P(HidReadOfNothing, EndsAfterOneTransferAndWritesNothing) {
  OpenReader reader;
  reader.SendPacket({1, 2, 3});
  Bytes buffer(8, kUntouched);

  EXPECT_EQ(0, COMM_Hid_ReadLinuxUsbLibHid(GetParam().buffer ? buffer.data() : nullptr,
                                           GetParam().wanted, 5, nullptr));

  EXPECT_EQ(Bytes(8, kUntouched), buffer);
}

INSTANTIATE_TEST_SUITE_P(, HidReadOfNothing,
                         testing::Values(Nothing{"NoneWanted", true, 0},
                                         Nothing{"NegativeCount", true, -1},
                                         Nothing{"NoBuffer", false, 100}),
                         [](const auto& test) { return test.param.name; });

// Time, and readers that fail.

TEST(HidRead, OfASilentReaderReturnsZeroWhenTimeIsOver) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  stand_in_clock::SetSpeed(10);  // a pass takes the library two seconds
  SwitchLogging(true);

  EXPECT_EQ(0, Read(100, 1, EndsAt<1>).result);

  const Lines lines = LogLines();
  const Lines pass = {Error("read nRetVal:-7, nReadOneTm=0\n"), Dump("read data", {}),
                      Dump("read real data", {})};
  ASSERT_GE(lines.size(), 5u);
  EXPECT_EQ(pass, Lines(lines.begin(), lines.begin() + 3));
  EXPECT_EQ((Lines{Info("3\n"), Info("read ret:0\n")}), Lines(lines.end() - 2, lines.end()));
}

TEST(HidRead, ThatRunsOutOfTimeReturnsZeroAlsoWithBytes) {
  OpenReader reader;
  stand_in_clock::SetSpeed(10);
  reader.SendPacket({1, 2, 3});

  EXPECT_EQ(0, Read(100, 1, EndsAt<4>).result);
}

TEST(HidRead, WithANegativeTimeEndsAfterItsFirstPass) {
  OpenReader reader;
  stand_in_clock::UseSystemClock();
  const auto start = steady_clock::now();

  EXPECT_EQ(0, Read(100, -1).result);

  const auto taken = steady_clock::now() - start;
  EXPECT_GE(taken, milliseconds(190));
  EXPECT_LT(taken, milliseconds(2000));
}

TEST(HidRead, IsNotEndedByACancel) {
  OpenReader reader;
  reader.SendPacket({1, 2}, milliseconds(300));
  std::thread canceller([] {
    std::this_thread::sleep_for(milliseconds(100));
    EXPECT_EQ(-57, COMM_Hid_CancelLinuxUsbLibHid());
  });

  EXPECT_EQ(2, Read(2, 5).result);

  canceller.join();
}

struct Failure {
  const char* name;
  void (*happen)(simulator::UsbDevice&);
  int result;        // libusb's, of the transfers that fail
  std::size_t kept;  // bytes that came before
};

void PrintTo(const Failure& row, std::ostream* out) { *out << row.name; }

class HidReadFailure : public testing::TestWithParam<Failure> {};

// The emulated bus does its work in this process too.
TEST_P(HidReadFailure, EndsWithZeroWhenTimeIsOverAndHardlyUsesTheProcessor) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  stand_in_clock::UseSystemClock();
  GetParam().happen(reader);
  SwitchLogging(true);
  const auto start = steady_clock::now();
  const double processor = ProcessorSeconds();

  const Reading reading = Read(4096, 1, EndsAt<4096>);

  const std::chrono::duration<double> taken = steady_clock::now() - start;
  EXPECT_EQ(0, reading.result);
  EXPECT_GE(taken.count(), 0.9);
  EXPECT_LT(ProcessorSeconds() - processor, kProcessorShare * taken.count());
  const Lines lines = LogLines();
  const std::string failed =
      Error("read nRetVal:" + std::to_string(GetParam().result) + ", nReadOneTm=0\n");
  const auto passes = std::count(lines.begin(), lines.end(), failed);
  EXPECT_GE(passes, 2);
  EXPECT_LE(passes, 5 * taken.count() + 3);
  EXPECT_EQ(HexText(Bytes(GetParam().kept, 0x55)),
            Start(reading, static_cast<int>(GetParam().kept)));
}

INSTANTIATE_TEST_SUITE_P(
    , HidReadFailure,
    testing::Values(
        Failure{"Unplugged", [](simulator::UsbDevice& reader) { reader.Unplug(); }, -4, 0},
        Failure{"UnpluggedInMidReply",
                [](simulator::UsbDevice& reader) {
                  reader.Send(simulator::Bytes(192, 0x55));
                  reader.Unplug(milliseconds(100));
                },
                -4, 192},
        Failure{"UnpluggedWhileWaiting",
                [](simulator::UsbDevice& reader) { reader.Unplug(milliseconds(300)); }, -4, 0},
        Failure{"Stalled", [](simulator::UsbDevice& reader) { reader.Stall(); }, -9, 0},
        Failure{"StalledInMidReply",
                [](simulator::UsbDevice& reader) {
                  reader.SendPacket(simulator::Bytes(10, 0x55));
                  reader.Stall(milliseconds(100));
                },
                -9, 10}),
    [](const auto& test) { return test.param.name; });

TEST(HidRead, OfASilentReaderHardlyUsesTheProcessor) {
  OpenReader reader;
  stand_in_clock::UseSystemClock();
  const auto start = steady_clock::now();
  const double processor = ProcessorSeconds();

  EXPECT_EQ(0, Read(100, 1, EndsAt<1>).result);

  const std::chrono::duration<double> taken = steady_clock::now() - start;
  EXPECT_LT(ProcessorSeconds() - processor, kProcessorShare * taken.count());
}

TEST(HidRead, StaysInsideItsBufferUnderAFloodOfFullTransfers) {
  OpenReader reader;
  reader.Flood(0x77);

  const Reading reading = Read(4000, 5, EndsAt<5000>);

  EXPECT_EQ(4000, reading.result);
  EXPECT_EQ(HexText(Bytes(4000, 0x77)), Start(reading, 4000));
  EXPECT_EQ(Bytes(1024, kUntouched), Bytes(reading.buffer.begin() + 4000, reading.buffer.end()));
}

TEST(HidRead, EndsUnderAFloodOfZeros) {
  OpenReader reader;
  stand_in_clock::SetSpeed(10);
  reader.Flood(0x00);

  EXPECT_EQ(0, Read(4096, 1, EndsAt<1>).result);
}

TEST(HidRead, GoesOnAfterAStallWhenTheReaderIsOpenedAgain) {
  OpenReader reader;
  stand_in_clock::SetSpeed(20);
  reader.Stall();
  EXPECT_EQ(0, Read(100, 0).result);
  COMM_Hid_CloseLinuxUsbLibHid();
  ASSERT_EQ(0, COMM_Hid_OpenLinuxUsbLibHid(0x0403, 0xBCD5));
  reader.SendPacket({4, 5});

  EXPECT_EQ(2, Read(2, 5).result);
}

}  // namespace
