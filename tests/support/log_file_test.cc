// The log's switch and file: looked at on every call, and unable to hurt the process.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/still_log.h"
#include "tests/testing/held.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/pty.h"
#include "tests/testing/signals.h"
#include "tests/testing/stand_in_clock.h"

namespace {

namespace fs = std::filesystem;

const std::string kFolder = "/home/quillon/";

void Configure(const std::string& text) { WriteWholeFile(kConfigurationFile, text); }

// As a dump shows it.
std::string Digits(const std::string& data) {
  const std::string apart = HexText(data);
  std::string digits;
  for (const char c : apart) {
    if (c != ' ') digits += c;
  }
  return digits;
}

// Lets the log's name lead to a terminal that passes every byte as it is.
void LogToTerminal(const Pty& terminal) {
  termios settings = terminal.Settings();
  cfmakeraw(&settings);
  terminal.SetSettings(settings);
  StartLog();
  fs::create_symlink(terminal.path(), kLogFile);
}

}  // namespace

TEST(IsWriteLog, FollowsTheConfiguration) {
  NEEDS_PRIVATE_ROOT();
  struct {
    const char* text;
    int expected;
  } const cases[] = {
      {"[QuillonLog]\nLogFlag=1\n",                          1 },
      {"[QuillonLog]\nLogFlag=2\n",                          2 },
      {"[QuillonLog]\nLogFlag=-1\n",                         -1},
      {"[QuillonLog]\nLogFlag = 1\n",                        1 },
      {"[QuillonLog]\r\nLogFlag=1\r\n",                      1 },
      {"[QuillonLog]\nLogFlag=4294967296\n",                 1 },
      {"[QuillonLog]\nLogFlag=0\n",                          0 },
      {"[QuillonLog]\nLogFlag=on\n",                         0 },
      {"[QuillonLog]\nLogFlag=\n",                           0 },
      {"[QuillonLog]\nLogFlag=\n1\n",                        0 },
      {"[QuillonLog]\nLogFlag=1",                            0 },
      {"LogFlag=1\n[QuillonLog]\n",                          0 },
      {"[Other]\nLogFlag=1\n[QuillonLog]\n",                 0 },
      {"[QuillonLog]\n[Other]\nLogFlag=1\n",                 1 },
      {"[QuillonLog]\n#LogFlag=1\n",                         0 },
      {"[QuillonLog]\n//LogFlag=1\n",                        0 },
      {"[QuillonLog]\n#LogFlag=0\n//LogFlag=0\nLogFlag=1\n", 1 },
      {"[QuillonLog]\nMyLogFlags=1\n",                       1 },
      {"[quillonlog]\nLogFlag=1\n",                          0 },
      {"",                                                   0 },
  };
  for (const auto& each : cases) {
    StartLog();
    Configure(each.text);

    EXPECT_EQ(each.expected, isWriteLog()) << each.text;
    LogEverything();
    EXPECT_EQ(each.expected != 0, FileExists(kLogFile)) << each.text;
  }
}

TEST(IsWriteLog, LooksOnEveryCall) {
  NEEDS_PRIVATE_ROOT();
  HoldStamp();
  for (int round = 0; round < 3; ++round) {
    SwitchLogging(false);
    EXPECT_EQ(0, isWriteLog());
    EXPECT_EQ(0, isWriteLog());
    Configure("[QuillonLog]\nLogFlag=1\n");
    EXPECT_EQ(1, isWriteLog());
    EXPECT_EQ(1, isWriteLog());
    Configure("[QuillonLog]\nLogFlag=0\n");
    EXPECT_EQ(0, isWriteLog());
    Configure("[QuillonLog]\nLogFlag=3\n");
    EXPECT_EQ(3, isWriteLog());
  }
}

TEST(IsWriteLog, IsOffWithoutTheFolderAndNeverMakesIt) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  fs::remove_all("/home/quillon");

  EXPECT_EQ(0, isWriteLog());
  LogEverything();
  EXPECT_EQ(0, isWriteLog());

  EXPECT_FALSE(FileExists("/home/quillon"));
}

