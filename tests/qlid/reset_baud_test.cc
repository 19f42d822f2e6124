// qlid reset-baud: a reader that was left at a raised speed.
#include <gtest/gtest.h>

#include <span>

#include "tests/qlid/bench.h"

namespace {

// A reader at 115200 bit/s to which other speeds are noise, with a card. It is brought there as a
// program does it: by the speed command, sent at its own speed.
struct RaisedBench : Bench {
  RaisedBench() {
    simulator::CardModule& module = reader.module();
    module.SetSpeedMatters(true);
    module.Receive(std::span<const std::uint8_t>(kRaise), 9600);
    EXPECT_EQ(115200, module.Speed());
  }
  static constexpr std::uint8_t kRaise[] = {0x1B, '%', 'S', '1'};
};

std::vector<std::string> Reset(const Bench& bench, std::vector<std::string> more = {}) {
  std::vector<std::string> arguments = {"reset-baud", "--device", bench.reader.path()};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

}  // namespace

TEST(QlidResetBaud, MakesAReaderReachableThatWasLeftAtARaisedSpeed) {
  RaisedBench bench;
  const std::vector<std::string> plain = {"--baud", "9600", "--timeout", "1"};
  const Output before = RunQlid(bench.Read(plain));

  const Output reset = RunQlid(Reset(bench));

  EXPECT_EQ(4, before.exit);
  EXPECT_TRUE(Contains(before.err, "did not answer")) << before.err;
  EXPECT_EQ(0, reset.exit) << reset.err;
  EXPECT_EQ(bench.reader.path() + "  9600 bit/s  the reader answers\n", reset.out);
  EXPECT_EQ(9600, bench.reader.module().Speed());
  EXPECT_EQ(0, RunQlid(bench.Read(plain)).exit);
}

TEST(QlidResetBaud, LeavesAReaderReachableThatIsAtItsOwnSpeed) {
  Bench bench;
  bench.reader.module().SetSpeedMatters(true);

  EXPECT_EQ(0, RunQlid(Reset(bench, {"--baud", "115200"})).exit);
  EXPECT_EQ(9600, bench.reader.module().Speed());
}

TEST(QlidResetBaud, SaysThatTheReaderStaysSilent) {
  Bench bench;
  bench.reader.SetFault({simulator::FaultId::kSilent, 0});

  const Output reset = RunQlid(Reset(bench, {"--baud", "38400"}));

  EXPECT_EQ(4, reset.exit);
  EXPECT_EQ("", reset.out);
  EXPECT_TRUE(Contains(reset.err, "qlid: the reader does not answer at 9600 bit/s\n")) << reset.err;
  EXPECT_TRUE(Contains(reset.err, "--baud 19200")) << reset.err;
}

TEST(QlidResetBaud, RefusesWhatHasNoSpeedOrNotThisOne) {
  const Output usb = RunQlid({"reset-baud"});
  const Output speed = RunQlid({"reset-baud", "--device", "/dev/ttyS0", "--baud", "14400"});
  const Output missing = RunQlid({"reset-baud", "--device", "/dev/quillonid-none"});

  EXPECT_EQ(2, usb.exit);
  EXPECT_TRUE(Contains(usb.err, "a USB reader has no line speed")) << usb.err;
  EXPECT_EQ(2, speed.exit);
  EXPECT_TRUE(Contains(speed.err, "14400")) << speed.err;
  EXPECT_EQ(3, missing.exit);
  EXPECT_TRUE(Contains(missing.err, "there is no /dev/quillonid-none")) << missing.err;
}

TEST(QlidResetBaud, SpeaksChinese) {
  const Bench bench;

  const Output reset = RunQlid(Reset(bench, {"--lang", "zh"}));

  EXPECT_TRUE(Contains(reset.out, "读卡器有应答")) << reset.out << reset.err;
}
