#include <climits>
#include <string>
#include <vector>

#include "quillonid/transport.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/usb/log_text.h"
#include "tests/usb/open_reader.h"

namespace {

using simulator::Bytes;
using Lines = std::vector<std::string>;

int Write(const Bytes& data) {
  return COMM_Hid_WriteLinuxUsbLibHid(data.data(), static_cast<std::uint32_t>(data.size()));
}

Bytes Counting(std::size_t size) {
  Bytes bytes;
  for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<unsigned char>(i + 1));
  return bytes;
}

// All that the reader took, transfer by transfer.
Lines Taken(const simulator::UsbDevice& reader) {
  Lines transfers;
  for (const simulator::Bytes& each : reader.Written()) transfers.push_back(HexText(each));
  return transfers;
}

TEST(HidWrite, SendsTheBytesAsTheyAre) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  const Bytes command = FromHex("AA AA AA 96 69 00 03 20 01 22");
  SwitchLogging(true);

  EXPECT_EQ(10, Write(command));

  EXPECT_EQ(Lines{"AA AA AA 96 69 00 03 20 01 22"}, Taken(reader));
  EXPECT_EQ((Lines{Dump("hid write", command), Info("write ok:10\n")}), LogLines());
}

TEST(HidWrite, SendsMoreThanOnePacketInOneTransfer) {
  OpenReader reader;
  const Bytes data = Counting(1024);

  EXPECT_EQ(1024, Write(data));

  EXPECT_EQ(Lines{HexText(data)}, Taken(reader));
}

TEST(HidWrite, OfNothingMakesOneEmptyTransfer) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  SwitchLogging(true);

  EXPECT_EQ(0, COMM_Hid_WriteLinuxUsbLibHid(nullptr, 0));

  EXPECT_EQ(Lines{""}, Taken(reader));
  EXPECT_EQ((Lines{Dump("hid write", {}), Info("write ok:0\n")}), LogLines());
}

TEST(HidWrite, SendsTheRemainderAfterAShortTransfer) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader({.out_limit = 4});
  SwitchLogging(true);

  EXPECT_EQ(10, Write(Counting(10)));

  EXPECT_EQ((Lines{"01 02 03 04", "05 06 07 08", "09 0A"}), Taken(reader));
  EXPECT_EQ((Lines{Dump("hid write", Counting(10)), Info("write ok:10\n")}), LogLines());
}

TEST(HidWrite, SucceedsWithTheFifthTransfer) {
  OpenReader reader({.out_limit = 2});

  EXPECT_EQ(10, Write(Counting(10)));

  EXPECT_EQ(5u, reader.Written().size());
}

TEST(HidWrite, GivesUpAfterFiveTransfersWithoutALine) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader({.out_limit = 2});
  SwitchLogging(true);

  EXPECT_EQ(-54, Write(Counting(11)));

  EXPECT_EQ((Lines{"01 02", "03 04", "05 06", "07 08", "09 0A"}), Taken(reader));
  EXPECT_EQ(Lines{Dump("hid write", Counting(11))}, LogLines());
}

TEST(HidWrite, FailsWhenTheReaderTakesNothingForASecond) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader({.out_blocked = true});
  SwitchLogging(true);
  const auto start = std::chrono::steady_clock::now();

  EXPECT_EQ(-54, Write(Counting(3)));

  const auto taken = std::chrono::steady_clock::now() - start;
  EXPECT_GE(taken, std::chrono::milliseconds(990));
  EXPECT_LT(taken, std::chrono::seconds(10));
  const Lines lines = LogLines();
  ASSERT_EQ(2u, lines.size());
  EXPECT_EQ(Dump("hid write", Counting(3)), lines[0]);
  // The text of errno that follows is whatever libusb left.
  EXPECT_TRUE(lines[1].starts_with(Error("nTimes:1 sendlen0 ret:-7 "))) << lines[1];
}

TEST(HidWrite, FailsOnAPulledReader) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  reader.Unplug();
  SwitchLogging(true);

  EXPECT_EQ(-54, Write(Counting(3)));

  const Lines lines = LogLines();
  ASSERT_EQ(2u, lines.size());
  EXPECT_EQ(Error("nTimes:1 sendlen0 ret:-4 No such device\n"), lines[1]);
}

TEST(HidWrite, WithoutADeviceOnlyDumps) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(-50, Write(Counting(3)));

  EXPECT_EQ(Lines{Dump("hid write", Counting(3))}, LogLines());
}

TEST(HidWrite, RefusesWhatCannotBeSent) {
  NEEDS_PRIVATE_ROOT();
  OpenReader reader;
  const unsigned char byte = 0x31;
  SwitchLogging(true);

  EXPECT_EQ(-54, COMM_Hid_WriteLinuxUsbLibHid(&byte, 0x80000000u));
  EXPECT_EQ(-54, COMM_Hid_WriteLinuxUsbLibHid(&byte, UINT_MAX));
  EXPECT_EQ(-54, COMM_Hid_WriteLinuxUsbLibHid(nullptr, 10));

  EXPECT_EQ(Lines{}, Taken(reader));
  EXPECT_EQ(Lines(3, Dump("hid write", {})), LogLines());
}

}  // namespace
