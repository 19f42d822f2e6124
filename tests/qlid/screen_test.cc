// qlid as a person meets it: typed into a terminal, judged by what stands on the screen. The
// terminal is tmux, which keeps the screen that the program's bytes make.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

#define NEEDS_TMUX() \
  if (!std::filesystem::exists("/usr/bin/tmux")) GTEST_SKIP() << "this machine has no tmux"

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

// A terminal of 100 columns and 40 rows in which a command runs; its exit status is printed behind
// it.
class Screen {
 public:
  explicit Screen(const std::string& command, const std::string& environment = "") {
    setenv("LANG", "C.UTF-8", 1);
    unsetenv("TMUX");
    const std::string script = TemporaryFolder() + "/screen";
    WriteWholeFile(script, "trap : INT\ncd " + TemporaryFolder() + "\nexport LANG=C.UTF-8 " +
                               environment + "\n" + command +
                               "\necho \"exit=$?\"\nwhile :; do sleep 100; done\n");
    Tmux("new-session -d -x 100 -y 40 'exec sh " + script + "'");
  }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  ~Screen() { Tmux("kill-server"); }

  std::string Text() const { return Tmux("capture-pane -p"); }
  std::string Inked() const { return Tmux("capture-pane -p -e"); }
  void Press(const std::string& keys) const { Tmux("send-keys " + keys); }
  void Resize(int columns) const { Tmux("resize-window -x " + std::to_string(columns) + " -y 40"); }

  bool WaitFor(const std::string& text) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::chrono::steady_clock::now() < end) {
      if (Contains(Text(), text)) return true;
      usleep(100'000);
    }
    return false;
  }

 private:
  static std::string Tmux(const std::string& words) {
    return OutputOf("tmux -u -f /dev/null -S " + TemporaryFolder() + "/tmux " + words + " 2>&1");
  }
};

std::string Command(const std::string& arguments) {
  return std::string(QL_EMULATOR) + " " QLID_PROGRAM " " + arguments;
}

}  // namespace

TEST(Terminal, ShowsTheSpecimenWithItsPhotoInColour) {
  NEEDS_TMUX();
  const Screen screen(Command("demo"));

  ASSERT_TRUE(screen.WaitFor("exit=0")) << screen.Text();

  const std::string text = screen.Text();
  EXPECT_TRUE(Contains(text, "999999199001010024")) << text;
  EXPECT_TRUE(Contains(text, "样本甲")) << text;
  EXPECT_TRUE(Contains(text, "specimen.bmp, 102 x 126")) << text;
  EXPECT_TRUE(Contains(text, "Read in ")) << text;
  EXPECT_TRUE(Contains(screen.Inked(), "▀"));
  EXPECT_TRUE(Contains(screen.Inked(), "38;2;")) << "no true colour";
}

// Far from what any bus of the machine itself holds, so that its node is missing.
TEST(Terminal, ShowsTheReadersThatAreConnected) {
  NEEDS_TMUX();
  NEEDS_PRIVATE_ROOT();
  ASSERT_EQ(0, mount("tmpfs", "/sys/bus", "tmpfs", 0, nullptr));
  const std::string reader = "/sys/bus/usb/devices/9-1";
  std::filesystem::create_directories(reader);
  WriteWholeFile(reader + "/idVendor", "2b46\n");
  WriteWholeFile(reader + "/idProduct", "be01\n");
  WriteWholeFile(reader + "/busnum", "9\n");
  WriteWholeFile(reader + "/devnum", "99\n");
  const Screen screen(Command("devices"));

  ASSERT_TRUE(screen.WaitFor("exit=0")) << screen.Text();

  EXPECT_TRUE(Contains(screen.Text(),
                       "USB\n  2b46:be01  bus 9 device 99  /dev/bus/usb/009/099  its node is "
                       "missing\n"))
      << screen.Text();
}

TEST(Terminal, ShowsThatNothingIsConnected) {
  NEEDS_TMUX();
  NEEDS_PRIVATE_ROOT();
  for (const char* folder : {"/sys/bus", "/sys/class"})
    ASSERT_EQ(0, mount("tmpfs", folder, "tmpfs", 0, nullptr)) << folder;
  const Screen screen(Command("devices"));

  ASSERT_TRUE(screen.WaitFor("exit=3")) << screen.Text();

  EXPECT_TRUE(Contains(screen.Text(),
                       "qlid: no reader found (-1)\n"
                       "  USB     none of the 6 known ids among 0 devices (list: qlid devices "
                       "--known)\n"
                       "  Serial  no port\n"))
      << screen.Text();
}

