// The specimen's photo on terminals of more and less ability.
#include <gtest/gtest.h>
#include <termios.h>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

constexpr char kQuestion[] = "\x1b[c";
constexpr char kSixelStart[] = "\x1bP";
constexpr char kHalfBlock[] = "\u2580";

// qlid demo on a terminal that gives this answer to the question what it is.
std::string DemoOn(const std::string& answer) {
  Program demo(Qlid({"demo", "--photo", TemporaryFolder() + "/p.bmp"}), {}, true, true);
  if (!demo.WaitFor(kQuestion)) return demo.Finish().err;
  demo.Type(answer);
  const Output output = demo.Finish();
  EXPECT_EQ(0, output.exit) << output.err;
  termios settings = {};
  EXPECT_EQ(0, tcgetattr(demo.terminal(), &settings));
  EXPECT_NE(0U, settings.c_lflag & ECHO);
  EXPECT_NE(0U, settings.c_lflag & ICANON);
  return output.err;
}

#ifdef QLID_SIXEL
#define NEEDS_SIXEL() static_assert(true)
#else
#define NEEDS_SIXEL() GTEST_SKIP() << "built without the sixel library"
#endif

}  // namespace

TEST(QlidPhoto, IsDrawnInPixelsWhereTheTerminalCan) {
  NEEDS_SIXEL();

  const std::string shown = DemoOn("\x1b[?62;1;4;22c");

  EXPECT_TRUE(Contains(shown, kSixelStart)) << shown;
  EXPECT_TRUE(Contains(shown, "\"1;1;102;126"));  // The picture's size, in pixels.
  EXPECT_TRUE(Contains(shown, "\x1b\\"));
  EXPECT_FALSE(Contains(shown, kHalfBlock));
}

TEST(QlidPhoto, IsDrawnInHalfBlocksElsewhere) {
  NEEDS_SIXEL();

  for (const char* answer : {"\x1b[?62;14;22c", "\x1b[?1;2c", "\x1b[?6c", ""}) {
    const std::string shown = DemoOn(answer);

    EXPECT_FALSE(Contains(shown, kSixelStart)) << shown;
    EXPECT_TRUE(Contains(shown, kHalfBlock));
  }
}

TEST(QlidPhoto, IsNoReasonToAskAPipe) {
  const Output demo =
      RunQlid({"--color", "always", "demo", "--photo", TemporaryFolder() + "/p.bmp"});

  EXPECT_FALSE(Contains(demo.out + demo.err, kQuestion));
  EXPECT_TRUE(Contains(demo.out, kHalfBlock));
}
