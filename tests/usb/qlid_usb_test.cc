// qlid with a USB reader on the emulated bus.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>

#include "tests/testing/program.h"
#include "tests/usb/card_on_usb.h"

namespace {

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST(QlidDevices, NamesAReaderAndTheCommandThatReadsIt) {
  const CardOnUsb usb;

  const Output output = RunProgram({QLID_PROGRAM, "devices"});

  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_TRUE(
      Contains(output.out,
               "0403:bcd5  bus 1 device 2  /dev/bus/usb/001/002  you may open it\n    qlid read\n"))
      << output.out;
}

TEST(QlidDevices, NamesTheDriverInTheWay) {
  simulator::UsbTraits traits = HidTraits();
  traits.driver = "usbhid";
  const CardOnUsb usb(traits);

  const Output output = RunProgram({QLID_PROGRAM, "devices"});

  EXPECT_TRUE(Contains(output.out, "kernel driver usbhid holds it")) << output.out;
}

TEST(QlidDevices, FindsAReaderOfAnAddedId) {
  simulator::UsbTraits traits = QuickTraits();
  traits.vendor = 0x1234;
  traits.product = 0x5678;
  const CardOnUsb usb(traits);

  const Output unknown = RunProgram({QLID_PROGRAM, "devices"});
  const Output added = RunProgram({QLID_PROGRAM, "devices", "--usb-id", "1234:5678"});

  EXPECT_FALSE(Contains(unknown.out, "1234:5678")) << unknown.out;
  EXPECT_EQ(0, added.exit) << added.err;
  EXPECT_TRUE(Contains(added.out, "qlid read --usb-id 1234:5678")) << added.out;
}

TEST(QlidDevices, SpeaksJson) {
  const CardOnUsb usb;

  const Output output = RunProgram({QLID_PROGRAM, "devices", "--json"});

  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_TRUE(Contains(output.out, "\"id\":\t\"0403:bcd5\"")) << output.out;
  EXPECT_TRUE(Contains(output.out, "\"access\":\t\"ready\"")) << output.out;
}

TEST(QlidRead, ReadsACardFromAUsbReader) {
  const CardOnUsb usb;

  const Output output = RunProgram({QLID_PROGRAM, "read", "--device", "HID"});

  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_TRUE(Contains(output.out, simulator::FindSpecimen("resident")->text.at("cardId")))
      << output.out;
}

TEST(QlidRead, TakesAUsbReaderWhenNoDeviceIsNamed) {
  const CardOnUsb usb(QuickTraits(), simulator::MakeCard("permit"));

  const Output output = RunProgram({QLID_PROGRAM, "read"});

  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_TRUE(Contains(output.out, simulator::FindSpecimen("permit")->text.at("passNumber")))
      << output.out;
}

TEST(QlidRead, ReadsFromAReaderOfAnAddedId) {
  simulator::UsbTraits traits = QuickTraits();
  traits.vendor = 0x1234;
  traits.product = 0x5678;
  const CardOnUsb usb(traits);

  EXPECT_EQ(3, RunProgram({QLID_PROGRAM, "read"}).exit);
  EXPECT_EQ(0, RunProgram({QLID_PROGRAM, "read", "--usb-id", "1234:5678"}).exit);
}

// The kernel ends a reader's transfers a moment before its node disappears.
TEST(QlidRead, SaysThatTheReaderWasPulledWhenSendingFails) {
  CardOnUsb usb;
  std::atomic<bool> pulled{false};
  usb.reader.on_out = [answer = usb.reader.on_out, &pulled](simulator::UsbDevice& device,
                                                            const simulator::Bytes& bytes) {
    answer(device, bytes);
    device.Unplug();  // between search and select
    pulled = true;
  };
  Program read({QLID_PROGRAM, "read"});
  while (!pulled) usleep(1000);
  usleep(50'000);

  usb.reader.Pull();

  const Output output = read.Finish();
  EXPECT_EQ(3, output.exit);
  EXPECT_TRUE(Contains(output.err, "the reader was unplugged while it was being read (-3)"))
      << output.err;
  EXPECT_TRUE(Contains(output.err, "/dev/bus/usb/001/002 is gone since ")) << output.err;
}

TEST(QlidRead, NamesTheUsbReaderToPrograms) {
  const CardOnUsb usb;

  const Output read = RunProgram({QLID_PROGRAM, "read", "--json"});

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(read.out, "\"usb\":\t\"0403:bcd5\"")) << read.out;
}

// The second time at the place of the first, as a kernel that has counted round would.
TEST(QlidWatch, GoesOnWhenTheReaderIsPulledAndPluggedInAgain) {
  constexpr int kNumbers[] = {3, 2};
  CardOnUsb usb;
  const std::string first = simulator::FindSpecimen("resident")->text.at("cardId");
  const std::string second = simulator::FindSpecimen("permit")->text.at("cardId");
  Program watch({QLID_PROGRAM, "read", "--watch", "--pause", "20"});
  ASSERT_TRUE(watch.WaitFor(first)) << watch.err();
  std::string told;

  for (const int number : kNumbers) {
    usb.reader.Pull();
    told += "reader unplugged; waiting for it to come back\n";
    ASSERT_TRUE(watch.WaitFor(told)) << watch.err();
    usb.module.PutCard(simulator::MakeCard(number == 3 ? "permit" : "resident"));
    usb.module.Reset();
    ASSERT_TRUE(usb.reader.PlugIn(number));
    told += "reader is back\n";
    ASSERT_TRUE(watch.WaitFor(told)) << watch.err();
  }
  ASSERT_TRUE(watch.WaitFor(first, 2)) << watch.out();
  watch.Signal(SIGINT);
  const Output output = watch.Finish();

  EXPECT_EQ(0, output.exit);
  EXPECT_TRUE(Contains(output.out, second)) << output.out;
  EXPECT_EQ(0U, output.err.find(told)) << output.err;
  EXPECT_TRUE(Contains(output.err, "stopped after 3 cards, 0 failures\n")) << output.err;
}