TEST(IsWriteLog, IsOffForWhatIsNoFile) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  fs::remove(kConfigurationFile);
  ASSERT_EQ(0, mkfifo(kConfigurationFile, 0600));
  EXPECT_EQ(0, isWriteLog());

  for (const char* target :
       {"/dev/zero", "/dev/null", "/tmp", kConfigurationFile, "/nonexistent"}) {
    fs::remove(kConfigurationFile);
    fs::create_symlink(target, kConfigurationFile);

    EXPECT_EQ(0, isWriteLog()) << target;
    EXPECT_EQ(0, isWriteLog()) << target;
  }
}

TEST(Logging, SkipsAPipeOfTheLogFilesName) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  ASSERT_EQ(0, mkfifo(kLogFile, 0600));
  LogEverything();  // Nobody reads it: must not block.

  const int reader = open(kLogFile, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(reader, 0);
  LogEverything();

  char byte = 0;
  EXPECT_EQ(0, read(reader, &byte, 1));
  close(reader);
}

TEST(Logging, WritesToATerminalOfTheLogFilesName) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  LogToTerminal(terminal);
  const std::string expected = Line(" ", "one") + Line(" ", "two");

  DPrintLogToFile("one");
  DPrintLogToFile("two");

  EXPECT_EQ(expected, terminal.Receive(expected.size()));
}

TEST(Logging, WaitsForATerminalThatIsSlowerThanTheLine) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  LogToTerminal(terminal);
  const std::string data(200'000, '\xA5');  // More than the system keeps for a terminal.
  const std::string expected =
      Line(" ", "LEN=" + std::to_string(data.size()) + "   HEX: " + Digits(data));
  std::future<std::string> received =
      std::async(std::launch::async, [&] { return terminal.Receive(expected.size()); });

  DPrintDataHexToFile(nullptr, data.data(), static_cast<int>(data.size()));

  EXPECT_TRUE(received.get() == expected);
}

TEST(Logging, WaitsForASlowTerminalSignalsOrNot) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  LogToTerminal(terminal);
  const std::string data(10'000, '\xA5');
  const std::string expected = Line(" ", "LEN=10000   HEX: " + Digits(data));
  BlockSignals();
  std::future<std::string> received = std::async(std::launch::async, [&] {
    std::string all;
    for (std::string piece = "?"; !piece.empty() && all.size() < expected.size(); all += piece) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      piece = terminal.Receive(std::min<std::size_t>(400, expected.size() - all.size()));
    }
    return all;
  });
  UnblockSignals();
  {
    const Signals signals;

    DPrintDataHexToFile(nullptr, data.data(), static_cast<int>(data.size()));
  }

  EXPECT_EQ(expected, received.get());
}

TEST(Logging, GivesUpATerminalThatTakesNothing) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  LogToTerminal(terminal);
  const std::string data(200'000, '\xA5');
  const auto start = std::chrono::steady_clock::now();

  DPrintDataHexToFile(nullptr, data.data(), static_cast<int>(data.size()));

  EXPECT_GT(std::chrono::seconds(20), std::chrono::steady_clock::now() - start);
}

TEST(Logging, WaitsForATerminalThatTakesNothingOnlyOnce) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  LogToTerminal(terminal);
  const std::string data(200'000, '\xA5');
  DPrintDataHexToFile(nullptr, data.data(), static_cast<int>(data.size()));
  const auto start = std::chrono::steady_clock::now();

  for (int line = 0; line < 100; ++line) DPrintLogToFile("one");

  EXPECT_GT(std::chrono::seconds(20), std::chrono::steady_clock::now() - start);
}

// Ten seconds of the library are half a second here; the whole line would take a hundred of them.
TEST(Logging, GivesALineToATerminalTenSeconds) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  LogToTerminal(terminal);
  stand_in_clock::SetSpeed(20);
  std::atomic<bool> done = false;
  std::size_t received = 0;
  std::thread reader([&] {
    while (!done) {
      received += terminal.Receive(4096).size();
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  });
  const std::string data(1'000'000, '\xA5');

  DPrintDataHexToFile(nullptr, data.data(), static_cast<int>(data.size()));

  done = true;
  reader.join();
  EXPECT_LT(0u, received);
  EXPECT_GT(data.size(), received);
}

