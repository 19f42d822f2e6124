// The photo on terminals of more and less ability.
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

// qlid read on a terminal that gives this answer when it is asked what it is.
class ReadOnTerminal {
 public:
  explicit ReadOnTerminal(const std::vector<std::string>& more,
                          const std::vector<std::string>& environment = {})
      : read_(Qlid(bench_.Read(more)), environment, true, true) {}

  std::string Shown(const std::string& answer) {
    if (!read_.WaitFor(kQuestion)) return "not asked";
    read_.Type(answer);
    return Shown();
  }
  std::string Shown() {
    const Output output = read_.Finish();
    EXPECT_EQ(0, output.exit) << output.err;
    EXPECT_TRUE(Contains(output.err, "999999199001010024")) << output.err;
    return output.err;
  }

 private:
  Bench bench_;
  Program read_;
};

void InstallDecoder() { WriteWholeFile(kDecoderFile, ReadWholeFile(SPECIMEN_DECODER)); }

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

TEST(QlidReadPicture, IsDrawnInPixelsWhereTheTerminalCan) {
  NEEDS_PRIVATE_ROOT();
  NEEDS_SIXEL();
  InstallDecoder();

  const std::string shown = ReadOnTerminal({"--picture"}).Shown("\x1b[?62;1;4;22c");

  EXPECT_TRUE(Contains(shown, kSixelStart)) << shown;
  EXPECT_TRUE(Contains(shown, "\"1;1;102;126"));
  EXPECT_FALSE(Contains(shown, kHalfBlock));
}

TEST(QlidReadPicture, IsDrawnInHalfBlocksElsewhere) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  ReadOnTerminal read({"--picture"});
#ifdef QLID_SIXEL
  const std::string shown = read.Shown("\x1b[?62;14;22c");
#else
  const std::string shown = read.Shown();
#endif

  EXPECT_TRUE(Contains(shown, kHalfBlock)) << shown;
  EXPECT_TRUE(Contains(shown, "38;2;")) << "no true colour";
}

TEST(QlidReadPicture, IsLeftOutWithoutTheOptionAndWithoutColour) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();

  for (const std::string& shown :
       {ReadOnTerminal({}).Shown(), ReadOnTerminal({"--picture"}, {"NO_COLOR=1"}).Shown(),
        ReadOnTerminal({"--picture"}, {"TERM=dumb"}).Shown()}) {
    EXPECT_FALSE(Contains(shown, kQuestion)) << shown;
    EXPECT_FALSE(Contains(shown, kSixelStart));
    EXPECT_FALSE(Contains(shown, kHalfBlock));
  }
}

TEST(QlidReadPicture, NeverGoesIntoAPipe) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  const Bench bench;

  const Output plain = RunQlid(bench.Read({"--color", "always"}));
  const Output picture = RunQlid(bench.Read({"--picture", "--color", "always"}));

  EXPECT_EQ(0, picture.exit) << picture.err;
  EXPECT_EQ(plain.out, picture.out);
}

TEST(QlidReadPicture, DoesNotGoWithMaskingOrJson) {
  const Bench bench;
  const std::string card = TemporaryFolder() + "/card.bin";
  WriteWholeFile(card, Text(simulator::NativeData(bench.card, false)));
  for (const char* other : {"--redact", "--json"}) {
    EXPECT_EQ(2, RunQlid(bench.Read({"--picture", other})).exit) << other;
    EXPECT_EQ(2, RunQlid({"decode", "--picture", other, card}).exit) << other;
  }
}

TEST(QlidReadPicture, IsToldWhenItCannotBeDecoded) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;
  Program read(Qlid(bench.Read({"--picture"})), {}, true, true);

  const Output output = read.Finish();

  EXPECT_EQ(7, output.exit);
  EXPECT_TRUE(Contains(output.err, "999999199001010024")) << output.err;
  EXPECT_TRUE(Contains(output.err, "the text was read, the photo was not decoded (-7)"));
}

TEST(QlidDecodePicture, IsShownAsForARead) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  const std::string card = TemporaryFolder() + "/card.bin";
  WriteWholeFile(card, Text(simulator::NativeData(simulator::MakeCard("permit"), false)));

  Program decode(Qlid({"decode", "--picture", card}), {}, true, true);

  const Output output = decode.Finish();
  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_TRUE(Contains(output.err, kHalfBlock)) << output.err;
}
