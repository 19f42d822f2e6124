// A USB reader that another program has open: qlid names that program.
#include <gtest/gtest.h>

#include "tests/qlid/bench.h"
#include "tests/qlid/rival.h"
#include "tests/qlid/usb_machine.h"

namespace {

std::string LineWith(const std::string& text, const std::string& part) {
  const std::size_t at = text.find(part);
  if (at == std::string::npos) return "no \"" + part + "\" in: " + text;
  const std::size_t start = text.rfind('\n', at) + 1;
  return text.substr(start, text.find('\n', at) - start);
}

}  // namespace

TEST(QlidOnUsbHeldByAnother, ReadNamesTheProgram) {
  NEEDS_PRIVATE_ROOT();
  const UsbMachine machine("usbfs");
  const Rival rival(UsbMachine::kNode);

  const Output read = RunQlid({"read"});

  EXPECT_EQ(3, read.exit);
  EXPECT_EQ("qlid: the reader is in use by another program (-1)",
            LineWith(read.err, "in use by another program"));
  EXPECT_EQ("  Reader   /dev/bus/usb/001/007", LineWith(read.err, UsbMachine::kNode));
  EXPECT_EQ("  Held by  " + rival.Named(), LineWith(read.err, kRivalName));
}

TEST(QlidOnUsbHeldByAnother, DoctorNamesTheProgram) {
  NEEDS_PRIVATE_ROOT();
  const UsbMachine machine("usbfs");
  const Rival rival(UsbMachine::kNode);

  const Output doctor = RunQlid({"doctor"});

  EXPECT_EQ(1, doctor.exit);
  EXPECT_EQ("  FAIL  /dev/bus/usb/001/007 is also open in " + rival.Named(),
            LineWith(doctor.out, "is also open in"));
  EXPECT_EQ("  FAIL  \"HID\" cannot be opened; it is open in " + rival.Named(),
            LineWith(doctor.out, "cannot be opened"));
}

// Without a claim on its interface a second program is no hindrance yet.
TEST(QlidOnUsbHeldByAnother, DoctorWarnsOfAProgramThatHasNotClaimedIt) {
  NEEDS_PRIVATE_ROOT();
  const UsbMachine machine;
  const Rival rival(UsbMachine::kNode);

  const Output doctor = RunQlid({"doctor"});

  EXPECT_EQ("  warn  /dev/bus/usb/001/007 is also open in " + rival.Named(),
            LineWith(doctor.out, "is also open in"));
}

TEST(QlidOnUsbHeldByAnother, DoctorFindsNobodyWhereThereIsNobody) {
  NEEDS_PRIVATE_ROOT();
  const UsbMachine machine;

  const Output doctor = RunQlid({"doctor"});

  EXPECT_TRUE(Contains(doctor.out, "/dev/bus/usb/001/007 can be opened")) << doctor.out;
  EXPECT_FALSE(Contains(doctor.out, "007 is also open in")) << doctor.out;
}
