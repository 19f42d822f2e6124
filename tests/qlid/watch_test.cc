// qlid read --watch: which card it tells and when, and why it cannot read.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <sstream>

#include "tests/qlid/bench.h"
#include "tests/qlid/rival.h"
#include "tests/testing/private_root.h"

namespace {

using Clock = std::chrono::steady_clock;
using simulator::FaultId;

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    ++count;
  return count;
}

// The documents on standard output, one in a line.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string ReasonIn(const std::string& document) {
  return Member(Child(Parse(document), "error"), "reason");
}

// Long enough for several reads in a row.
void LetItReadOn() { usleep(4'000'000); }

Output Stopped(Program* watch) {
  watch->Signal(SIGINT);
  return watch->Finish();
}

// Runs qlid with a standard output that takes nothing.
Output OntoAFullDisk(const std::string& arguments) {
  int status = 0;
  Output output;
  output.err = OutputOf(
      "LC_ALL=C.UTF-8 " QL_EMULATOR " " QLID_PROGRAM " " + arguments + " 2>&1 >/dev/full", &status);
  if (WIFEXITED(status)) output.exit = WEXITSTATUS(status);
  return output;
}

}  // namespace

TEST(QlidWatch, TellsACardThatIsPutBackWithinSecondsOnceMore) {
  Bench bench;
  Program watch(Qlid(bench.Read({"--watch", "--json"})));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();

  bench.reader.RemoveCard();
  const auto removed = Clock::now();
  ASSERT_TRUE(watch.WaitFor("card taken away")) << watch.err();
  const auto told = Clock::now() - removed;
  bench.reader.PutCard(bench.card);

  EXPECT_TRUE(watch.WaitFor("\"kind\":\"resident\"", 2)) << watch.err();
  EXPECT_LT(told, std::chrono::seconds(8));  // The limit of a read is 10 s.
  const Output output = Stopped(&watch);
  EXPECT_EQ(0, output.exit);
  EXPECT_TRUE(Contains(output.err, "stopped after 2 cards, 0 failures")) << output.err;
}

TEST(QlidWatch, TellsACardOnceAlthoughAReadOfItFails) {
  Bench bench;
  Program watch(Qlid(bench.Read({"--watch", "--json", "--pause", "50"})));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();

  bench.reader.SetFault({FaultId::kBadCheckOnce, 0});
  LetItReadOn();

  const Output output = Stopped(&watch);
  EXPECT_EQ(1U, Count(output.out, "\"kind\":\"resident\"")) << output.out;
  EXPECT_EQ("stopped after 1 card, 0 failures\n", output.err.substr(output.err.find("stopped")))
      << output.err;
}

TEST(QlidWatch, GivesACardAgainToAProgramThatFailed) {
  Bench bench;
  Program watch(Qlid(bench.Read({"--watch", "--exec", "echo handed over; exit 1"})));
  ASSERT_TRUE(watch.WaitFor("status 1")) << watch.err();

  bench.reader.RemoveCard();
  ASSERT_TRUE(watch.WaitFor("card taken away")) << watch.err();
  bench.reader.PutCard(bench.card);

  EXPECT_TRUE(watch.WaitFor("handed over", 2)) << watch.err();
}

TEST(QlidWatch, SaysThatTheReaderIsSilentAndThatItAnswersAgain) {
  Bench bench;
  bench.reader.SetFault({FaultId::kSilent, 0});
  Program watch(Qlid(bench.Read({"--watch", "--json", "--timeout", "2"})));

  ASSERT_TRUE(watch.WaitFor("the reader did not answer within 2 s (-5)")) << watch.err();
  LetItReadOn();
  bench.reader.SetFault({FaultId::kBadCheckOnce, 0});
  EXPECT_TRUE(watch.WaitFor("the reader answers again")) << watch.err();
  EXPECT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();

  const Output output = Stopped(&watch);
  EXPECT_EQ(1U, Count(output.err, "did not answer")) << output.err;
  const std::vector<std::string> documents = Lines(output.out);
  ASSERT_EQ(2U, documents.size()) << output.out;
  EXPECT_EQ("silent", ReasonIn(documents[0]));
}

TEST(QlidWatch, SaysThatACardCannotBeReadOnce) {
  Bench bench;
  bench.reader.SetFault({FaultId::kBadCheck, 0});
  Program watch(Qlid(bench.Read({"--watch", "--json", "--timeout", "2"})));

  ASSERT_TRUE(watch.WaitFor("a card was found and could not be read within 2 s")) << watch.err();
  LetItReadOn();

  const Output output = Stopped(&watch);
  EXPECT_EQ(1U, Count(output.err, "could not be read")) << output.err;
  EXPECT_FALSE(Contains(output.err, "taken away")) << output.err;
  EXPECT_EQ("unread", ReasonIn(output.out));
  EXPECT_TRUE(Contains(output.err, "stopped after 0 cards, 1 failure")) << output.err;
}

