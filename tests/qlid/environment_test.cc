// What the environment changes: QLID_DEVICE, QLID_BAUD, QLID_TIMEOUT, NO_COLOR; and that a pipe
// sees data alone.
#include <gtest/gtest.h>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

TEST(QlidEnvironment, NamesDeviceAndSpeed) {
  const Bench bench;
  const std::string file = TemporaryFolder() + "/line";

  const Output read = RunQlid({"read", "--record", file},
                              {"QLID_DEVICE=" + bench.reader.path(), "QLID_BAUD=19200"});

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(ReadWholeFile(file), " speed 19200\n"));
}

TEST(QlidEnvironment, YieldsToOptions) {
  const Bench bench;
  const std::string file = TemporaryFolder() + "/line";

  const Output read = RunQlid(bench.Read({"--baud", "38400", "--record", file}),
                              {"QLID_DEVICE=/dev/quillonid-none", "QLID_BAUD=300"});

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(ReadWholeFile(file), " speed 38400\n"));
}

TEST(QlidEnvironment, LimitsTheRead) {
  simulator::TtyReader empty;

  const Output limited = RunQlid({"read", "--device", empty.path()}, {"QLID_TIMEOUT=1"});

  EXPECT_EQ(4, limited.exit);
  EXPECT_TRUE(Contains(limited.err, "no card within 1 s")) << limited.err;
}

TEST(QlidEnvironment, IsRefusedWhereItMakesNoSense) {
  const Bench bench;

  const Output timeout = RunQlid(bench.Read(), {"QLID_TIMEOUT=0"});
  const Output baud = RunQlid(bench.Read(), {"QLID_BAUD=14400"});

  EXPECT_EQ(2, timeout.exit) << timeout.err;
  EXPECT_EQ(2, baud.exit) << baud.err;
}

TEST(QlidEnvironment, SwitchesColourOff) {
  const std::vector<std::string> wrong = Qlid({"read", "--device", "COM1"});
  Program coloured(wrong, {}, true);
  Program plain(wrong, {"NO_COLOR=1"}, true);
  Program dumb(wrong, {"TERM=dumb"}, true);

  EXPECT_TRUE(Contains(coloured.Finish().err, "\x1b[31m"));
  EXPECT_FALSE(Contains(plain.Finish().err, "\x1b["));
  EXPECT_FALSE(Contains(dumb.Finish().err, "\x1b["));
}

TEST(QlidEnvironment, SeesDataAloneInAPipe) {
  const Bench bench;

  const Output read = RunQlid(bench.Read());
  const Output programs = RunQlid(bench.Read({"--json"}));

  EXPECT_EQ("", read.err);
  EXPECT_EQ("", programs.err);
  EXPECT_FALSE(Contains(read.out, "\x1b")) << read.out;
  EXPECT_FALSE(Contains(read.out, "\r")) << read.out;
}

TEST(QlidFiles, AreWrittenWholeOrNotAtAll) {
  const Bench bench;
  const std::string file = TemporaryFolder() + "/card.bin";
  WriteWholeFile(file, "what stood there before");

  const Output failed = RunQlid(bench.Read({"--native", "/quillonid-none/card.bin"}));
  const Output read = RunQlid(bench.Read({"--native", file}));

  EXPECT_EQ(8, failed.exit);
  EXPECT_TRUE(Contains(failed.out, bench.card.person.text.at("cardId"))) << failed.out;
  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_EQ(1295U, ReadWholeFile(file).size());
  EXPECT_EQ(0600, Mode(file));
}
