// Dispatcher with a USB reader, on a libusb that does what the test says.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "quillonid/reader.h"
#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/pty.h"
#include "tests/usb/fake_libusb.h"

namespace {

using fake_libusb::Now;
using Lines = std::vector<std::string>;

QL_TRANSPORT_DESCRIPTION UsbReader(int timeout = 5) {
  QL_TRANSPORT_DESCRIPTION description = {};
  description.nKind = QL_KIND_USB;
  description.nVid = 0x0403;
  description.nPid = 0xBCD5;
  description.nTimeOut = timeout;
  return description;
}

QL_TRANSPORT_DESCRIPTION SerialPort(const std::string& path) {
  QL_TRANSPORT_DESCRIPTION description = {};
  description.nKind = QL_KIND_SERIAL;
  description.nBaud = 9600;
  description.nTimeOut = 5;
  std::strncpy(description.szPath, path.c_str(), sizeof description.szPath - 1);
  return description;
}

int Open(QL_TRANSPORT_DESCRIPTION description) { return COMM_Dev_OpenTransPort(&description); }

int Write(std::string_view text) {
  return COMM_Dev_WriteDataToTransPort(reinterpret_cast<const unsigned char*>(text.data()),
                                       static_cast<int>(text.size()));
}

// Transfers that a read makes until it gives up, when each brings nothing for `seconds`.
std::size_t TransfersUntilTimeout(double seconds) {
  unsigned char reply[2048] = {};
  Now().otherwise.seconds = seconds;
  Now().calls.clear();
  EXPECT_EQ(0, COMM_Dev_ReadDataFromTransPort(reply, 512));
  return Now().calls.size();
}

}  // namespace

TEST(DispatcherUsb, RoutesASession) {
  unsigned char reply[2048] = {};
  QL_TRANSPORT_DESCRIPTION description = UsbReader();
  description.pEnd = [](const unsigned char*, int count) { return count == 3 ? 0 : -1; };

  ASSERT_EQ(0, Open(description));
  EXPECT_EQ(5, Write("hello"));
  EXPECT_EQ("68 65 6C 6C 6F", HexText(Now().written.at(0)));
  Now().transfers = {{.bytes = {0x11, 0x22, 0x33}}};
  EXPECT_EQ(3, COMM_Dev_ReadDataFromTransPort(reply, 512));
  EXPECT_EQ("11 22 33 00", HexText(reply, 4));
  EXPECT_EQ(RET_PUB_CANCEL, COMM_Dev_CancelRead());
  EXPECT_EQ(0, COMM_Dev_CloseTransPort());

  EXPECT_EQ(0, Now().handles);
  EXPECT_EQ(0, Now().contexts);
  EXPECT_EQ(RET_PUB_DEVICE_ERROR, Write("x"));
  EXPECT_EQ(RET_PUB_DEVICE_ERROR, COMM_Dev_ReadDataFromTransPort(reply, 512));
}