TEST(QlidWatch, TellsASteadyFailureOnceAndCountsIt) {
  Bench bench;
  bench.reader.SetFault({FaultId::kIcPowerOn, 0});
  Program watch(Qlid(bench.Read({"--watch", "--json", "--pause", "50"})));

  ASSERT_TRUE(watch.WaitFor("another failure (-100)")) << watch.err();
  EXPECT_TRUE(watch.WaitFor("Causes")) << watch.err();
  LetItReadOn();

  const Output output = Stopped(&watch);
  EXPECT_EQ(1U, Count(output.err, "(-100)")) << output.err;
  EXPECT_EQ("other", ReasonIn(output.out));
  EXPECT_TRUE(Contains(output.err, "stopped after 0 cards, 1 failure")) << output.err;
}

TEST(QlidWatch, TellsAFailureAgainWhenTheCardIsPutThereAgain) {
  Bench bench;
  bench.reader.SetFault({FaultId::kIcPowerOn, 0});
  Program watch(Qlid(bench.Read({"--watch"})));
  ASSERT_TRUE(watch.WaitFor("(-100)")) << watch.err();

  bench.reader.SetFault({FaultId::kNoCard, 0});
  LetItReadOn();
  bench.reader.SetFault({FaultId::kIcPowerOn, 0});

  EXPECT_TRUE(watch.WaitFor("(-100)", 2)) << watch.err();
}

TEST(QlidWatch, SaysThatACardIsOfAnotherKind) {
  Bench bench("permit");
  Program watch(Qlid(bench.Read({"--watch", "--json", "--kind", "resident"})));

  ASSERT_TRUE(watch.WaitFor("this is not the kind of card asked for: resident (-11)"))
      << watch.err();
  LetItReadOn();

  const Output output = Stopped(&watch);
  EXPECT_EQ(1U, Count(output.err, "not the kind")) << output.err;
  EXPECT_EQ("card-kind", ReasonIn(output.out));
  EXPECT_FALSE(Contains(output.out, bench.card.person.text.at("name"))) << output.out;
  EXPECT_TRUE(Contains(output.err, "stopped after 0 cards, 1 failure")) << output.err;
}

TEST(QlidWatch, NamesAPortThatIsNotThereAndTakesItWhenItComes) {
  const std::string link = TemporaryFolder() + "/reader";
  const std::string device = "/dev/.." + link;
  Bench bench;
  Program watch(Qlid({"read", "--watch", "--json", "--device", device}));

  ASSERT_TRUE(watch.WaitFor("there is no " + device + " (-1)")) << watch.err();
  ASSERT_TRUE(watch.WaitFor("waiting for one")) << watch.err();
  std::filesystem::create_symlink(bench.reader.path(), link);
  EXPECT_TRUE(watch.WaitFor("reader is there")) << watch.err();
  EXPECT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();

  const Output output = Stopped(&watch);
  EXPECT_EQ(1U, Count(output.err, "there is no")) << output.err;
  const std::string document = Lines(output.out).front();
  EXPECT_EQ("no-device", ReasonIn(document));
  EXPECT_EQ(device, Member(Child(Parse(document), "error"), "node"));
}

TEST(QlidWatch, NamesTheProgramThatHoldsTheReader) {
  NEEDS_PRIVATE_ROOT();
  const Bench bench;
  Output output;
  {
    const Rival rival(bench.reader.path());
    Program watch(Qlid(bench.Read({"--watch", "--json"})));

    EXPECT_TRUE(watch.WaitFor("in use by another program")) << watch.err();
    EXPECT_TRUE(watch.WaitFor("Held by  " + rival.Named())) << watch.err();
    LetItReadOn();
    output = Stopped(&watch);
  }

  EXPECT_EQ(1U, Count(output.err, "in use")) << output.err;
  EXPECT_EQ("held", ReasonIn(output.out));
  EXPECT_TRUE(Contains(output.out, "\"program\":\"frontdesk\"")) << output.out;
}

TEST(QlidWatch, ExplainsAMissingPermission) {
  const Bench bench;
  prctl(PR_CAPBSET_DROP, 1 /* CAP_DAC_OVERRIDE */);
  chmod(bench.reader.path().c_str(), 0);
  if (RunQlid(bench.Read({"--timeout", "1"})).exit == 0)
    GTEST_SKIP() << "this user may open whatever it wants to";
  Program watch(Qlid(bench.Read({"--watch", "--json"})));

  EXPECT_TRUE(watch.WaitFor("no permission to open the reader")) << watch.err();
  EXPECT_TRUE(watch.WaitFor("waiting for one")) << watch.err();

  const Output output = Stopped(&watch);
  EXPECT_TRUE(Contains(output.err, "mode 0000")) << output.err;
  EXPECT_EQ("no-permission", ReasonIn(output.out));
}

