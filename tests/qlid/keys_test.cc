// The keys of qlid simulate, struck on a terminal.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

// qlid simulate on a terminal of its own.
struct Desk {
  Desk()
      : link(TemporaryFolder() + "/reader"),
        simulate(Qlid({"simulate", "--link", link}), {}, true, true) {
    if (simulate.WaitFor("q quit")) path = std::filesystem::read_symlink(link);
  }
  Output Read() const { return RunQlid({"read", "--device", path, "--timeout", "1"}); }
  std::string Name(const char* id) const { return simulator::FindSpecimen(id)->text.at("name"); }

  // Whether the terminal is as it was before the program started: as every new one is.
  bool Restored() const {
    const int fresh = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios before = {};
    tcgetattr(fresh, &before);
    close(fresh);
    termios now = {};
    tcgetattr(simulate.terminal(), &now);
    return now.c_iflag == before.c_iflag && now.c_oflag == before.c_oflag &&
           now.c_cflag == before.c_cflag && now.c_lflag == before.c_lflag &&
           std::memcmp(now.c_cc, before.c_cc, sizeof now.c_cc) == 0;
  }

  std::string link;
  Program simulate;
  std::string path;
};

}  // namespace

TEST(QlidKeys, TakeTheCardAwayAndPutItBack) {
  Desk desk;
  ASSERT_NE("", desk.path);

  desk.simulate.Type("r");
  ASSERT_TRUE(desk.simulate.WaitFor("Card taken away")) << desk.simulate.err();
  const Output without = desk.Read();
  desk.simulate.Type("p");
  ASSERT_TRUE(desk.simulate.WaitFor("Card taken away\r\nCard: ")) << desk.simulate.err();
  const Output with = desk.Read();

  EXPECT_EQ(4, without.exit);
  EXPECT_EQ(0, with.exit) << with.err;
  EXPECT_TRUE(Contains(with.out, desk.Name("resident"))) << with.out;
}

TEST(QlidKeys, PutAnotherCard) {
  Desk desk;
  ASSERT_NE("", desk.path);

  for (const char* id : {"resident", "foreigner", "permit"}) {
    const char key = id[0] == 'r' ? '1' : id[0] == 'f' ? '2' : '3';
    desk.simulate.Type(std::string(1, key));
    ASSERT_TRUE(desk.simulate.WaitFor("Card: " + simulator::FindSpecimen(id)->about + "\r\n"))
        << desk.simulate.err();

    EXPECT_TRUE(Contains(desk.Read().out, desk.Name(id))) << id;
  }
}

TEST(QlidKeys, GoThroughTheFaultsAndBackToNone) {
  Desk desk;
  ASSERT_NE("", desk.path);

  for (const simulator::FaultRow& row : simulator::FaultTable()) {
    if (row.id == simulator::FaultId::kHangUp) continue;
    desk.simulate.Type("f");
    const std::string told = "Fault: " + simulator::FaultText({row.id, row.value}) + ",";
    ASSERT_TRUE(desk.simulate.WaitFor(told)) << told;
    if (row.id == simulator::FaultId::kNoCard) {
      EXPECT_EQ(4, desk.Read().exit);
    }
  }
  desk.simulate.Type("f");
  EXPECT_TRUE(desk.simulate.WaitFor("Fault: none")) << desk.simulate.err();
  EXPECT_EQ(0, desk.Read().exit);
}

TEST(QlidKeys, AreNotEchoed) {
  Desk desk;
  ASSERT_NE("", desk.path);

  desk.simulate.Type("xyz1");

  ASSERT_TRUE(desk.simulate.WaitFor("\r\nCard: ")) << desk.simulate.err();
  EXPECT_FALSE(Contains(desk.simulate.err(), "xyz")) << desk.simulate.err();
}

TEST(QlidKeys, LeaveTheTerminalAsItWas) {
  const char* const kEnds[] = {"q", "\x03", "SIGTERM", "SIGINT", "SIGHUP"};
  for (const char* end : kEnds) {
    Desk desk;
    ASSERT_NE("", desk.path) << end;
    ASSERT_FALSE(desk.Restored()) << end;

    if (std::strlen(end) == 1) {
      desk.simulate.Type(end);
    } else {
      desk.simulate.Signal(end[3] == 'T' ? SIGTERM : end[3] == 'I' ? SIGINT : SIGHUP);
    }
    const Output output = desk.simulate.Finish();

    EXPECT_EQ(0, output.exit) << end;
    EXPECT_TRUE(desk.Restored()) << end;
    EXPECT_FALSE(std::filesystem::is_symlink(desk.link)) << end;
  }
}

TEST(QlidKeys, AreNotTakenFromAPipe) {
  Program simulate(Qlid({"simulate"}));
  ASSERT_TRUE(simulate.WaitFor("Ctrl-C ends it.")) << simulate.err();

  simulate.Type("q");
  simulate.Signal(SIGINT);
  const Output output = simulate.Finish();

  EXPECT_EQ(0, output.exit);
  EXPECT_FALSE(Contains(output.err, "q quit")) << output.err;
}
