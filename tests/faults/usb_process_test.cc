// Whole reads over the real libusb on an emulated bus, in a process that gets signals or has very
// many descriptors. None left cannot be tried: the emulated bus lives in the process and ends it.
#include <gtest/gtest.h>

#include "tests/faults/process.h"
#include "tests/faults/reader_faults.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"
#include "tests/usb/card_on_usb.h"

namespace faults {
namespace {

int Read(int limit = kTimeLimit) {
  char no_photo[] = "";
  PERSONINFO_COLLECT record = {};
  return APP_ID_ReadCollectIDCard("HID", "", 115200, limit, no_photo, &record);
}

TEST(UsbDescriptors, Above1024ServeAsWell) {
  NEEDS_PRIVATE_ROOT();
  CardOnUsb usb;
  {
    const ManyDescriptors held;
    ASSERT_LT(1024, LowestFreeDescriptor());
    const Taken taken;

    EXPECT_EQ(0, Read());

    EXPECT_LE(taken(), kGoodRead + Slack());
  }
  EXPECT_EQ(0, Read());
}

class UsbReadUnderSignals : public testing::TestWithParam<SignalledRead> {};

TEST_P(UsbReadUnderSignals, EndsAsWithoutThem) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::UseSystemClock();
  BlockSignals();
  CardOnUsb usb;  // whose thread has them blocked
  UnblockSignals();
  if (*GetParam().fault != '\0') usb.module.SetFault(*simulator::ParseFault(GetParam().fault));
  const Taken time;
  {
    const Signals signals;

    EXPECT_EQ(GetParam().result, Read(2));

    EXPECT_LT(0, signals.count());
  }
  const double taken = time();
  EXPECT_LE(taken, 2 + 5 + Slack());
  EXPECT_TRUE(GetParam().result == 0 || taken >= 2) << taken;
  usb.module.ClearFaults();
  EXPECT_EQ(0, Read());
}

INSTANTIATE_TEST_SUITE_P(, UsbReadUnderSignals,
                         testing::Values(SignalledRead{"", 0}, SignalledRead{"silent", -5},
                                         SignalledRead{"no-card", -5}));

}  // namespace
}  // namespace faults
