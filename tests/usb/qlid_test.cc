// The tool, unmodified and in a process of its own, on a machine with one USB reader.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "simulator/tty_reader.h"
#include "tests/testing/program.h"

namespace {

// Runs qlid under the program that puts a reader on an emulated bus.
Output OnUsb(std::vector<std::string> reader, const std::vector<std::string>& arguments) {
  reader.insert(reader.begin(), WITH_USB_READER);
  reader.emplace_back(QLID_PROGRAM);
  reader.insert(reader.end(), arguments.begin(), arguments.end());
  return RunProgram(reader);
}

// The part of the JSON text that describes the card.
std::string CardOf(const std::string& json) {
  const std::size_t start = json.find("\"card\":");
  const std::size_t end = json.find('}', start);
  return start == std::string::npos ? "" : json.substr(start, end - start);
}

}  // namespace

TEST(QlidOnUsb, ReadsTheSameCardAsOverATty) {
  simulator::TtyReader tty;
  tty.PutCard(simulator::MakeCard("permit"));
  const Output serial = RunProgram({QLID_PROGRAM, "read", "--json", "--device", tty.path()});
  ASSERT_EQ(0, serial.exit) << serial.out;
  ASSERT_NE("", CardOf(serial.out));

  const Output usb = OnUsb({"--card", "permit"}, {"read", "--json"});

  EXPECT_EQ(0, usb.exit) << usb.out;
  EXPECT_EQ(CardOf(serial.out), CardOf(usb.out));
}

TEST(QlidOnUsb, SaysThatThereIsNoCard) {
  EXPECT_EQ(4, OnUsb({"--fault", "no-card"}, {"read", "--timeout", "1"}).exit);
}

TEST(QlidOnUsb, SaysThatThePlugWasPulled) {
  EXPECT_EQ(4, OnUsb({"--fault", "hang-up=700"}, {"read", "--timeout", "2"}).exit);
}

TEST(QlidOnUsb, DoctorAsksTheReaderAndFindsItsCard) {
  const Output doctor = OnUsb({}, {"doctor"});

  EXPECT_NE(std::string::npos, doctor.out.find("reader 0403:bcd5 on bus 1, device 2"))
      << doctor.out;
  EXPECT_NE(std::string::npos, doctor.out.find("\"HID\" opened in ")) << doctor.out;
  EXPECT_NE(std::string::npos, doctor.out.find("a card was found and selected (not read)"))
      << doctor.out;
}
