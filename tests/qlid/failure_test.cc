// qlid read when it fails: what happened, where, and what to do next.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

constexpr char kRivalName[] = "frontdesk";

// Another program that has a port open for itself.
class Rival {
 public:
  explicit Rival(const std::string& port) {
    int ready[2];
    if (pipe(ready) != 0) abort();
    pid_ = fork();
    if (pid_ == 0) {
      prctl(PR_SET_NAME, kRivalName);
      const int out = dup2(ready[1], STDOUT_FILENO);
      close_range(3, ~0U, 0);  // Not the far end, which the test holds.
      const int fd = open(port.c_str(), O_RDWR | O_NOCTTY);
      ioctl(fd, TIOCEXCL);
      if (write(out, "x", 1) != 1) _exit(1);
      for (;;) pause();
    }
    char byte = 0;
    if (read(ready[0], &byte, 1) != 1) abort();
    close(ready[0]);
    close(ready[1]);
  }
  Rival(const Rival&) = delete;
  Rival& operator=(const Rival&) = delete;
  ~Rival() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  std::string Named() const {
    return std::string(kRivalName) + " (pid " + std::to_string(pid_) + ")";
  }

 private:
  pid_t pid_;
};

}  // namespace

TEST(QlidFailure, NamesTheProgramThatHoldsTheReader) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;
  const Rival rival(bench.reader.path());

  const Output read = RunQlid(bench.Read());

  EXPECT_EQ(3, read.exit);
  EXPECT_TRUE(Contains(read.err, "the reader is in use by another program (-1)")) << read.err;
  EXPECT_TRUE(Contains(read.err, "Held by  " + rival.Named())) << read.err;
}

TEST(QlidFailure, SaysSinceWhenTheReaderIsGone) {
  Bench bench;
  bench.reader.SetFault({simulator::FaultId::kHangUp, 700});

  const Output read = RunQlid(bench.Read({"--timeout", "20"}));

  EXPECT_EQ(3, read.exit);
  EXPECT_TRUE(Contains(read.err, "unplugged while it was being read (-5)")) << read.err;
  EXPECT_TRUE(Contains(read.err, bench.reader.path() + " is gone since ")) << read.err;
  EXPECT_TRUE(Contains(read.err, "qlid read --watch")) << read.err;
}

TEST(QlidFailure, ExplainsAMissingPermissionWithCommandsToType) {
  const Bench bench;
  prctl(PR_CAPBSET_DROP, 1 /* CAP_DAC_OVERRIDE */);
  chmod(bench.reader.path().c_str(), 0);

  const Output read = RunQlid(bench.Read());
  if (read.exit == 0) GTEST_SKIP() << "this user may open whatever it wants to";

  EXPECT_EQ(3, read.exit);
  EXPECT_TRUE(Contains(read.err, "no permission to open the reader (-1)")) << read.err;
  EXPECT_TRUE(Contains(read.err, "mode 0000; your groups: ")) << read.err;
  EXPECT_TRUE(Contains(read.err, "usermod -aG") || Contains(read.err, "log out and in again"))
      << read.err;
}

TEST(QlidFailure, SaysThatAFileIsNoPort) {
  const Output read = RunQlid({"read", "--device", "/dev/null"});

  EXPECT_EQ(3, read.exit);
  EXPECT_TRUE(Contains(read.err, "/dev/null cannot be opened as a serial port (-1)")) << read.err;
  EXPECT_FALSE(Contains(read.err, "may not write")) << read.err;
}