TEST(Logging, WaitsAgainForATerminalThatTookALine) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  LogToTerminal(terminal);
  const std::string data(200'000, '\xA5');
  DPrintDataHexToFile(nullptr, data.data(), static_cast<int>(data.size()));
  tcflush(terminal.master(), TCIFLUSH);
  const std::string one = Line(" ", "one");
  DPrintLogToFile("one");
  ASSERT_EQ(one, terminal.Receive(one.size()));
  const std::string title(200'000, 'x');  // more than the system keeps for a terminal
  const std::string expected = Line(" ", title + "  LEN=0   HEX: ");
  std::future<std::string> received = std::async(std::launch::async, [&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return terminal.Receive(expected.size());
  });

  DPrintDataHexToFile(title.c_str(), nullptr, 0);

  EXPECT_TRUE(received.get() == expected);
}

TEST(Logging, IsSilentWhereItCannotWrite) {
  NEEDS_PRIVATE_ROOT();
  StartLog();

  SetLogPath("absent/own.log");
  LogEverything();
  EXPECT_FALSE(FileExists(kFolder + "absent"));

  fs::create_directory(kFolder + "folder.log");
  SetLogPath("folder.log");
  LogEverything();

  SetLogPath("../../dev/full");
  LogEverything();
  EXPECT_FALSE(FileExists(kLogFile));
}

TEST(Logging, StaysWithinTheFileSizeLimit) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  DPrintLogToFile("one");
  const std::string before = Log();
  const rlimit limit = {before.size() + 5, RLIM_INFINITY};
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));

  LogEverything();  // A signal would end the test here.

  EXPECT_EQ(before, Log());
  const rlimit more = {before.size() * 2, RLIM_INFINITY};
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &more));
  DPrintLogToFile("two");
  EXPECT_EQ(before + Line(" ", "two"), Log());

  const rlimit none = {RLIM_INFINITY, RLIM_INFINITY};  // for what counts coverage at the end
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &none));
}

TEST(Logging, LeavesErrnoAlone) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  for (const char* name : {"", "absent/own.log"}) {
    SetLogPath(name);
    errno = E2BIG;
    LogEverything();
    EXPECT_EQ(E2BIG, errno);
  }

  SwitchLogging(false);
  errno = E2BIG;
  LogEverything();
  EXPECT_EQ(E2BIG, errno);
  EXPECT_EQ(0, isWriteLog());
  EXPECT_EQ(E2BIG, errno);
}

TEST(Logging, LeavesNoDescriptorOpen) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  const std::ptrdiff_t before = OpenDescriptors();

  for (const char* target : {"/tmp", "/dev/zero", "/nonexistent"}) {
    LogEverything();
    SetLogPath("absent/own.log");
    LogEverything();
    fs::remove(kConfigurationFile);
    fs::create_symlink(target, kConfigurationFile);
    LogEverything();
    fs::remove(kConfigurationFile);
    StartLog();
  }

  EXPECT_EQ(before, OpenDescriptors());
}

TEST(Logging, KeepsLinesOfSeveralThreadsWhole) {
  NEEDS_PRIVATE_ROOT();
  StartLog();
  constexpr int kThreads = 4;
  constexpr int kRounds = 50;
  const std::string text(3000, 'x');
  const std::string versions[] = {std::string(100, 'a'), std::string(90, 'b')};
  QL_DebugSetVersion(versions[0].c_str());

  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < kRounds; ++round) {
        DPrintLogToFileAddType(0, 6, "%s", text.c_str());
        QL_DebugSetVersion(versions[(i + round) % 2].c_str());
        SetLogPath("");
        DPritLogSetFileName("name");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();

  const std::string rest = std::string(" ") + kStamp + "  INFO:    BusiId:  " + text;
  int lines = 0;
  for (const std::string& line : LogLines()) {
    EXPECT_TRUE(line == " " + versions[0] + rest || line == " " + versions[1] + rest) << line;
    ++lines;
  }
  EXPECT_EQ(kThreads * kRounds, lines);
}
