// qlid read --record, --trace, --timing, and qlid simulate --replay.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

#include "simulator/recording.h"
#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

// qlid simulate with these arguments, and the path of its tty.
struct Simulated {
  explicit Simulated(std::vector<std::string> arguments)
      : link(TemporaryFolder() + "/reader"), program(Command(std::move(arguments))) {
    if (program.WaitFor("Ctrl-C ends it.")) path = std::filesystem::read_symlink(link);
  }
  std::vector<std::string> Command(std::vector<std::string> arguments) const {
    std::vector<std::string> words = {"simulate", "--link", link};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return Qlid(words);
  }
  std::string link;
  Program program;
  std::string path;
};

struct Case {
  std::string card;
  bool fingerprints;
};

void PrintTo(const Case& one, std::ostream* out) {
  *out << one.card << (one.fingerprints ? " with fingerprints" : "");
}

class Recorded : public testing::TestWithParam<Case> {};

constexpr char kSearch[] = "AA AA AA 96 69 00 03 20 01 22";
constexpr char kFound[] = "AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97";

}  // namespace

TEST_P(Recorded, IsReadAgainFromTheRecordingAlone) {
  const auto& [card, fingerprints] = GetParam();
  const Bench bench(card, fingerprints);
  const std::string folder = TemporaryFolder();
  std::vector<std::string> arguments = {"--json", "--native", folder + "/first", "--record",
                                        folder + "/night.qtrace"};
  if (fingerprints) arguments.push_back("--fingerprints");
  const Output first = RunQlid(bench.Read(arguments));
  ASSERT_EQ(0, first.exit) << first.err;

  Simulated replayed({"--replay", folder + "/night.qtrace"});
  std::vector<std::string> again = {"read",   "--device", replayed.path,
                                    "--json", "--native", folder + "/second"};
  if (fingerprints) again.push_back("--fingerprints");
  const Output second = RunQlid(again);
  const Output third = RunQlid(again);

  EXPECT_EQ(0, second.exit) << second.err;
  EXPECT_EQ(0, third.exit) << third.err;  // The recording starts again at its end.
  EXPECT_EQ(Text(simulator::NativeData(bench.card, fingerprints)),
            ReadWholeFile(folder + "/second"));
  EXPECT_TRUE(
      cJSON_Compare(Child(Parse(first.out), "card"), Child(Parse(second.out), "card"), true))
      << second.out;
}

INSTANTIATE_TEST_SUITE_P(QlidRecord, Recorded,
                         testing::Values(Case{"resident", false}, Case{"foreigner", false},
                                         Case{"permit", true}));

TEST(QlidRecord, IsForItsOwnerAloneAndSaysWhatItHolds) {
  const Bench bench;
  const std::string file = TemporaryFolder() + "/night.qtrace";

  const Output read = RunQlid(bench.Read({"--record", file}));

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_EQ(0600, Mode(file));
  EXPECT_TRUE(Contains(read.err, "a card's personal data included")) << read.err;
  const std::string text = ReadWholeFile(file);
  EXPECT_EQ(0U, text.find("qtrace 1\n# " + bench.reader.path() + " at 115200 bit/s")) << text;
  EXPECT_TRUE(Contains(text, "Holds a card's data unmasked")) << text;
  EXPECT_TRUE(Contains(text, " speed 115200\n")) << text;
  EXPECT_TRUE(Contains(text, std::string(" < ") + kSearch + "\n")) << text;
  EXPECT_TRUE(Contains(text, std::string(" > ") + kFound + "\n")) << text;
}

TEST(QlidRecord, KeepsAReadThatFailed) {
  simulator::TtyReader empty;
  const std::string file = TemporaryFolder() + "/night.qtrace";

  const Output read =
      RunQlid({"read", "--device", empty.path(), "--timeout", "1", "--record", file});

  EXPECT_EQ(4, read.exit) << read.err;
  std::string why;
  const auto pieces = simulator::ParseRecording(ReadWholeFile(file), &why);
  ASSERT_TRUE(pieces) << why;
  EXPECT_GE(pieces->size(), 2U);
}

TEST(QlidRecord, FollowsTheSpeedOfTheLine) {
  const Bench bench;
  const std::string file = TemporaryFolder() + "/night.qtrace";

  const Output read = RunQlid(bench.Read({"--baud", "19200", "--record", file}));

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(ReadWholeFile(file), " speed 19200\n"));
  EXPECT_EQ(19200, bench.reader.LineSpeed());
}

