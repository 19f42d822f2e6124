// The USB transport on a real kernel: what the kernel itself does when a reader is plugged in,
// opened, reset and pulled.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "quillonid/quillonid.h"
#include "quillonid/transport.h"
#include "simulator/tty_reader.h"
#include "simulator/usb/card_reader.h"
#include "simulator/usb/kernel_reader.h"
#include "tests/testing/stand_in_clock.h"

namespace {

using simulator::KernelUsbReader;

int Open() { return COMM_Hid_OpenLinuxUsbLibHid(0x0403, 0xBCD5); }

long Entries(const char* folder) {
  long count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    static_cast<void>(entry);
    ++count;
  }
  return count;
}

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

struct Read {
  int result;
  std::string json;
};

Read ReadCard(const char* device) {
  char json[8192] = {};
  char no_photo[] = "";
  Read read = {};
  read.result = APP_ID_ReadCollectIDCardInfo(device, "", 115200, 10, 0, no_photo, json);
  read.json = json;
  return read;
}

struct ReaderWithCard {
  simulator::CardModule module;
  KernelUsbReader reader;

  explicit ReaderWithCard(const char* specimen) {
    module.PutCard(simulator::MakeCard(specimen));
    simulator::ServeCards(reader, module);
  }
};

class KernelWholeRead : public testing::TestWithParam<const char*> {};

TEST_P(KernelWholeRead, GivesTheSameTextAsOverATty) {
  simulator::TtyReader tty;
  tty.PutCard(simulator::MakeCard(GetParam()));
  const Read serial = ReadCard(tty.path().c_str());
  ASSERT_EQ(0, serial.result);
  ReaderWithCard usb(GetParam());

  const Read read = ReadCard("HID");

  EXPECT_EQ(0, read.result);
  EXPECT_EQ(serial.json, read.json);
}

INSTANTIATE_TEST_SUITE_P(, KernelWholeRead, testing::Values("resident", "foreigner", "permit"));

TEST(KernelWholeRead, EndsWhenThePlugIsPulledInMidReply) {
  ReaderWithCard usb("resident");
  usb.module.SetFault({simulator::FaultId::kHangUp, 700});
  const long descriptors = Entries("/proc/self/fd");
  const long threads = Entries("/proc/self/task");

  EXPECT_EQ(-5, ReadCard("HID").result);

  EXPECT_TRUE(usb.reader.WaitGone());
  EXPECT_EQ(descriptors, Entries("/proc/self/fd"));
  // The thread that served the reader may end with it.
  EXPECT_LE(Entries("/proc/self/task"), threads);
}

TEST(KernelWholeRead, HardlyUsesTheProcessorOnceThePlugIsPulled) {
  ReaderWithCard usb("resident");
  stand_in_clock::UseSystemClock();
  usb.module.SetFault({simulator::FaultId::kHangUp, 700});
  timespec before = {};
  timespec after = {};
  const auto start = std::chrono::steady_clock::now();
  syscall(SYS_clock_gettime, CLOCK_PROCESS_CPUTIME_ID, &before);

  EXPECT_EQ(-5, ReadCard("HID").result);

  syscall(SYS_clock_gettime, CLOCK_PROCESS_CPUTIME_ID, &after);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  const double used = static_cast<double>(after.tv_sec - before.tv_sec) +
                      static_cast<double>(after.tv_nsec - before.tv_nsec) / 1e9;
  EXPECT_GE(taken.count(), 9);
  EXPECT_LT(used, 0.5 * taken.count());  // a spinning read on an emulated processor uses all of it
}

TEST(KernelWholeRead, WorksAgainWhenTheReaderIsPluggedInAgain) {
  {
    ReaderWithCard pulled("resident");
    pulled.module.SetFault({simulator::FaultId::kHangUp, 700});
    EXPECT_EQ(-5, ReadCard("HID").result);
  }
  EXPECT_EQ(-1, ReadCard("HID").result);
  ReaderWithCard usb("resident");

  EXPECT_EQ(0, ReadCard("HID").result);
}

TEST(KernelWholeRead, LeavesNoDescriptorAndNoThread) {
  ReaderWithCard usb("resident");
  EXPECT_EQ(0, ReadCard("HID").result);
  const long descriptors = Entries("/proc/self/fd");
  const long threads = Entries("/proc/self/task");

  for (int i = 0; i < 5; ++i) EXPECT_EQ(0, ReadCard("HID").result);

  EXPECT_EQ(descriptors, Entries("/proc/self/fd"));
  EXPECT_EQ(threads, Entries("/proc/self/task"));
}

}  // namespace
