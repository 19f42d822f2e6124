// Ctrl-C and SIGTERM: every command that waits ends at once.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

constexpr auto kAtOnce = std::chrono::seconds(10);  // far below what the commands wait for

bool WaitUntilEmpty(int pipe) {
  for (int i = 0; i < 2000; ++i) {
    int waiting = 0;
    ioctl(pipe, FIONREAD, &waiting);
    if (waiting == 0) return true;
    usleep(10'000);
  }
  return false;
}

// A pipe with a name that holds one byte until somebody reads, and has no end.
class EndlessFile {
 public:
  EndlessFile() : path(TemporaryFolder() + "/endless") {
    unlink(path.c_str());
    if (mkfifo(path.c_str(), 0600) != 0) abort();
    fd_ = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (write(fd_, "A", 1) != 1) abort();
  }
  EndlessFile(const EndlessFile&) = delete;
  EndlessFile& operator=(const EndlessFile&) = delete;
  ~EndlessFile() { close(fd_); }

  bool WaitUntilRead() const { return WaitUntilEmpty(fd_); }

  const std::string path;

 private:
  int fd_ = -1;
};

// Waits until the device check has come, with which a reader is asked whether it is there.
bool WaitForDeviceCheck(const simulator::TtyReader& reader) {
  for (int i = 0; i < 2000; ++i) {
    const auto requests = reader.Requests();
    if (std::any_of(requests.begin(), requests.end(), [](const simulator::Request& request) {
          return request.kind == simulator::RequestKind::kDeviceCheck;
        }))
      return true;
    usleep(10'000);
  }
  return false;
}

// Waits until the process no longer has the file open.
bool WaitUntilClosed(pid_t pid, const std::string& path) {
  const std::string descriptors = "/proc/" + std::to_string(pid) + "/fd";
  for (int i = 0; i < 2000; ++i) {
    bool open = false;
    std::error_code gone;
    for (const auto& entry : std::filesystem::directory_iterator(descriptors, gone)) {
      std::error_code closed;
      open = open || std::filesystem::read_symlink(entry.path(), closed) == path;
    }
    if (!open) return true;
    usleep(10'000);
  }
  return false;
}

void ExpectTheEnd(Program* program, int signal, const std::string& what) {
  const auto start = std::chrono::steady_clock::now();

  program->Signal(signal);
  const Output output = program->Finish();

  EXPECT_EQ(128 + signal, output.exit) << what << output.err;
  EXPECT_LT(std::chrono::steady_clock::now() - start, kAtOnce) << what;
}

}  // namespace

TEST(QlidSignals, EndACommandThatReadsAFile) {
  for (const int signal : {SIGINT, SIGTERM}) {
    for (std::vector<std::string> command : {
             std::vector<std::string>{"decode"   },
             {          "decode", "--packet"},
             {          "log"          },
             { "simulate",           "--replay"}
    }) {
      const EndlessFile file;
      command.push_back(file.path);
      Program program(Qlid(command));
      ASSERT_TRUE(file.WaitUntilRead()) << command.front();

      ExpectTheEnd(&program, signal, command.front());
    }
  }
}

TEST(QlidSignals, EndACommandThatReadsStandardInput) {
  for (const int signal : {SIGINT, SIGTERM}) {
    for (const std::string command : {"decode", "log"}) {
      Program program(Qlid({command, "-"}));
      program.Type("A");
      ASSERT_TRUE(WaitUntilEmpty(program.terminal())) << command;

      ExpectTheEnd(&program, signal, command);
    }
  }
}

TEST(QlidSignals, EndACommandThatAsksASilentReader) {
  for (const int signal : {SIGINT, SIGTERM}) {
    for (std::vector<std::string> command : {
             std::vector<std::string>{"doctor",  "--device"},
             {"devices", "--probe" }
    }) {
      simulator::TtyReader silent;
      silent.SetFault({simulator::FaultId::kSilent, 0});
      command.push_back(silent.path());
      Program program(Qlid(command));
      ASSERT_TRUE(WaitForDeviceCheck(silent)) << command.front();

      ExpectTheEnd(&program, signal, command.front());
    }
  }
}

// The limit of the read is over, and the reader is asked once more whether it is there.
TEST(QlidSignals, EndAReadThatLooksForTheCause) {
  for (const int signal : {SIGINT, SIGTERM}) {
    simulator::TtyReader silent;
    silent.SetFault({simulator::FaultId::kSilent, 0});
    Program program(Qlid({"read", "--timeout", "1", "--device", silent.path()}));
    ASSERT_TRUE(WaitForDeviceCheck(silent));

    ExpectTheEnd(&program, signal, "read");
  }
}

TEST(QlidSignals, EndAReadWhoseOutputNobodyTakes) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const Bench bench;
    const std::string file = TemporaryFolder() + "/nobody";
    unlink(file.c_str());
    ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
    Program program(Qlid(bench.Read({"--native", file})));
    ASSERT_TRUE(bench.reader.WaitForRequests(3, 20'000));
    ASSERT_TRUE(WaitUntilClosed(program.pid(), bench.reader.path()));
    sleep(1);  // It has the answer, and waits for somebody who opens the pipe.

    ExpectTheEnd(&program, signal, "read");
  }
}

TEST(QlidSignals, CancelAReadInOrder) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const simulator::TtyReader empty;
    Program program(Qlid({"read", "--timeout", "60", "--device", empty.path()}));
    ASSERT_TRUE(empty.WaitForRequests(1, 20'000));

    program.Signal(signal);
    const Output output = program.Finish();

    EXPECT_EQ(130, output.exit);
    EXPECT_TRUE(Contains(output.err, "qlid: cancelled (-9)")) << output.err;
  }
}