TEST(QlidRecord, GoesWithASerialLineAlone) {
  const Output usb = RunQlid({"read", "--device", "HID", "--timing"});
  const Output redacted = RunQlid({"read", "--redact", "--record", "/tmp/never.qtrace"});
  const Output watched = RunQlid({"read", "--watch", "--trace"});

  EXPECT_EQ(2, usb.exit);
  EXPECT_TRUE(Contains(usb.err, "a USB reader has none")) << usb.err;
  EXPECT_EQ(2, redacted.exit);
  EXPECT_EQ(2, watched.exit);
}

TEST(QlidTrace, ShowsTheFramesAsTheReaderSendsThem) {
  const Bench bench;

  const Output read = RunQlid(bench.Read({"--trace"}));

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(read.err, std::string("  <  search card      ") + kSearch + "\n"))
      << read.err;
  EXPECT_TRUE(Contains(read.err, std::string("  >  card found       ") + kFound + "\n"))
      << read.err;
  EXPECT_TRUE(Contains(read.err, "  >  card data        AA AA AA 96 69 05 08 00 00 90"))
      << read.err;
  EXPECT_TRUE(Contains(read.err, "... 1295 bytes")) << read.err;
}

TEST(QlidTrace, HidesTheCardsTextWhenRedacted) {
  const Bench bench;

  const Output read = RunQlid(bench.Read({"--trace", "--redact"}));

  EXPECT_TRUE(Contains(read.err, "05 08 00 00 90 01 00 04 00 ... 1295 bytes")) << read.err;
}

TEST(QlidTiming, AddsUpToTheWholeRead) {
  const Bench bench;

  const Output people = RunQlid(bench.Read({"--timing"}));
  const Output programs = RunQlid(bench.Read({"--timing", "--json"}));

  EXPECT_EQ(0, people.exit) << people.err;
  EXPECT_TRUE(Contains(people.err, "decode and close")) << people.err;
  const Json document = Parse(programs.out);
  ASSERT_NE(nullptr, document) << programs.out;
  double sum = 0;
  std::map<std::string, double> parts;
  const cJSON* part = nullptr;
  cJSON_ArrayForEach(part, Child(document, "timing_ms")) {
    EXPECT_LE(0, part->valuedouble) << part->string;
    parts[part->string] = part->valuedouble;
    sum += part->valuedouble;
  }
  EXPECT_EQ(7U, parts.size());
  EXPECT_GT(parts["pauses"], 800);  // The library waits a second between select and read.
  EXPECT_GE(sum, Child(document, "elapsed_ms")->valuedouble);
}

TEST(QlidReplay, RefusesWhatIsNoRecording) {
  const std::string file = TemporaryFolder() + "/night.qtrace";
  struct Wrong {
    const char* text;
    const char* said;
  };
  constexpr Wrong kWrong[] = {
      {"",                             "line 1: it is not \"qtrace 1\""   },
      {"qtrace 1\nx < AA\n",           "line 2: a time in seconds"        },
      {"qtrace 1\n0.1 ? AA\n",         "line 2: \"<\", \">\" or \"speed\""},
      {"qtrace 1\n0.1 < AA GG\n",      "line 2: \"GG\" is no byte"        },
      {"qtrace 1\n0.1 <\n",            "line 2: there are no bytes"       },
      {"qtrace 1\n0.2 < AA\n0.1 > A0", "line 3: the time goes back"       },
      {"qtrace 1\n0.2 speed fast\n",   "line 2: a speed in bit/s"         },
  };
  for (const Wrong& wrong : kWrong) {
    WriteWholeFile(file, wrong.text);

    const Output simulate = RunQlid({"simulate", "--replay", file});

    EXPECT_EQ(2, simulate.exit);
    EXPECT_TRUE(Contains(simulate.err, wrong.said)) << simulate.err;
  }
}

TEST(QlidReplay, SaysWhatIsNotInTheRecording) {
  const std::string file = TemporaryFolder() + "/night.qtrace";
  WriteWholeFile(file, std::string("qtrace 1\n0.0 < ") + kSearch + "\n0.1 > " + kFound + "\n");
  Simulated replayed({"--trace", "--replay", file});

  const Output read = RunQlid({"read", "--device", replayed.path, "--timeout", "1"});

  EXPECT_NE(0, read.exit);
  EXPECT_TRUE(replayed.program.WaitFor("not in the recording")) << replayed.program.err();
}
