// qlid explain, the manual page made of it, and each result code from the command that it names.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <sstream>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

constexpr int kCodes[] = {0, -1, -2, -3, -4, -5, -7, -8, -9, -10, -11, -12, -13, -100};

std::string Explained(int code) { return RunQlid({"explain", std::to_string(code)}).out; }

// The text behind a label at the start of a line.
std::string Labelled(const std::string& text, const std::string& label) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(label, 0) == 0) return line.substr(line.find_first_not_of(' ', label.size()));
  }
  return "";
}

// Runs the words behind "qlid" in a folder of its own.
Output RunCommand(const std::string& command) {
  constexpr char kInterrupted[] = "timeout --signal=INT 1 ";
  const bool interrupted = command.rfind(kInterrupted, 0) == 0;
  std::istringstream text(interrupted ? command.substr(sizeof kInterrupted - 1) : command);
  std::vector<std::string> words;
  for (std::string word; text >> word;) words.push_back(word);
  EXPECT_EQ("qlid", words.front());
  words.front() = QLID_PROGRAM;
  Program program(words);
  if (interrupted) {
    EXPECT_TRUE(program.WaitFor("Reading it")) << program.err();
    program.Signal(SIGINT);
  }
  return program.Finish();
}

class Errors : public testing::TestWithParam<int> {};

}  // namespace

TEST_P(Errors, CanBeTriedWithOneCommand) {
  const int code = GetParam();
  const std::string explained = Explained(code);
  const std::string command = Labelled(explained, "Try it");
  ASSERT_EQ(0, chdir(TemporaryFolder().c_str()));

  const Output tried = RunCommand(command);

  EXPECT_EQ(Labelled(explained, "Exit"), std::to_string(tried.exit)) << command << tried.err;
  // A wrong use is told without a code.
  if (code != 0 && code != -13) {
    EXPECT_TRUE(Contains(tried.err, "(" + std::to_string(code) + ")")) << command << tried.err;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, Errors, testing::ValuesIn(kCodes),
                         [](const auto& row) { return "Code" + std::to_string(-row.param); });

TEST(QlidExplain, KnowsEveryPublishedCode) {
  for (const int code : kCodes) {
    const std::string explained = Explained(code);

    EXPECT_EQ(0U, explained.find(std::to_string(code) + "  ")) << explained;
    EXPECT_NE("", Labelled(explained, "Means")) << code;
    EXPECT_NE("", Labelled(explained, "Exit")) << code;
  }
  EXPECT_TRUE(Contains(Explained(-7), "解析头像错误"));
  EXPECT_EQ(2, RunQlid({"explain", "-6"}).exit);
}

TEST(QlidExplain, ListsTheCodes) {
  const std::string all = RunQlid({"explain"}).out;

  for (const int code : kCodes)
    EXPECT_TRUE(Contains("\n" + all, "\n" + std::to_string(code) + " ")) << all;
}

TEST(QlidExplain, IsWhatTheManualPageSays) {
  EXPECT_EQ(ReadWholeFile(MANUAL_PAGES "/quillonid-errors.7.scd"),
            RunQlid({"explain", "--scdoc"}).out)
      << "make it anew: qlid explain --scdoc >docs/man/quillonid-errors.7.scd";
  EXPECT_EQ(ReadWholeFile(MANUAL_PAGES "/zh_CN/quillonid-errors.7.scd"),
            RunQlid({"--lang", "zh", "explain", "--scdoc"}).out)
      << "make it anew: qlid --lang zh explain --scdoc >docs/man/zh_CN/quillonid-errors.7.scd";
}

TEST(QlidDemo, ListsTheFaults) {
  const Output faults = RunQlid({"demo", "--fault", "help"});

  EXPECT_EQ(0, faults.exit);
  EXPECT_TRUE(Contains(faults.out, "photo-refused")) << faults.out;
  EXPECT_EQ(2, RunQlid({"demo", "--fault", "explode"}).exit);
}
