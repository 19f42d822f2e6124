// Real libusb and whatever USB this machine has, among it no reader.

#include <gtest/gtest.h>
#include <malloc.h>

#include "quillonid/transport.h"
#include "tests/testing/held.h"

namespace {

int TryToOpen() { return COMM_Hid_OpenLinuxUsbLibHid(0xFFFE, 0xFFFE); }

TEST(HidWithoutReader, TenThousandAttemptsLeaveNothingBehind) {
  const std::ptrdiff_t descriptors = OpenDescriptors();
  const std::ptrdiff_t threads = Threads();
  ASSERT_EQ(-50, TryToOpen());
  const std::size_t heap = mallinfo2().uordblks;  // with what the C library keeps from a first use

  for (int i = 1; i < 10'000; ++i) ASSERT_EQ(-50, TryToOpen());

  EXPECT_EQ(descriptors, OpenDescriptors());
  EXPECT_EQ(threads, Threads());
  EXPECT_LE(mallinfo2().uordblks, heap + 40'000);  // less than four bytes an attempt
}

}  // namespace