TEST(Terminal, ShowsTheVerdictsOfDoctorInColour) {
  NEEDS_TMUX();
  const Bench bench;
  const Screen screen(Command("doctor --device " + bench.reader.path()));

  ASSERT_TRUE(screen.WaitFor("exit=")) << screen.Text();

  EXPECT_TRUE(Contains(screen.Text(), "a card was found and selected (not read)")) << screen.Text();
  EXPECT_TRUE(Contains(screen.Inked(), "\x1b[32mok")) << screen.Inked();
  EXPECT_TRUE(Contains(screen.Inked(), "\x1b[1mReader")) << screen.Inked();
}

TEST(Terminal, StaysPlainWhereNoColourIsWanted) {
  NEEDS_TMUX();
  const Screen screen(Command("doctor"), "NO_COLOR=1");
  ASSERT_TRUE(screen.WaitFor("exit=")) << screen.Text();

  EXPECT_FALSE(Contains(screen.Inked(), "\x1b[")) << screen.Inked();
}

TEST(Terminal, CountsDownInPlaceAndClearsTheLine) {
  NEEDS_TMUX();
  simulator::TtyReader reader;
  const Screen screen(Command("read --timeout 20 --device " + reader.path()));

  ASSERT_TRUE(screen.WaitFor("Put the card on the reader: 19 s")) << screen.Text();
  ASSERT_TRUE(screen.WaitFor("Put the card on the reader: 17 s")) << screen.Text();
  EXPECT_EQ(1, Count(screen.Text(), "Put the card")) << screen.Text();

  reader.PutCard(simulator::MakeCard("resident"));
  ASSERT_TRUE(screen.WaitFor("exit=0")) << screen.Text();
  EXPECT_EQ(0, Count(screen.Text(), "Put the card")) << screen.Text();
  EXPECT_TRUE(Contains(screen.Text(), "样本甲")) << screen.Text();
}

TEST(Terminal, ANarrowTerminalIsNotFilledWithCountdowns) {
  NEEDS_TMUX();
  simulator::TtyReader reader;
  const Screen screen(Command("read --timeout 60 --device " + reader.path()));
  ASSERT_TRUE(screen.WaitFor("Put the card on the reader: 58 s")) << screen.Text();

  screen.Resize(20);
  const bool counted = screen.WaitFor("Put the card on the") && (sleep(4), true);

  EXPECT_TRUE(counted) << screen.Text();
  // The terminal itself breaks the line that stood there.
  EXPECT_LE(Count(screen.Text(), "Put the card"), 2) << screen.Text();
  screen.Resize(80);
  EXPECT_TRUE(screen.WaitFor("Put the card on the reader: ")) << screen.Text();
}

TEST(Terminal, AnInterruptCancelsTheRead) {
  NEEDS_TMUX();
  simulator::TtyReader reader;
  const Screen screen(Command("read --timeout 60 --device " + reader.path()));
  ASSERT_TRUE(screen.WaitFor("Put the card")) << screen.Text();

  screen.Press("C-c");

  ASSERT_TRUE(screen.WaitFor("exit=130")) << screen.Text();
  EXPECT_TRUE(Contains(screen.Text(), "Ctrl-C again to leave at once")) << screen.Text();
  EXPECT_TRUE(Contains(screen.Text(), "qlid: cancelled (-9)")) << screen.Text();
}

#ifdef WITH_USB_READER
TEST(Terminal, ASecondInterruptLeavesAtOnce) {
  NEEDS_TMUX();
  // A USB read cannot be broken off: it ends when its answer does not come.
  const Screen screen(std::string(WITH_USB_READER) + " --fault silent " QLID_PROGRAM
                                                     " read --timeout 60");
  ASSERT_TRUE(screen.WaitFor("Put the card")) << screen.Text();

  screen.Press("C-c");
  ASSERT_TRUE(screen.WaitFor("cancelling")) << screen.Text();
  screen.Press("C-c");

  ASSERT_TRUE(screen.WaitFor("exit=130")) << screen.Text();
  EXPECT_FALSE(Contains(screen.Text(), "cancelled (-9)")) << screen.Text();  // The end of the read.
}
#endif

TEST(Terminal, APipeGetsPlainDataAlone) {
  NEEDS_TMUX();
  const Bench bench;
  const Screen screen(Command("read --json --device " + bench.reader.path()) +
                      " 2>err | cat -v >out; cat -v out err");

  ASSERT_TRUE(screen.WaitFor("exit=0")) << screen.Text();

  EXPECT_TRUE(Contains(screen.Text(), "999999199001010024")) << screen.Text();
  EXPECT_FALSE(Contains(screen.Text(), "^[")) << screen.Text();
  EXPECT_FALSE(Contains(screen.Text(), "Put the card")) << screen.Text();
}

TEST(Terminal, SpeaksChineseInChinese) {
  NEEDS_TMUX();
  simulator::TtyReader reader;
  const Screen screen(Command("--lang zh read --timeout 30 --device " + reader.path()));

  EXPECT_TRUE(screen.WaitFor("请将卡片放在读卡器上：")) << screen.Text();
}
