// Recordings of a line, and the reader that answers from one.
#include "simulator/recording.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::chrono_literals;
using simulator::Bytes;
using simulator::RecordedPiece;

RecordedPiece Sent(std::chrono::microseconds at, Bytes bytes) {
  return {at, true, 0, std::move(bytes)};
}
RecordedPiece Answered(std::chrono::microseconds at, Bytes bytes) {
  return {at, false, 0, std::move(bytes)};
}

// Two questions, the first with an answer in two pieces.
std::vector<RecordedPiece> Talk() {
  return {
      {0us,   false, 9600, {}},
      Sent(1000us, {0x01, 0x02}
      ), Answered(21'000us, {0xA1    }
      ),
      Answered(51'000us, {0xA2}
      ), Sent(60'000us, {0x03 }
      ),     Answered(65'000us, {0xA3 }
      ),
  };
}

Bytes AnswerOf(const simulator::Exchange& exchange) {
  Bytes bytes;
  for (const simulator::Step& step : exchange.steps)
    bytes.insert(bytes.end(), step.bytes.begin(), step.bytes.end());
  return bytes;
}

}  // namespace

TEST(Recording, IsTextThatSaysEveryPiece) {
  EXPECT_EQ(
      "qtrace 1\n"
      "# one\n"
      "# two\n"
      "0.000000 speed 9600\n"
      "0.001000 < 01 02\n"
      "0.021000 > A1\n"
      "0.051000 > A2\n"
      "0.060000 < 03\n"
      "0.065000 > A3\n",
      simulator::RecordingText(Talk(), "one\ntwo\n"));
}

TEST(Recording, IsReadBack) {
  std::string why;

  const auto pieces = simulator::ParseRecording(simulator::RecordingText(Talk(), "x"), &why);

  ASSERT_TRUE(pieces) << why;
  EXPECT_EQ(simulator::RecordingText(Talk(), ""), simulator::RecordingText(*pieces, ""));
}

TEST(Replay, TakesTheTimeThatTheReaderTook) {
  simulator::Replay replay(Talk());

  const auto exchanges = replay.Receive(Bytes{0x01, 0x02}, 9600);

  ASSERT_EQ(1U, exchanges.size());
  ASSERT_EQ(2U, exchanges[0].steps.size());
  EXPECT_EQ(20ms, exchanges[0].steps[0].delay);
  EXPECT_EQ(Bytes{0xA1}, exchanges[0].steps[0].bytes);
  EXPECT_EQ(30ms, exchanges[0].steps[1].delay);
  EXPECT_EQ(Bytes{0xA2}, exchanges[0].steps[1].bytes);
}

TEST(Replay, WaitsForTheRestOfWhatWasSent) {
  simulator::Replay replay(Talk());

  EXPECT_TRUE(replay.Receive(Bytes{0x01}, 0).empty());
  const auto exchanges = replay.Receive(Bytes{0x02, 0x03}, 0);

  ASSERT_EQ(2U, exchanges.size());
  EXPECT_EQ((Bytes{0xA1, 0xA2}), AnswerOf(exchanges[0]));
  EXPECT_EQ(Bytes{0xA3}, AnswerOf(exchanges[1]));
}

TEST(Replay, FindsItsPlaceWhenAQuestionIsLeftOutOrAskedAgain) {
  simulator::Replay replay(Talk());

  EXPECT_EQ(Bytes{0xA3}, AnswerOf(replay.Receive(Bytes{0x03}, 0).at(0)));
  EXPECT_EQ(Bytes{0xA3}, AnswerOf(replay.Receive(Bytes{0x03}, 0).at(0)));
  EXPECT_EQ((Bytes{0xA1, 0xA2}), AnswerOf(replay.Receive(Bytes{0x01, 0x02}, 0).at(0)));
}

TEST(Replay, IsSilentAboutWhatIsNotInIt) {
  simulator::Replay replay(Talk());

  const auto exchanges = replay.Receive(Bytes{0x09}, 0);

  ASSERT_EQ(1U, exchanges.size());
  EXPECT_TRUE(exchanges[0].steps.empty());
  EXPECT_EQ("not in the recording", exchanges[0].request.meaning);
  EXPECT_EQ(Bytes{0xA3}, AnswerOf(replay.Receive(Bytes{0x03}, 0).at(0)));
}

TEST(Replay, OfNothingAnswersNothing) {
  simulator::Replay replay({});

  EXPECT_TRUE(replay.Receive(Bytes{0x01}, 0).at(0).steps.empty());
}
