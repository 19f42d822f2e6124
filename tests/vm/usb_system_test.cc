// The USB transport on a real kernel: what the kernel itself does when a reader is plugged in,
// opened, reset and pulled.

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>

#include "quillonid/transport.h"
#include "simulator/tty_reader.h"
#include "tests/testing/held.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/usb/card_on_usb.h"

namespace {

using simulator::KernelUsbReader;

int Open() { return COMM_Hid_OpenLinuxUsbLibHid(0x0403, 0xBCD5); }

// Plugging in and opening -----------------------------------------------------------------------

TEST(Kernel, BindsItsDriverWhenTheReaderIsPluggedIn) {
  const KernelUsbReader reader;

  EXPECT_EQ("usbhid", reader.Driver());
  EXPECT_EQ(1, reader.Configured());
}

TEST(Kernel, GivesInterfaceZeroToTheLibrary) {
  const KernelUsbReader reader;

  ASSERT_EQ(0, Open());

  EXPECT_EQ("usbfs", reader.Driver());
  COMM_Hid_CloseLinuxUsbLibHid();
}

// The driver does not come back: nothing but the library wants the reader.
TEST(Kernel, HasNoDriverBoundAfterTheClose) {
  const KernelUsbReader reader;
  ASSERT_EQ(0, Open());

  COMM_Hid_CloseLinuxUsbLibHid();

  EXPECT_EQ("", reader.Driver());
}

TEST(Kernel, ResetsTheReaderAtEveryOpen) {
  const KernelUsbReader reader;

  for (int opens = 1; opens <= 3; ++opens) {
    ASSERT_EQ(0, Open());
    EXPECT_EQ(1 + opens, reader.Configured());
    COMM_Hid_CloseLinuxUsbLibHid();
  }
}

TEST(Kernel, ServesAReaderWithoutHidClass) {
  const KernelUsbReader reader({.hid = false});
  EXPECT_EQ("", reader.Driver());

  ASSERT_EQ(0, Open());

  EXPECT_TRUE(reader.Claimed());
  COMM_Hid_CloseLinuxUsbLibHid();
}

TEST(Kernel, TakesTheInterfaceFromAnotherProgramByTheReset) {
  const KernelUsbReader reader({.claim_errno = EBUSY});
  EXPECT_EQ("usbfs", reader.Driver());

  EXPECT_EQ(0, Open());

  COMM_Hid_CloseLinuxUsbLibHid();
  EXPECT_EQ("", reader.Driver());
}

TEST(Kernel, ShowsNoReaderWithOtherIds) {
  const KernelUsbReader reader({.product = 0x0001});

  EXPECT_EQ(-50, Open());
}

TEST(Kernel, RefusesAnOpenWithoutNode) {
  KernelUsbReader reader;
  reader.RemoveNode();

  EXPECT_EQ(-3, Open());
}

// Whole reads -----------------------------------------------------------------------------------

class KernelSpecimen : public testing::TestWithParam<const char*> {};

TEST_P(KernelSpecimen, GivesTheSameTextAsOverATty) {
  simulator::TtyReader tty;
  tty.PutCard(simulator::MakeCard(GetParam()));
  const JsonRead serial = ReadJson(tty.path().c_str());
  ASSERT_EQ(0, serial.result);
  CardOnUsb usb(HidTraits(), simulator::MakeCard(GetParam()));

  const JsonRead read = ReadJson("HID");

  EXPECT_EQ(0, read.result);
  EXPECT_EQ(serial.text, read.text);
}

INSTANTIATE_TEST_SUITE_P(, KernelSpecimen, testing::Values("resident", "foreigner", "permit"));

TEST(KernelWholeRead, EndsWhenThePlugIsPulledInMidReply) {
  CardOnUsb usb(HidTraits());
  usb.module.SetFault({simulator::FaultId::kHangUp, 700});
  const std::ptrdiff_t descriptors = OpenDescriptors();
  const std::ptrdiff_t threads = Threads();

  EXPECT_EQ(-56, ReadNative(5).result);

  EXPECT_TRUE(usb.reader.WaitGone());
  EXPECT_EQ(descriptors, OpenDescriptors());
  // The thread that served the reader may end with it.
  EXPECT_LE(Threads(), threads);
}

TEST(KernelWholeRead, HardlyUsesTheProcessorOnceThePlugIsPulled) {
  CardOnUsb usb(HidTraits());
  stand_in_clock::UseSystemClock();
  usb.module.SetFault({simulator::FaultId::kHangUp, 700});
  const auto start = std::chrono::steady_clock::now();
  const double processor = ProcessorSeconds();

  EXPECT_EQ(-56, ReadNative(4).result);

  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  EXPECT_GE(taken.count(), 3.5);
  EXPECT_LT(ProcessorSeconds() - processor, kProcessorShare * taken.count());
}

TEST(KernelWholeRead, WorksAgainWhenTheReaderIsPluggedInAgain) {
  {
    CardOnUsb pulled(HidTraits());
    pulled.module.SetFault({simulator::FaultId::kHangUp, 700});
    EXPECT_EQ(-56, ReadNative(5).result);
  }
  EXPECT_EQ(-50, ReadNative(5).result);
  CardOnUsb usb(HidTraits());

  EXPECT_EQ(0, ReadNative(5).result);
}

TEST(KernelWholeRead, LeavesNoDescriptorAndNoThread) {
  CardOnUsb usb(HidTraits());
  EXPECT_EQ(0, ReadNative(5).result);
  const std::ptrdiff_t descriptors = OpenDescriptors();
  const std::ptrdiff_t threads = Threads();

  for (int i = 0; i < 5; ++i) EXPECT_EQ(0, ReadNative(5).result);

  EXPECT_EQ(descriptors, OpenDescriptors());
  EXPECT_EQ(threads, Threads());
}

}  // namespace
