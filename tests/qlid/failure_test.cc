// qlid read when it fails: what happened, where, and what to do next.
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>

#include "tests/qlid/bench.h"
#include "tests/qlid/rival.h"
#include "tests/testing/private_root.h"

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
