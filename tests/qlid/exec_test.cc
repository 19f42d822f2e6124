// qlid read --exec: a program takes each card over.
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

// RFC 4648, written for this test.
simulator::Bytes FromBase64(const std::string& text) {
  const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  simulator::Bytes bytes;
  unsigned bits = 0;
  int count = 0;
  for (const char letter : text) {
    const std::size_t value = letters.find(letter);
    if (value == std::string::npos) break;
    bits = bits << 6 | static_cast<unsigned>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes.push_back(static_cast<std::uint8_t>(bits >> count & 0xFF));
  }
  return bytes;
}

}  // namespace

TEST(QlidExec, GivesTheCardAndItsPhotoOnStandardInput) {
  const Bench bench;

  const Output read = RunQlid(bench.Read({"--exec", "cat"}));

  EXPECT_EQ(0, read.exit) << read.err;
  const Json document = Parse(read.out);
  ASSERT_NE(nullptr, document) << read.out;
  EXPECT_EQ("qlid.read/1", Member(document.get(), "schema"));
  EXPECT_EQ(bench.card.person.text.at("cardId"), Member(Child(document, "card"), "IDNumber"));
  EXPECT_EQ(Text(bench.card.photo),
            Text(FromBase64(Member(Child(document, "card"), "PhotoNativeData"))));
}

TEST(QlidExec, KeepsTheCardOutOfArgumentsAndEnvironment) {
  const Bench bench;

  const Output read =
      RunQlid(bench.Read({"--exec", "cat /proc/$$/environ /proc/$$/cmdline /proc/$PPID/cmdline"}));

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(read.out, "LANG=")) << read.out;
  for (const char* field : {"name", "cardId", "address"}) {
    EXPECT_FALSE(Contains(read.out, bench.card.person.text.at(field))) << field;
  }
}

TEST(QlidExec, RedactsWhatTheProgramGets) {
  const Bench bench;

  const Output read = RunQlid(bench.Read({"--redact", "--exec", "cat"}));

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_TRUE(Contains(read.out, "\"kind\":\"resident\"")) << read.out;
  EXPECT_FALSE(Contains(read.out, bench.card.person.text.at("name"))) << read.out;
  EXPECT_FALSE(Contains(read.out, "PhotoNativeData")) << read.out;
}

TEST(QlidExec, SaysHowTheProgramEnded) {
  const Bench bench;

  const Output failed = RunQlid(bench.Read({"--exec", "exit 3"}));
  const Output killed = RunQlid(bench.Read({"--exec", "kill -9 $$"}));
  const Output missing = RunQlid(bench.Read({"--exec", "/quillonid-none"}));

  EXPECT_EQ(8, failed.exit);
  EXPECT_TRUE(Contains(failed.err, "qlid: the command ended with status 3\n")) << failed.err;
  EXPECT_EQ(8, killed.exit);
  EXPECT_TRUE(Contains(killed.err, "signal 9")) << killed.err;
  EXPECT_EQ(8, missing.exit);
  EXPECT_TRUE(Contains(missing.err, "status 127")) << missing.err;
}

TEST(QlidExec, NeedsNoReaderOfTheCard) {
  const Bench bench("resident", true);

  const Output read = RunQlid(bench.Read({"--fingerprints", "--exec", "exec <&-; echo done"}));

  EXPECT_EQ(0, read.exit) << read.err;
  EXPECT_EQ("done\n", read.out);
}

TEST(QlidExec, EndsAProgramThatHangsAndWhatItStarted) {
  const Bench bench;
  const auto start = std::chrono::steady_clock::now();

  const Output read =
      RunQlid(bench.Read({"--exec", "sleep 100 & sleep 100", "--exec-timeout", "1"}));

  EXPECT_EQ(8, read.exit);  // And the sleeps no longer hold standard output open.
  EXPECT_TRUE(Contains(read.err, "did not end within 1 s")) << read.err;
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST(QlidExec, EndsTheProgramOnAnInterrupt) {
  const Bench bench;
  Program read(Qlid(bench.Read({"--watch", "--exec", "echo started; sleep 100"})));
  ASSERT_TRUE(read.WaitFor("started")) << read.err();

  read.Signal(SIGINT);
  const Output output = read.Finish();

  EXPECT_EQ(0, output.exit);
  EXPECT_TRUE(Contains(output.err, "stopped after 1 card, 0 failures")) << output.err;
}

TEST(QlidExec, RunsOncePerCardWhileWatching) {
  Bench bench;
  Program watch(Qlid(bench.Read({"--watch", "--pause", "50", "--exec", "cat; exit 5"})));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();
  ASSERT_TRUE(watch.WaitFor("the command ended with status 5")) << watch.err();

  bench.reader.PutCard(simulator::MakeCard("permit"));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"gat\"")) << watch.err();
  watch.Signal(SIGINT);
  const Output output = watch.Finish();

  EXPECT_EQ(0, output.exit);
  EXPECT_TRUE(Contains(output.err, "stopped after 2 cards")) << output.err;
}

TEST(QlidExec, SpeaksChinese) {
  const Bench bench;

  const Output read = RunQlid(bench.Read({"--lang", "zh", "--exec", "exit 3"}));

  EXPECT_TRUE(Contains(read.err, "命令以状态 3 结束")) << read.err;
}

TEST(QlidWatch, RefusesWhatTheLibraryWouldMisunderstand) {
  const Output watch = RunQlid({"read", "--watch", "--device", "COM1"});

  EXPECT_EQ(2, watch.exit);
  EXPECT_TRUE(Contains(watch.err, "\"COM1\" names no device on Linux")) << watch.err;
}
