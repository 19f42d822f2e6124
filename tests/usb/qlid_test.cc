// The tool, unmodified and in a process of its own, on a machine with one USB reader.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "simulator/tty_reader.h"

namespace {

struct Outcome {
  int status;
  std::string output;
};

Outcome RunShell(const std::string& command) {
  std::FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return {-1, ""};
  Outcome outcome = {};
  char part[4096];
  for (std::size_t got = 0; (got = std::fread(part, 1, sizeof part, pipe)) > 0;) {
    outcome.output.append(part, got);
  }
  const int status = pclose(pipe);
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return outcome;
}

Outcome OnUsb(const std::string& options, const std::string& arguments) {
  return RunShell(std::string(WITH_USB_READER) + " " + options + " " + QLID_PROGRAM + " " +
                  arguments + " 2>/dev/null");
}

// The part of the JSON text that describes the card.
std::string CardOf(const std::string& json) {
  const std::size_t start = json.find("\"card\":");
  const std::size_t end = json.find('}', start);
  return start == std::string::npos ? "" : json.substr(start, end - start);
}

TEST(QlidOnUsb, ReadsTheSameCardAsOverATty) {
  simulator::TtyReader tty;
  tty.PutCard(simulator::MakeCard("permit"));
  const Outcome serial =
      RunShell(std::string(QLID_PROGRAM) + " read --json --device " + tty.path() + " 2>/dev/null");
  ASSERT_EQ(0, serial.status);
  ASSERT_NE("", CardOf(serial.output));

  const Outcome usb = OnUsb("--card permit", "read --json");

  EXPECT_EQ(0, usb.status);
  EXPECT_EQ(CardOf(serial.output), CardOf(usb.output));
}

TEST(QlidOnUsb, SaysThatThereIsNoCard) {
  EXPECT_EQ(4, OnUsb("--fault no-card", "read --timeout 1").status);
}

TEST(QlidOnUsb, SaysThatThePlugWasPulled) {
  EXPECT_EQ(4, OnUsb("--fault hang-up=700", "read --timeout 2").status);
}

TEST(QlidOnUsb, ShowsTheReaderAndTheDriverThatHoldsIt) {
  const Outcome devices = OnUsb("--driver usbhid", "devices");

  EXPECT_EQ(0, devices.status);
  EXPECT_NE(std::string::npos, devices.output.find("0403:bcd5")) << devices.output;
  EXPECT_NE(std::string::npos, devices.output.find("/dev/bus/usb/001/002")) << devices.output;
  EXPECT_NE(std::string::npos, devices.output.find("usbhid")) << devices.output;
}

}  // namespace
