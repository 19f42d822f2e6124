// qlid with a USB reader on the emulated bus.
#include <gtest/gtest.h>

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
