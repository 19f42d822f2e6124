#include "simulator/card_module.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <numeric>
#include <ostream>

#include "tests/testing/hex_text.h"

namespace simulator {
namespace {

constexpr char kDeviceCheck[] = "AA AA AA 96 69 00 03 11 FF ED";
constexpr char kSearch[] = "AA AA AA 96 69 00 03 20 01 22";
constexpr char kSelect[] = "AA AA AA 96 69 00 03 20 02 21";
constexpr char kRead[] = "AA AA AA 96 69 00 03 30 01 32";
constexpr char kReadFingerprints[] = "AA AA AA 96 69 00 03 30 10 23";
constexpr char kReadOneCommand[] = "AA AA AA 96 69 00 03 30 20 13";

constexpr char kFound[] = "AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97";
constexpr char kSelected[] = "AA AA AA 96 69 00 0C 00 00 90 00 00 00 00 00 00 00 00 9C";
constexpr char kNoCard[] = "AA AA AA 96 69 00 04 00 00 81 85";
constexpr char kReadFailed[] = "AA AA AA 96 69 00 04 00 00 41 45";

// The steps that answer `request`.
std::vector<Step> Ask(CardModule& module, const std::string& request, int line_speed = 0) {
  std::vector<Step> steps;
  for (Exchange& exchange : module.Receive(FromHex(request), line_speed)) {
    steps.insert(steps.end(), exchange.steps.begin(), exchange.steps.end());
  }
  return steps;
}

// All bytes of the answer, as hexadecimal text.
std::string Answer(CardModule& module, const std::string& request, int line_speed = 0) {
  Bytes bytes;
  for (const Step& step : Ask(module, request, line_speed)) {
    bytes.insert(bytes.end(), step.bytes.begin(), step.bytes.end());
  }
  return HexText(bytes);
}

void Misbehave(CardModule& module, const char* fault) { module.SetFault(*ParseFault(fault)); }

TEST(CardModule, AnswersEveryCommandWithACard) {
  CardModule module;
  const Card card = MakeCard("permit", true);
  module.PutCard(card);

  EXPECT_EQ("AA AA AA 96 69 00 04 00 00 90 94", Answer(module, kDeviceCheck));
  EXPECT_EQ(kFound, Answer(module, kSearch));
  EXPECT_EQ(kSelected, Answer(module, kSelect));
  EXPECT_EQ(HexText(NativeData(card, false)), Answer(module, kRead));
  EXPECT_EQ(HexText(NativeData(card, true)), Answer(module, kReadFingerprints));
  EXPECT_EQ(HexText(NativeData(card, false)), Answer(module, kReadOneCommand));
}

TEST(CardModule, ReadsWithOneCommandWithFingerprintsWhenTold) {
  CardModule module;
  const Card card = MakeCard("permit", true);
  module.PutCard(card);

  module.SetOneCommandFingerprints(true);

  EXPECT_EQ(HexText(NativeData(card, true)), Answer(module, kReadOneCommand));
}

TEST(CardModule, SaysThatNoCardIsThere) {
  CardModule module;

  EXPECT_EQ("AA AA AA 96 69 00 04 00 00 90 94", Answer(module, kDeviceCheck));
  EXPECT_EQ(kNoCard, Answer(module, kSearch));
  EXPECT_EQ(kNoCard, Answer(module, kSelect));
  EXPECT_EQ(kReadFailed, Answer(module, kRead));
  EXPECT_EQ(kReadFailed, Answer(module, kReadFingerprints));
  EXPECT_EQ(kReadFailed, Answer(module, kReadOneCommand));
}

TEST(CardModule, NoticesThatTheCardIsChanged) {
  CardModule module;
  EXPECT_FALSE(module.HasCard());

  module.PutCard(MakeCard("resident"));
  EXPECT_EQ(HexText(NativeData(MakeCard("resident"), false)), Answer(module, kRead));
  module.PutCard(MakeCard("foreigner"));
  EXPECT_EQ(HexText(NativeData(MakeCard("foreigner"), false)), Answer(module, kRead));
  module.RemoveCard();
  EXPECT_EQ(kNoCard, Answer(module, kSearch));
}

TEST(CardModule, KeepsTheStartOfARequestForItsRest) {
  CardModule module;

  EXPECT_EQ("", Answer(module, "AA AA AA 96 69 00 03"));
  EXPECT_EQ(kNoCard, Answer(module, "20 01 22"));
  EXPECT_EQ("", Answer(module, "AA AA AA 96 69 00 03"));
  module.Reset();
  EXPECT_EQ("", Answer(module, "20 01 22"));
}

TEST(CardModule, LeavesNoiseAndWrongFramesUnanswered) {
  CardModule module;

  EXPECT_EQ("", Answer(module, "00 FF 55"));
  EXPECT_EQ("", Answer(module, "AA AA AA 96 69 00 03 20 01 23"));
  EXPECT_EQ("", Answer(module, "1B 25 41"));
  EXPECT_EQ(kNoCard, Answer(module, kSearch));
}

TEST(CardModule, AnswersTheCardCheck) {
  CardModule module;
  const char* request = "02 30 30 30 34 33 32 33 30 30 30 30 31 30 33 03";

  // Status 0000 and one byte: 0 nothing there, 4 identity card, 2 as told.
  EXPECT_EQ("02 30 30 30 33 30 30 30 30 30 30 30 30 03", Answer(module, request));
  module.PutCard(MakeCard("resident"));
  EXPECT_EQ("02 30 30 30 33 30 30 30 30 30 34 30 34 03", Answer(module, request));
  module.SetCardCheck(std::uint8_t{2});
  EXPECT_EQ("02 30 30 30 33 30 30 30 30 30 32 30 32 03", Answer(module, request));
}

TEST(CardModule, EchoesTheChannel) {
  CardModule module;

  // Payload AF 01, XOR AE; back with status 0000.
  EXPECT_EQ("01 30 30 30 34 30 30 30 30 3A 3F 30 31 3A 3E 04",
            Answer(module, "01 30 30 30 32 3A 3F 30 31 3A 3E 04"));
}

struct SpeedRow {
  const char* command;
  int speed;
};

TEST(CardModule, ChangesItsSpeedAndGoesBack) {
  CardModule module;
  EXPECT_EQ(9600, module.Speed());

  for (const SpeedRow& row : {
           SpeedRow{"1B 25 53 31", 115200},
           SpeedRow{"1B 25 53 32", 38400 },
           SpeedRow{"1B 25 53 33", 19200 },
           SpeedRow{"1B 25 53 34", 9600  }
  }) {
    EXPECT_EQ("", Answer(module, row.command));
    EXPECT_EQ(row.speed, module.Speed());
  }
  Answer(module, "1B 25 53 31");
  EXPECT_EQ("", Answer(module, "1B 25 42"));
  EXPECT_EQ(9600, module.Speed());
  Answer(module, "1B 25 53 31");
  module.Reset();
  EXPECT_EQ(9600, module.Speed());
}

TEST(CardModule, UnderstandsNothingAtAnotherSpeedWhenTold) {
  CardModule module;
  EXPECT_EQ(kNoCard, Answer(module, kSearch, 115200));

  module.SetSpeedMatters(true);
  EXPECT_EQ("", Answer(module, kSearch, 115200));
  EXPECT_EQ(kNoCard, Answer(module, kSearch, 9600));
  Answer(module, "1B 25 53 31", 9600);
  EXPECT_EQ(kNoCard, Answer(module, kSearch, 115200));
  EXPECT_EQ("", Answer(module, kSearch, 9600));
}

struct FaultyAnswer {
  const char* fault;
  const char* request;
  const char* answer;
};

void PrintTo(const FaultyAnswer& row, std::ostream* out) {
  *out << row.fault << " asked " << row.request;
}

class CardModuleWith : public testing::TestWithParam<FaultyAnswer> {};

TEST_P(CardModuleWith, AnswersSo) {
  CardModule module;
  module.PutCard(MakeCard("resident", true));

  Misbehave(module, GetParam().fault);
  EXPECT_EQ(GetParam().answer, Answer(module, GetParam().request));

  module.ClearFaults();
  EXPECT_EQ(kFound, Answer(module, kSearch));
  EXPECT_EQ(kSelected, Answer(module, kSelect));
}

INSTANTIATE_TEST_SUITE_P(
    EveryStatusFault, CardModuleWith,
    testing::Values(
        FaultyAnswer{"silent", kSearch, ""}, FaultyAnswer{"silent", kRead, ""},
        FaultyAnswer{"no-card", kSearch, kNoCard}, FaultyAnswer{"no-card", kSelect, kNoCard},
        FaultyAnswer{"no-card", kRead, kReadFailed},
        FaultyAnswer{"card-after=1000", kSearch, kNoCard},
        FaultyAnswer{"card-after=0", kSearch, kFound},
        FaultyAnswer{"select-no-card", kSearch, kFound},
        FaultyAnswer{"select-no-card", kSelect, kNoCard},
        FaultyAnswer{"ic-power-on", kSearch, kFound},
        FaultyAnswer{"ic-power-on", kSelect, "AA AA AA 96 69 00 04 40 02 41 07"},
        FaultyAnswer{"unsupported", kSelect, kSelected},
        FaultyAnswer{"unsupported", kRead, "AA AA AA 96 69 00 04 00 00 21 45 00"},
        FaultyAnswer{"unsupported", kReadOneCommand, "AA AA AA 96 69 00 04 00 00 21 45 00"},
        FaultyAnswer{"read-failed", kReadFingerprints, kReadFailed},
        FaultyAnswer{"length=0", kRead, ""}, FaultyAnswer{"length=3", kRead, "AA AA AA"},
        FaultyAnswer{"length=8", kRead, "AA AA AA 96 69 00 01 01"},
        FaultyAnswer{"length=11", kRead, "AA AA AA 96 69 00 04 00 00 90 94"},
        FaultyAnswer{"cut=9", kRead, "AA AA AA 96 69 05 08 00 00"},
        FaultyAnswer{"garbage=3", kSearch,
                     "FF FF FF AA AA AA 96 69 00 08 00 00 9F 00 00 00 00 97"}));

TEST(CardModule, SendsAReadReplyOfAnyLengthRightInItself) {
  CardModule module;
  module.PutCard(MakeCard("resident"));
  for (const int length : {1294, 1296, 1298, 2320, 4096, 65535}) {
    Misbehave(module, ("length=" + std::to_string(length)).c_str());

    const Bytes reply = FromHex(Answer(module, kRead));

    ASSERT_EQ(static_cast<std::size_t>(length), reply.size());
    EXPECT_EQ(length - 7, reply[5] * 256 + reply[6]);
    EXPECT_EQ(0U, std::accumulate(reply.begin() + 5, reply.end(), 0U,
                                  [](unsigned sum, std::uint8_t b) { return sum ^ b; }));
  }
}

TEST(CardModule, SpoilsTheCheckByteAlwaysOrOnce) {
  CardModule module;
  module.PutCard(MakeCard("resident"));
  const Bytes good = NativeData(MakeCard("resident"), false);
  Bytes bad = good;
  bad.back() ^= 0xFF;

  Misbehave(module, "bad-check");
  EXPECT_EQ(HexText(bad), Answer(module, kRead));
  EXPECT_EQ(HexText(bad), Answer(module, kRead));
  Misbehave(module, "bad-check-once");
  EXPECT_EQ(HexText(bad), Answer(module, kRead));
  EXPECT_EQ(HexText(good), Answer(module, kRead));
}

TEST(CardModule, ReadsACardWithAFaultOfItsOwn) {
  CardModule module;
  module.PutCard(MakeCard("resident"));
  const Bytes good = NativeData(MakeCard("resident"), false);

  Misbehave(module, "other-kind");
  EXPECT_EQ('J', FromHex(Answer(module, kRead))[14 + 248]);
  Misbehave(module, "unknown-kind");
  EXPECT_EQ('X', FromHex(Answer(module, kRead))[14 + 248]);
  Misbehave(module, "photo-length=1000");
  const Bytes odd = FromHex(Answer(module, kRead));
  EXPECT_EQ(good.size(), odd.size());
  EXPECT_EQ(1000, odd[12] * 256 + odd[13]);
}

TEST(CardModule, PutsTheCardDownAfterATime) {
  CardModule module;
  module.PutCard(MakeCard("resident"));
  Misbehave(module, "card-after=1");

  EXPECT_EQ(kNoCard, Answer(module, kSearch));
  poll(nullptr, 0, 1050);
  EXPECT_EQ(kFound, Answer(module, kSearch));
}

TEST(CardModule, TricklesAtTheGivenRate) {
  CardModule module;
  module.PutCard(MakeCard("resident"));

  Misbehave(module, "slow=100");
  const auto slow = Ask(module, kSearch);
  ASSERT_EQ(15U, slow.size());
  for (const Step& step : slow) {
    EXPECT_EQ(1U, step.bytes.size());
    EXPECT_EQ(10, step.delay.count());
  }

  Misbehave(module, "slow=5000");
  const auto fast = Ask(module, kRead);
  ASSERT_EQ(26U, fast.size());  // 25 pieces of 50 bytes and one of 45
  EXPECT_EQ(50U, fast.front().bytes.size());
  EXPECT_EQ(10, fast.front().delay.count());
  EXPECT_EQ(9, fast.back().delay.count());
}

TEST(CardModule, AnswersLate) {
  CardModule module;
  module.PutCard(MakeCard("resident"));

  Misbehave(module, "late=2");

  const auto steps = Ask(module, kSearch);
  ASSERT_EQ(1U, steps.size());
  EXPECT_EQ(2000, steps.front().delay.count());
}

TEST(CardModule, HangsUpAfterSoManyBytesOfReplies) {
  CardModule module;
  module.PutCard(MakeCard("resident"));
  Misbehave(module, "hang-up=20");

  const auto first = Ask(module, kSearch);
  ASSERT_EQ(1U, first.size());
  EXPECT_FALSE(first.front().hang_up);
  const auto last = Ask(module, kSelect);
  ASSERT_EQ(1U, last.size());
  EXPECT_EQ("AA AA AA 96 69", HexText(last.front().bytes));
  EXPECT_TRUE(last.front().hang_up);
  EXPECT_TRUE(Ask(module, kSearch).empty());

  // After a reset the line is back, and dies with the last byte of an answer that just fits.
  module.Reset();
  Misbehave(module, "hang-up=15");
  const auto whole = Ask(module, kSearch);
  ASSERT_EQ(1U, whole.size());
  EXPECT_EQ(kFound, HexText(whole.front().bytes));
  EXPECT_TRUE(whole.front().hang_up);
}

TEST(CardModule, CombinesFaults) {
  CardModule module;
  module.PutCard(MakeCard("resident"));

  module.SetFaults({*ParseFault("cut=10"), *ParseFault("late=1"), *ParseFault("slow=100")});

  const auto steps = Ask(module, kRead);
  ASSERT_EQ(10U, steps.size());
  EXPECT_EQ(1010, steps.front().delay.count());
}

}  // namespace
}  // namespace simulator
