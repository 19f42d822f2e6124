// Real libusb and whatever USB this machine has, among it no reader.

#include <gtest/gtest.h>
#include <malloc.h>

#include <filesystem>

#include "quillonid/transport.h"

namespace {

long Entries(const char* folder) {
  long count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    static_cast<void>(entry);
    ++count;
  }
  return count;
}

int TryToOpen() { return COMM_Hid_OpenLinuxUsbLibHid(0xFFFE, 0xFFFE); }

TEST(HidWithoutReader, TenThousandAttemptsLeaveNothingBehind) {
  const long descriptors = Entries("/proc/self/fd");
  const long threads = Entries("/proc/self/task");
  ASSERT_EQ(-50, TryToOpen());
  const std::size_t heap = mallinfo2().uordblks;  // with what the C library keeps from a first use

  for (int i = 1; i < 10'000; ++i) ASSERT_EQ(-50, TryToOpen());

  EXPECT_EQ(descriptors, Entries("/proc/self/fd"));
  EXPECT_EQ(threads, Entries("/proc/self/task"));
  EXPECT_LE(mallinfo2().uordblks, heap + 40'000);  // less than four bytes an attempt
}

}  // namespace