// A cancel is for the reader that is open, however often it is asked for.
TEST(DispatcherUsb, KeepsCancelsFromASerialPortThatIsNotItsOwn) {
  const Pty pty;
  ASSERT_EQ(0, Open(UsbReader()));
  ASSERT_EQ(0, COMM_Com_OpenLinux(pty.path().c_str(), 9600));
  std::atomic<bool> done = false;
  std::thread canceller([&done] {
    while (!done) {
      CancelIdRead();
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  });
  unsigned char reply[1] = {};

  EXPECT_EQ(RET_PUB_TIMEOUT, COMM_Com_ReadLinux(reply, 1, 0, nullptr));

  done = true;
  canceller.join();
  EXPECT_EQ(0, COMM_Com_CloseLinux());
  EXPECT_EQ(0, COMM_Dev_CloseTransPort());
}

TEST(DispatcherUsb, TellsVendorFromProduct) {
  QL_TRANSPORT_DESCRIPTION description = UsbReader();
  std::swap(description.nVid, description.nPid);

  EXPECT_EQ(RET_PUB_DEVICE_ERROR, Open(description));
  EXPECT_EQ(0, Open(UsbReader()));
}

TEST(DispatcherUsb, SetsTheTrailingZeroFlag) {
  unsigned char reply[2048] = {};
  ASSERT_EQ(0, Open(UsbReader()));
  const auto end = [](const unsigned char*, int count) { return count >= 3 ? 0 : -1; };
  ASSERT_EQ(0, COMM_Dev_ChangeEndCondition(end));

  // Dropped: the read needs another transfer.
  Now().transfers = {{.bytes = {0x11, 0x00, 0x00}}, {.bytes = {0x22, 0x33}}};
  EXPECT_EQ(3, COMM_Dev_ReadDataFromTransPort(reply, 512));
  EXPECT_EQ("11 22 33", HexText(reply, 3));

  EXPECT_EQ(0, COMM_Dev_SetHidClearZero(0));
  Now().transfers = {{.bytes = {0x11, 0x00, 0x00}}, {.bytes = {0x22, 0x33}}};
  EXPECT_EQ(1, COMM_Dev_ReadDataFromTransPort(reply, 512));
  EXPECT_EQ(1u, Now().transfers.size());
}

TEST(DispatcherUsb, ClosesThePortBeforeItOpensTheReader) {
  const Pty pty;
  ASSERT_EQ(0, Open(SerialPort(pty.path())));

  ASSERT_EQ(0, Open(UsbReader()));

  EXPECT_TRUE(DescriptorsOn(pty.path()).empty());
  EXPECT_EQ(2, Write("ab"));
  EXPECT_EQ(1u, Now().written.size());
}

TEST(DispatcherUsb, ClosesTheReaderBeforeItOpensThePort) {
  const Pty pty;
  ASSERT_EQ(0, Open(UsbReader()));

  ASSERT_EQ(0, Open(SerialPort(pty.path())));

  EXPECT_EQ(0, Now().handles);
  EXPECT_EQ(0, Now().contexts);
  EXPECT_EQ(2, Write("ab"));
  EXPECT_EQ("ab", pty.Receive(2));
}

TEST(DispatcherUsb, DoesNotCloseAReaderTwice) {
  NEEDS_PRIVATE_ROOT();
  const Pty pty;
  ASSERT_EQ(0, Open(UsbReader()));
  ASSERT_EQ(0, COMM_Dev_CloseTransPort());
  SwitchLogging(true);

  ASSERT_EQ(0, Open(SerialPort(pty.path())));

  ASSERT_LT(2u, LogLines().size());
  EXPECT_EQ("  TIME  INFO:    CommDev:  [COMM_Com_OpenLinux ] Start ", LogLines()[2]);
}

TEST(DispatcherUsb, KeepsTheReaderWhenItIsOpenedAgain) {
  ASSERT_EQ(0, Open(UsbReader()));
  Now().calls.clear();

  EXPECT_EQ(0, Open(UsbReader()));

  EXPECT_EQ(Lines{}, Now().calls);
}

// What is open counts, not the kind that was kept meanwhile.
TEST(DispatcherUsb, ClosesTheOpenTransportWhateverKindWasKept) {
  const Pty pty;
  QL_TRANSPORT_DESCRIPTION serial = SerialPort(pty.path()), usb = UsbReader();
  ASSERT_EQ(0, Open(serial));
  ASSERT_EQ(0, COMM_Dev_ChangeTermParam(&usb));
  ASSERT_EQ(0, COMM_Dev_CloseTransPort());  // Closes the kept kind, which is not open.
  ASSERT_EQ(1u, DescriptorsOn(pty.path()).size());

  ASSERT_EQ(0, Open(usb));

  EXPECT_TRUE(DescriptorsOn(pty.path()).empty());
}

TEST(DispatcherUsb, TakesTheSecondsOfAReadOffTheBudget) {
  ASSERT_EQ(0, Open(UsbReader(10)));
  Now().transfers = {
      {.bytes = {0x11}, .seconds = 6}
  };
  ASSERT_EQ(0,
            COMM_Dev_ChangeEndCondition([](const unsigned char*, int count) { return count - 1; }));
  unsigned char reply[2048] = {};
  ASSERT_EQ(1, COMM_Dev_ReadDataFromTransPort(reply, 512));

  const std::size_t transfers = TransfersUntilTimeout(1.0);

  // Four seconds are left, three if the first six touched seven on the clock.
  EXPECT_LE(3u, transfers);
  EXPECT_GE(5u, transfers);
}

TEST(DispatcherUsb, EndsAfterOneTransferWhenTheBudgetIsNegative) {
  ASSERT_EQ(0, Open(UsbReader(1)));
  TransfersUntilTimeout(1.0);  // Spends at least two seconds.

  EXPECT_EQ(1u, TransfersUntilTimeout(0.2));
  EXPECT_EQ(1u, TransfersUntilTimeout(0.2));
}