TEST(QlidWatch, TellsProgramsThatTheReaderWasPulled) {
  const std::string link = TemporaryFolder() + "/reader";
  auto reader = std::make_unique<simulator::TtyReader>();
  reader->PutCard(simulator::MakeCard("resident"));
  std::filesystem::create_symlink(reader->path(), link);
  Program watch(Qlid({"read", "--watch", "--json", "--device", "/dev/.." + link}));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();

  std::filesystem::remove(link);
  reader.reset();

  EXPECT_TRUE(watch.WaitFor("\"reason\":\"unplugged\"")) << watch.err();
  LetItReadOn();
  EXPECT_EQ(2U, Lines(Stopped(&watch).out).size());
}

TEST(QlidWatch, RefusesInOneLine) {
  const Output watch = RunQlid({"read", "--watch", "--json", "--device", "COM1"});

  EXPECT_EQ(2, watch.exit);
  EXPECT_EQ(1U, Lines(watch.out).size()) << watch.out;
  EXPECT_EQ("argument", ReasonIn(watch.out));
}

class FullOutput : public testing::TestWithParam<const char*> {};

TEST_P(FullOutput, EndsTheWatchAndSaysSo) {
  const Bench bench;

  const Output watch = OntoAFullDisk("read --watch --device " + bench.reader.path() + GetParam());

  EXPECT_EQ(8, watch.exit) << watch.err;
  EXPECT_TRUE(Contains(watch.err, "stopped after 1 card, 1 failure")) << watch.err;
  EXPECT_TRUE(Contains(watch.err, "standard output could not be written")) << watch.err;
  EXPECT_TRUE(Contains(watch.err, "No space left")) << watch.err;
}

INSTANTIATE_TEST_SUITE_P(QlidWatch, FullOutput, testing::Values("", " --json"),
                         [](const auto& row) { return "At" + std::to_string(row.index); });

TEST(QlidWatch, EndsWhenAFailureCannotBeTold) {
  const Output watch = OntoAFullDisk("read --watch --json --device /dev/quillonid-none");

  EXPECT_EQ(8, watch.exit) << watch.err;
}

// The port is its controlling terminal, whose hang-up the kernel tells it with SIGHUP.
TEST(QlidWatch, GoesOnAsAServiceWhoseReaderIsPulled) {
  const std::string link = TemporaryFolder() + "/reader";
  auto reader = std::make_unique<simulator::TtyReader>();
  reader->PutCard(simulator::MakeCard("resident"));
  std::filesystem::create_symlink(reader->path(), link);
  Program watch(Qlid({"read", "--watch", "--json", "--device", "/dev/.." + link}), {}, false, false,
                true);
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();
  const std::size_t requests = reader->Requests().size();
  ASSERT_TRUE(reader->WaitForRequests(requests + 1, 20'000));

  std::filesystem::remove(link);
  reader->HangUp();
  ASSERT_TRUE(watch.WaitFor("waiting for it to come back")) << watch.err();
  const Bench again("permit");
  std::filesystem::create_symlink(again.reader.path(), link);

  EXPECT_TRUE(watch.WaitFor("\"kind\":\"gat\"")) << watch.err();
  EXPECT_EQ(0, Stopped(&watch).exit);
}

TEST(QlidWatch, GoesOnAfterAHangUpWhereThereIsNoTerminal) {
  Bench bench;
  Program watch(Qlid(bench.Read({"--watch", "--json"})));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();

  watch.Signal(SIGHUP);
  bench.reader.PutCard(simulator::MakeCard("permit"));

  EXPECT_TRUE(watch.WaitFor("\"kind\":\"gat\"")) << watch.err();
}

TEST(QlidWatch, EndsWhenItsTerminalIsClosed) {
  const Bench bench;
  Program watch(Qlid(bench.Read({"--watch"})), {}, true, true);
  ASSERT_TRUE(watch.WaitFor(bench.card.person.text.at("cardId"))) << watch.err();

  watch.CloseTerminal();

  const int status = watch.Finish().exit;
  EXPECT_TRUE(status == 0 || status == 8) << status << "; 8 where it was about to write there";
}

// Standard error alone is a terminal here, and the signal comes from somebody else.
TEST(QlidRead, IsCancelledByAHangUpAtATerminal) {
  simulator::TtyReader reader;
  Program read(Qlid({"read", "--device", reader.path(), "--timeout", "60"}), {}, true);
  ASSERT_TRUE(reader.WaitForRequests(1, 20'000));

  read.Signal(SIGHUP);

  EXPECT_EQ(130, read.Finish().exit);
}

TEST(QlidWatch, SpeaksChinese) {
  simulator::TtyReader silent;
  silent.SetFault({FaultId::kSilent, 0});
  Program watch(Qlid(
      {"--lang", "zh", "read", "--watch", "--json", "--timeout", "1", "--device", silent.path()}));

  EXPECT_TRUE(watch.WaitFor("读卡器在 1 秒内没有应答 (-5)")) << watch.err();
  EXPECT_TRUE(watch.WaitFor("\"reason\":\"silent\"")) << watch.out();
  silent.SetFault({FaultId::kNoCard, 0});
  EXPECT_TRUE(watch.WaitFor("读卡器恢复应答")) << watch.err();
}
