// The examples read a specimen card as their texts say.
#include <gtest/gtest.h>

#include <csignal>
#include <sstream>

#include "simulator/environment.h"
#include "simulator/tty_reader.h"
#include "tests/testing/private_root.h"
#include "tests/testing/program.h"

namespace {

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

struct Bench {
  Bench() : card(simulator::MakeCard("resident")) { reader.PutCard(card); }
  const std::string& Printed(const char* field) const { return card.person.text.at(field); }
  simulator::Card card;
  simulator::TtyReader reader;
};

}  // namespace

TEST(ExampleReadCard, PrintsTheFields) {
  const Bench bench;

  const Output output = RunProgram({READ_CARD, bench.reader.path()});

  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_TRUE(Contains(output.out, bench.Printed("name"))) << output.out;
  EXPECT_TRUE(Contains(output.out, bench.Printed("cardId"))) << output.out;
}

TEST(ExampleReadCard, SaysThatThePhotoWasNotDecoded) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;

  const Output output =
      RunProgram({READ_CARD, bench.reader.path(), TemporaryFolder() + "/photo.bmp"});

  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_TRUE(Contains(output.out, "Photo   not decoded")) << output.out;
}

TEST(ExampleReadCard, FailsWithoutAReader) {
  const Output output = RunProgram({READ_CARD, "/dev/quillonid-none"});

  EXPECT_EQ(1, output.exit);
  EXPECT_TRUE(Contains(output.err, "result -1")) << output.err;
}

TEST(ExampleCancelRead, PrintsJson) {
  const Bench bench;

  const Output output = RunProgram({CANCEL_READ, bench.reader.path()});

  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_TRUE(Contains(output.out, "\"IDNumber\":\t\"" + bench.Printed("cardId") + "\""))
      << output.out;
}

TEST(ExampleCancelRead, StopsAtAKeyPress) {
  simulator::TtyReader empty;
  Program program({CANCEL_READ, empty.path()});
  ASSERT_TRUE(empty.WaitForRequests(1, 20'000));

  program.Type("\n");
  const Output output = program.Finish();

  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_TRUE(Contains(output.out, "Stopped.")) << output.out;
}

// The service's own command, for the simulated reader.
TEST(ExampleService, ReadsCardsUntilItIsStopped) {
  const Bench bench;
  std::string unit = ReadWholeFile(SERVICE_UNIT);
  unit.erase(0, unit.find("ExecStart=") + 10);
  std::istringstream command(unit.substr(0, unit.find('\n')));
  std::vector<std::string> words;
  for (std::string word; command >> word;) words.push_back(word);
  ASSERT_EQ("/usr/bin/qlid", words.front());
  ASSERT_EQ("/dev/ttyUSB0", words.back());
  words.front() = QLID_PROGRAM;
  words.back() = bench.reader.path();

  Program service(words);
  EXPECT_TRUE(service.WaitFor("\"IDNumber\":\"" + bench.Printed("cardId") + "\"")) << service.err();
  service.Signal(SIGTERM);

  EXPECT_EQ(0, service.Finish().exit);
}

#ifdef WITH_PYTHON
// The interpreter keeps memory to its end: leaks are looked for elsewhere.
const std::vector<std::string> kPython = {
    "LD_LIBRARY_PATH=" LIBRARY_FOLDER, "PYTHONUTF8=1", "LD_PRELOAD=" SANITIZER_RUNTIME,
    "ASAN_OPTIONS=" + simulator::Extended("ASAN_OPTIONS", "detect_leaks=0")};

TEST(ExamplePython, PrintsNameAndNumber) {
  const Bench bench;

  const Output output = RunProgram({READ_CARD_PY, bench.reader.path()}, kPython);

  EXPECT_EQ(0, output.exit) << output.err;
  EXPECT_EQ(bench.Printed("name") + " " + bench.Printed("cardId"),
            output.out.substr(0, output.out.find_last_not_of(" \n") + 1));
}

TEST(ExamplePython, ShowsTheLibrarysMessage) {
  const Output output = RunProgram({READ_CARD_PY, "/dev/quillonid-none"}, kPython);

  EXPECT_EQ(1, output.exit);
  EXPECT_TRUE(Contains(output.err, "-1 设备错误")) << output.err;
}
#endif
