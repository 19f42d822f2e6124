#include "tests/reader/engine_fixture.h"

namespace {

struct SelectCase {
  const char* name;
  std::string answer;
  int result;
  const char* logged;
};

// Answers that no row of the reply table covers are a read error, whatever their length.
const SelectCase kSelectCases[] = {
    {"Selected",       kSelectedAnswer,                                            0,     "have Id Card"          },
    {"LongSelected",   kSelectedAnswer + " 00",                                    0,     "have Id Card"          },
    {"NoCard",         kNoCardAnswer,                                              -2003, "RET_BUSI_ID_NO_CARD"   },
    {"IcPowerOn",      kIcPowerOnAnswer,                                           -2007, "RET_BUSI_ID_IC_POWERON"},
    {"ReadFailed",     kReadFailedAnswer,                                          -55,   "RET_PUB_READ_ERROR"    },
    {"Other",          "AA AA AA 96 69 00 04 00 00 81 86",                         -55,   "RET_PUB_READ_ERROR"    },
    {"Short",          "AA AA AA 96 69 00 01 01",                                  -55,   "RET_PUB_READ_ERROR"    },
    {"AlmostNoCard",   "AA AA AA 96 69 00 03 00 00 81",                            -55,   "RET_PUB_READ_ERROR"    },
    {"AlmostSelected", "AA AA AA 96 69 00 0C 00 00 90 00 00 00 00 00 00 00 01 9D", -55,
     "RET_PUB_READ_ERROR"                                                                                         },
};

void PrintTo(const SelectCase& row, std::ostream* out) { *out << row.answer; }

std::string CaseName(const testing::TestParamInfo<SelectCase>& info) { return info.param.name; }

Lines SelectLog(const std::string& name, std::size_t size) {
  return {"[" + name + "] Start ", "COMM_Zel_SendAndReciveData nRet = " + std::to_string(size)};
}

}  // namespace

class SelectAnswer : public Engine, public testing::WithParamInterface<SelectCase> {};
INSTANTIATE_TEST_SUITE_P(All, SelectAnswer, testing::ValuesIn(kSelectCases), CaseName);

TEST_P(SelectAnswer, IsJudgedBySelectIDCard) {
  reader.On(kSelectCommand, GetParam().answer);

  EXPECT_EQ(GetParam().result, SelectIDCard());

  EXPECT_EQ(Lines{kSelectCommand}, reader.Commands());
  EXPECT_EQ(GetParam().result == 0 ? 1 : 0, stand_in_clock::SleepCalls());
  if (GetParam().result == 0) {
    EXPECT_EQ(1U, stand_in_clock::LastSleep());
  }
}

TEST_P(SelectAnswer, IsJudgedBySelectIDCardOneTimeWithoutAPause) {
  reader.On(kSelectCommand, GetParam().answer);

  EXPECT_EQ(GetParam().result, SelectIDCardOneTime());

  EXPECT_EQ(Lines{kSelectCommand}, reader.Commands());
  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

TEST_P(SelectAnswer, IsLogged) {
  NEEDS_PRIVATE_ROOT();
  const Bytes answer = FromHex(GetParam().answer);
  const std::size_t size = answer.size();
  const std::string verdict = "***[" + std::string(GetParam().logged) + "] ";

  SwitchLogging(true);
  reader.SendAhead(answer);
  SelectIDCard();

  Lines expected = SelectLog("SelectIDCard", size);
  expected.push_back(verdict);
  EXPECT_EQ(expected, LinesOf(kCardArea));
  std::string hex;
  for (const char c : GetParam().answer) {
    if (c != ' ') hex += c;
  }
  EXPECT_TRUE(HasLine(" TIME  Search card   LEN=" + std::to_string(size) + "   HEX: " + hex));

  SwitchLogging(true);
  reader.SendAhead(answer);
  SelectIDCardOneTime();

  expected = SelectLog("SelectIDCardOneTime", size);
  if (GetParam().result != 0) expected.push_back(verdict);
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

using CardSelect = Engine;
using OneCardSelect = Engine;

TEST_F(CardSelect, ReturnsWhatTheExchangeSaysOfASilentReader) {
  NEEDS_PRIVATE_ROOT();
  stand_in_clock::SetSpeed(20);
  SwitchLogging(true);

  EXPECT_EQ(-56, SelectIDCard());

  const Lines expected = {"[SelectIDCard] Start ", "! COMM_Zel_SendAndReciveData nRet = -56"};
  EXPECT_EQ(expected, LinesOf(kCardArea));
}

TEST_F(CardSelect, SucceedsWhateverTheReplyWhenSearchIsDirect) {
  tFuncSearchIdDirect(1);
  reader.On(kSelectCommand, kNoCardAnswer);

  EXPECT_EQ(0, SelectIDCard());

  EXPECT_EQ(0, stand_in_clock::SleepCalls());
}

TEST_F(CardSelect, LooksAtTheReplyWhenTheFlagIsNotOne) {
  tFuncSearchIdDirect(2);
  reader.On(kSelectCommand, kNoCardAnswer);

  EXPECT_EQ(-2003, SelectIDCard());
}

TEST_F(OneCardSelect, LooksAtTheReplyAlsoWhenSearchIsDirect) {
  tFuncSearchIdDirect(1);
  reader.On(kSelectCommand, kNoCardAnswer);

  EXPECT_EQ(-2003, SelectIDCardOneTime());
}

TEST_F(CardSelect, PausesOneRealSecond) {
  stand_in_clock::UseSystemClock();
  reader.On(kSelectCommand, kSelectedAnswer);
  const auto start = std::chrono::steady_clock::now();

  EXPECT_EQ(0, SelectIDCard());

  const auto taken = std::chrono::steady_clock::now() - start;
  EXPECT_GE(taken, std::chrono::milliseconds(990));
  EXPECT_LE(taken, std::chrono::seconds(10));
}
